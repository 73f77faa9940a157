#ifndef TESMO_HBBTV_LIFECYCLE_WINDOWMANAGER_H
#define TESMO_HBBTV_LIFECYCLE_WINDOWMANAGER_H

#include <list>
#include <map>
#include <memory>

#include "lifecycle/ApplicationPolicy.h"
#include "tesmo_hbbtv/browser_core.h"

namespace TesmoHbbTV {

class Application;
class Window;

// The registry of managed windows, their browser windows and the running applications.
class WindowManager {
public:
    static WindowManager* getInstance();
    // The instance if there is one, without building it.
    static WindowManager* existingInstance() { return instance; }
    virtual ~WindowManager();

    WindowManager(const WindowManager&) = delete;
    WindowManager& operator=(const WindowManager&) = delete;

    void init() {}
    Window* createWindow();
    bool removeWindow(Window* window);
    void removeAllWindows();
    bool windowExists(const Window* window) const;
    bool handledWindow(const Window* window) const { return windowExists(window); }

    Window* getWindow(unsigned int index) const;
    Window* getWindow(DAXO_TesmoWindow* daxoWindow) const;
    DAXO_TesmoWindow* getDaxoWindow(const Window* window) const;
    void registerDaxoWindow(DAXO_TesmoWindow* daxoWindow, Window* window);
    void unregisterDaxoWindow(DAXO_TesmoWindow* daxoWindow);

    bool registerApplication(Application* app);
    bool unregisterApplication(Application* app);
    virtual Application* getApplication(unsigned long id) const;

    void setBroadcastWindow(Window* window);
    Window* getBroadcastWindow() const { return broadcastWindow; }
    void setBroadbandOperational(bool operational) { broadbandUsable = operational; }
    bool getBroadbandOperational() const { return broadbandUsable; }

private:
    WindowManager();
    void forgetWindow(Window* window);

    std::list<Window*> windows;  // owned, in creation order
    bool broadbandUsable = true;
    bool closing = false;
    std::map<DAXO_TesmoWindow*, Window*> browserWindows;  // not owning
    std::map<unsigned long, Application*> applications;  // not owning
    std::unique_ptr<ApplicationPolicy> policy;
    Window* broadcastWindow = nullptr;  // one of windows

    static WindowManager* instance;
};

}  // namespace TesmoHbbTV

#endif
