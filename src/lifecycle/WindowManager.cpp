#include "lifecycle/WindowManager.h"

#include <algorithm>

#include "api/ConfigurationManager.h"
#include "api/ThreadsafeEventQueue.h"
#include "bindings/ApplicationManagerBindings.h"
#include "lifecycle/Application.h"
#include "lifecycle/ApplicationPolicyHbbTV.h"
#include "lifecycle/Window.h"
#include "support/EntryGuard.h"
#include "support/LogEntry.h"

namespace TesmoHbbTV {

WindowManager* WindowManager::instance = nullptr;

WindowManager::WindowManager() : policy(std::make_unique<ApplicationPolicyHbbTV>()) {}

WindowManager* WindowManager::getInstance()
{
    if (!instance)
        instance = new WindowManager();
    return instance;
}

WindowManager::~WindowManager()
{
    instance = nullptr;
    removeAllWindows();
}

Window* WindowManager::createWindow()
{
    LogEntry(LOG_LEVEL_LOG, "WindowManager") << "WindowManager::createWindow()";
    if (closing || !policy->requestNewWindow())
        return nullptr;
    Window* window = new Window(this);
    windows.push_back(window);
    return window;
}

// A window that is gone leaves no trace: its browser windows no longer lead to it, so that
// a late notification for one of them cannot reach freed memory.
void WindowManager::forgetWindow(Window* window)
{
    window->setReleased();
    windows.remove(window);
    if (broadcastWindow == window)
        broadcastWindow = nullptr;
    for (auto it = browserWindows.begin(); it != browserWindows.end();)
        it = it->second == window ? browserWindows.erase(it) : std::next(it);
}

bool WindowManager::removeWindow(Window* window)
{
    LogEntry(LOG_LEVEL_LOG, "WindowManager") << "WindowManager::removeWindow()";
    if (!window)
        return false;
    policy->releaseWindow();
    // A window this manager does not hold is already gone or was never its own: releasing
    // the slot is all that is safe to do with it.
    if (!windowExists(window))
        return true;
    // Unreachable at once; a listener that released it may be running inside one of its
    // calls, so it is torn down when the outermost library call returns.
    forgetWindow(window);
    if (ThreadsafeEventQueue* queue = ConfigurationManager::existingEventQueue())
        queue->forgetEventsFor(window);
    EntryGuard::dispose(window);
    return true;
}

// Only on the way out: a listener may not open windows while they are being closed.
void WindowManager::removeAllWindows()
{
    closing = true;
    while (!windows.empty()) {
        Window* window = windows.front();
        policy->releaseWindow();
        forgetWindow(window);
        delete window;
    }
}

bool WindowManager::windowExists(const Window* window) const
{
    return std::find(windows.begin(), windows.end(), window) != windows.end();
}

Window* WindowManager::getWindow(unsigned int index) const
{
    if (index >= windows.size())
        return nullptr;
    return *std::next(windows.begin(), index);
}

Window* WindowManager::getWindow(DAXO_TesmoWindow* daxoWindow) const
{
    auto found = browserWindows.find(daxoWindow);
    return found == browserWindows.end() ? nullptr : found->second;
}

DAXO_TesmoWindow* WindowManager::getDaxoWindow(const Window* window) const
{
    for (const auto& entry : browserWindows)
        if (entry.second == window)
            return entry.first;
    return nullptr;
}

// Mappings outlive the applications that used them; a later registration of the same
// browser window overwrites the entry.
void WindowManager::registerDaxoWindow(DAXO_TesmoWindow* daxoWindow, Window* window)
{
    if (windowExists(window))  // a released window is never reached again
        browserWindows[daxoWindow] = window;
}

void WindowManager::unregisterDaxoWindow(DAXO_TesmoWindow* daxoWindow)
{
    browserWindows.erase(daxoWindow);
}

bool WindowManager::registerApplication(Application* app)
{
    if (!app)
        return false;
    applications[app->getID()] = app;
    return true;
}

bool WindowManager::unregisterApplication(Application* app)
{
    if (!app)
        return false;
    applications.erase(app->getID());
    call_application_destroyed_listener(app);
    return true;
}

Application* WindowManager::getApplication(unsigned long id) const
{
    auto found = applications.find(id);
    return found == applications.end() ? nullptr : found->second;
}

void WindowManager::setBroadcastWindow(Window* window)
{
    if (windowExists(window))
        broadcastWindow = window;
}

}  // namespace TesmoHbbTV
