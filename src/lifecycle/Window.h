#ifndef TESMO_HBBTV_LIFECYCLE_WINDOW_H
#define TESMO_HBBTV_LIFECYCLE_WINDOW_H

#include <cstdint>
#include <set>
#include <vector>

#include "si/AIT.h"
#include "si/HbbTVURL.h"
#include "support/ref_ptr.h"
#include "tesmo_hbbtv/browser_core.h"

namespace TesmoHbbTV {

class Application;
class ApplicationDomain;
class WindowManager;

// One HbbTV-managed browser window and the application state machine that runs in it.
class Window {
public:
    enum WindowState { IDLE = 0, RUNNING = 1, TEARING_DOWN = 2 };

    explicit Window(WindowManager* manager);
    virtual ~Window();

    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    // ---- tables and activation ----
    virtual bool setAIT(const ref_ptr<AIT>& table);
    virtual bool activateAIT();
    void scheduleReactivateAIT(bool restoreBroadcastAIT);
    const ref_ptr<AIT>& getAIT() const { return ait; }
    const ref_ptr<AIT>& getNextAIT() const { return nextAIT; }
    void setNextAIT(const ref_ptr<AIT>& table) { nextAIT = table; }

    // ---- start, pending and shutdown ----
    Application* startApplication(AITApplication* entry, const HbbTVURL& url, AITApplicationTransport* transport);
    virtual Application* startApplication(unsigned long orgId, unsigned short appId, const HbbTVURL& url);
    Application* startBroadcastIndependentApplication(const HbbTVURL& url);
    virtual Application* createApplication(const HbbTVURL& url, AITApplication* entry);
    virtual void startPendingApplication(Application* app);
    void terminateRunningApplication(bool immediate);
    virtual bool shutdownApplication(Application* app, bool immediate, bool reactivate);
    bool tryRestoreParentApplication(Application* app);

    virtual Application* getRunningApplication() const { return runningApplication; }
    void setRunningApplication(Application* app);
    void setPendingApplication(Application* app);
    bool isPendingApplication(const Application* app) const { return pendingApplication && pendingApplication == app; }
    void unsetPendingApplication() { pendingApplication = nullptr; }
    void destroyPendingApplication();
    void registerApplication(Application* app);
    void unregisterApplication(Application* app);
    bool applicationExists(const Application* app) const;
    virtual Application* getApplication(DAXO_TesmoWindow* daxoWindow) const;

    // ---- load outcomes ----
    void reportLoadSuccess(DAXO_TesmoWindow* daxoWindow);
    bool reportLoadFailed(DAXO_TesmoWindow* daxoWindow);
    bool restartApplicationOnNextTransport(Application* app);
    Application* startNextAutostartApplication(AITApplication* entry);
    void reportXMLParseFailure(DAXO_TesmoWindow* daxoWindow);
    bool isLoadedUrlWithinBoundaries(ApplicationDomain* domain) const;
    bool setTimeShifted(bool shifted);
    bool isTimeShifted() const { return timeShifted; }

    // A released window starts nothing more; it is torn down when it is deleted.
    void setReleased() { released = true; }

    WindowState getState() const { return state; }
    void setState(WindowState newState) { state = newState; }

    // ---- lifetime: how queued work finds out that its target is gone ----
    // Never reused, unlike the address: a window made where a released one stood has
    // another serial.
    uint32_t getSerial() const { return serial; }
    // The application with that identifier among the window's started applications.
    Application* findApplication(uint32_t id) const;
    // An application this window created and still owns that has not started yet (the
    // pending one, or one a later start replaced).
    Application* findUnstartedApplication(uint32_t id) const;

private:
    bool activateIdle();
    bool activateRunning();
    AITApplication* successorEntry(Application& running, AITApplicationTransport*& keptTransport);
    bool continueRunningApplication(Application& running, AITApplication& entry, AITApplicationTransport* transport);
    void shutDownIfTearingDown();
    bool broadband() const;
    void destroyApplication(Application* app);
    bool sharesBrowserWindow(const Application* app) const;

    // Started, oldest first. A platform with one browser window may grant the same one to
    // a parent and its child; the newest holds the page.
    std::vector<Application*> applications;
    WindowManager* manager;  // the owner
    ref_ptr<AIT> ait;
    ref_ptr<AIT> previousAIT;
    ref_ptr<AIT> nextAIT;
    ref_ptr<AIT> lastBroadcastAIT;
    Application* runningApplication = nullptr;
    Application* pendingApplication = nullptr;
    WindowState state = IDLE;
    bool timeShifted = false;
    bool released = false;

    uint32_t serial;
    // Every application this window created and has not deleted yet; what is left when
    // the window goes is deleted with it.
    std::set<Application*> owned;

    static uint32_t nextSerial;
};

}  // namespace TesmoHbbTV

#endif
