#include "lifecycle/Window.h"

#include <algorithm>
#include <vector>

#include "api/ConfigurationManager.h"
#include "api/StartApplicationEvent.h"
#include "api/StopApplicationEvent.h"
#include "api/ThreadsafeEventQueue.h"
#include "bindings/ApplicationManagerBindings.h"
#include "lifecycle/Application.h"
#include "lifecycle/WindowManager.h"
#include "notify/NotificationManager.h"
#include "notify/StartApplicationNotification.h"
#include "notify/StopApplicationNotification.h"
#include "support/EntryGuard.h"
#include "support/LogEntry.h"

namespace TesmoHbbTV {

namespace {

const char* MODULE = "Window";

LogEntry windowLog(LogLevel level)
{
    return LogEntry(level, MODULE);
}

// An application may run time-shifted only when its recording descriptor says it follows
// trick modes and time shift.
bool followsTimeShift(const AITApplication* entry)
{
    const auto* recording = entry ? entry->getApplicationRecordingDescriptor() : nullptr;
    return recording && recording->trickModeAware && recording->timeShift;
}

const int32_t ANSWER_BLOCK_AND_KILL = HBBTV_APPLICATION_ACTION_BLOCK_AND_KILL;
const int32_t ANSWER_BLOCK_AND_KEEP = HBBTV_APPLICATION_ACTION_BLOCK_AND_KEEP;

}  // namespace

uint32_t Window::nextSerial = 1;

Window::Window(WindowManager* manager) : manager(manager), serial(nextSerial++) {}

Window::~Window()
{
    terminateRunningApplication(true);
    destroyPendingApplication();
    // What is left (a replaced pending application whose start never ran, a failed one
    // whose deferred stop never ran) goes with the window.
    const std::vector<Application*> left(owned.begin(), owned.end());
    for (Application* app : left) {
        if (applicationExists(app)) {
            unregisterApplication(app);
            manager->unregisterApplication(app);
        }
        destroyApplication(app);
    }
}

bool Window::broadband() const
{
    return manager->getBroadbandOperational();
}

// The browser window goes back to the platform now, unless another application of this
// window still shows its page in it; the memory may still be in use further up the stack.
void Window::destroyApplication(Application* app)
{
    if (owned.erase(app) == 0)  // destroyed already, by a call that a listener made meanwhile
        return;
    if (sharesBrowserWindow(app))
        app->setDaxoWindow(nullptr);
    else
        app->releaseBrowserWindow();
    EntryGuard::dispose(app);
}

bool Window::sharesBrowserWindow(const Application* app) const
{
    for (const Application* other : owned)
        if (other != app && other->getDaxoWindow() && other->getDaxoWindow() == app->getDaxoWindow())
            return true;
    return false;
}

Application* Window::findApplication(uint32_t id) const
{
    for (Application* app : applications)
        if (app->getID() == id)
            return app;
    return nullptr;
}

Application* Window::findUnstartedApplication(uint32_t id) const
{
    for (Application* app : owned)
        if (app->getID() == id && !applicationExists(app))
            return app;
    return nullptr;
}

// ---------------------------------------------------------------- tables and activation

bool Window::setAIT(const ref_ptr<AIT>& table)
{
    if (!table) {
        if (ait)
            ait->setInvalid(true);
        return false;
    }
    previousAIT = ait;
    ait = table;
    if (!table->isXMLAIT())
        lastBroadcastAIT = table;
    return true;
}

// Nothing is queued despite the name: shutdown relies on the successor starting within
// the same call.
void Window::scheduleReactivateAIT(bool restoreBroadcastAIT)
{
    if (restoreBroadcastAIT)
        ait = lastBroadcastAIT;
    activateAIT();
}

bool Window::activateAIT()
{
    const ref_ptr<AIT> table = ait;  // its entries stay valid while listeners are asked
    switch (state) {
    case IDLE:
    case TEARING_DOWN:
        return activateIdle();
    case RUNNING:
        return activateRunning();
    }
    return false;
}

void Window::shutDownIfTearingDown()
{
    if (state == TEARING_DOWN && runningApplication)
        shutdownApplication(runningApplication, true, false);
}

// The table is held for the whole activation: a listener asked during a start may
// replace or clear the window's table, and the entries used here live in it.
bool Window::activateIdle()
{
    const ref_ptr<AIT> table = ait;
    if (!table || table->isInvalid()) {
        shutDownIfTearingDown();
        return false;
    }
    AITApplication* entry = table->getAITApplication(AITApplication::AUTOSTART, broadband());
    if (!entry) {
        shutDownIfTearingDown();
        return true;
    }
    if (Application* started = startApplication(entry, HbbTVURL(""), nullptr)) {
        started->setLaunchedAsAutostart(true);
        if (table->isXMLAIT() && runningApplication && runningApplication->hasParentApplication())
            started->adoptParentOf(*runningApplication);
        return true;
    }
    if (state == RUNNING)
        return true;
    if (startNextAutostartApplication(entry))
        windowLog(LOG_LEVEL_LOG) << "First AUTOSTART application failed to start, started lower prio one instead.";
    else
        windowLog(LOG_LEVEL_WARN) << "AUTOSTART application failed to start.";
    return true;
}

bool Window::activateRunning()
{
    if (!runningApplication) {
        windowLog(LOG_LEVEL_WARN)
            << "When activating AIT the manager state was RUNNING, but no running application was found.";
        state = IDLE;
        return activateAIT();
    }
    AITApplicationTransport* kept = nullptr;
    if (AITApplication* successor = successorEntry(*runningApplication, kept))
        return continueRunningApplication(*runningApplication, *successor, kept);
    windowLog(LOG_LEVEL_LOG) << "Tearing down running application at new AIT load";
    state = TEARING_DOWN;
    scheduleReactivateAIT(false);
    return true;
}

// The running application's entry in the current table when it may live on under it, or
// null when it is to be torn down. keptTransport receives the transport found for a
// broadcast-independent application that joins the table.
AITApplication* Window::successorEntry(Application& running, AITApplicationTransport*& keptTransport)
{
    AITApplication* entry = running.getAITApplication();
    if (!entry)
        return nullptr;
    if (entry->isSignalledAsServiceBound() && (!previousAIT || previousAIT->isInvalid()))
        return nullptr;
    AITApplication* next =
        ait ? ait->getAITApplication(entry->getOrganisationIdentifier(), entry->getApplicationIdentifier()) : nullptr;
    if (!next || next->isSignalledWith(AITApplication::KILL))
        return nullptr;
    if (!running.isBroadcastRelated() && entry->getChannelHandle() != next->getChannelHandle())
        return nullptr;
    if (running.isBroadcastRelated() || ait->isXMLAIT())
        return running.isBroadcastRelated() ? next : nullptr;
    if (!next->isSignalledWith(AITApplication::AUTOSTART) && !next->isSignalledWith(AITApplication::PRESENT))
        return nullptr;

    if (!entry->isXMLAITbased()) {
        windowLog(LOG_LEVEL_LOG)
            << "Transferring state of running application from broadcast independent (transitioned "
            << "earlier from broadcast related) to broadcast related at new AIT load.";
        running.setBroadcastRelated(true);
        return next;
    }
    AITApplicationTransport* transport = next->getTransportMatchingURL(running.getURL());
    if (!transport || transport->getProtocolId() != AITApplicationTransport::HTTP)
        return nullptr;
    next->getApplicationDomain()->addBoundaryExtension(running.getURL().getFullUrl());
    if (!isLoadedUrlWithinBoundaries(next->getApplicationDomain()))
        return nullptr;
    windowLog(LOG_LEVEL_LOG)
        << "Transferring state of running application from broadcast independent to broadcast related at new AIT load";
    running.setBroadcastRelated(true);
    keptTransport = transport;
    return next;
}

bool Window::continueRunningApplication(Application& running, AITApplication& entry, AITApplicationTransport* transport)
{
    windowLog(LOG_LEVEL_LOG) << "Allowing running application to continue at new AIT load.";
    running.setAITApplication(&entry);
    if (!transport)
        transport = entry.getFirstAvailableTransport(broadband());
    if (!transport) {
        windowLog(LOG_LEVEL_ERR)
            << "Something really funky is going on! No transport found for the application in newly loaded AIT!";
        return false;
    }
    running.setTransport(transport);
    return true;
}

// ---------------------------------------------------------------- start, pending and shutdown

Application* Window::startApplication(AITApplication* entry, const HbbTVURL& url, AITApplicationTransport* transport)
{
    windowLog(LOG_LEVEL_LOG) << "Starting application from AITApplication.";
    if (!entry || entry->isSignalledWith(AITApplication::KILL) || entry->isSignalledWith(AITApplication::DISABLED))
        return nullptr;
    if (!entry->isPlatformProfileSupported()) {
        windowLog(LOG_LEVEL_WARN) << "Attempt to start application with unsupported platform profile.";
        return nullptr;
    }
    if (!transport)
        transport = entry->getFirstAvailableTransport(broadband());
    if (!transport)
        return nullptr;
    if (timeShifted && !followsTimeShift(entry))
        return nullptr;
    const std::string text = transport->getURL(entry->getApplicationLocation());
    if (text.empty())
        return nullptr;
    HbbTVURL target(text);
    if (!url.getParameters().empty() || !url.getAnchor().empty()) {
        target.addParameters(url.getParameters());
        target.addAnchor(url.getAnchor(), true);
    }
    Application* app = createApplication(target, entry);
    if (app)
        app->setTransport(transport);
    return app;
}

Application* Window::startApplication(unsigned long orgId, unsigned short appId, const HbbTVURL& url)
{
    windowLog(LOG_LEVEL_DEBUG) << "Starting application from orgID and appID.";
    if (!ait)
        return nullptr;
    AITApplication* entry = ait->getAITApplication(orgId, appId);
    return entry ? startApplication(entry, url, nullptr) : nullptr;
}

Application* Window::startBroadcastIndependentApplication(const HbbTVURL& url)
{
    windowLog(LOG_LEVEL_LOG) << "Starting broadcast independent application.";
    return url.empty() ? nullptr : createApplication(url, nullptr);
}

Application* Window::createApplication(const HbbTVURL& url, AITApplication* entry)
{
    ConfigurationManager* config = ConfigurationManager::getInstance();
    if (released || !NotificationManager::getInstance() || !config || !config->getEventQueue())
        return nullptr;
    HbbTVURL target = url;
    if (runningApplication)
        target.resolveRelativeUrl(runningApplication->getURL());

    // An entry with an invalid identifier is blocked unless a listener lets it through.
    int32_t answer = entry && !entry->hasValidAppId() ? ANSWER_BLOCK_AND_KILL : HBBTV_APPLICATION_ACTION_START;
    NotificationManager::raise<StartApplicationNotification>(
        this, entry && !entry->isXMLAITbased(), entry ? entry->getOrganisationIdentifier() : 0,
        entry ? entry->getApplicationIdentifier() : 0, target.getFullUrl().c_str(),
        entry ? entry->getApplicationUsageType() : 0, entry && entry->isSignalledWith(AITApplication::AUTOSTART),
        &answer);
    if (released)  // by a listener, while it was asked
        return nullptr;

    if (answer != ANSWER_BLOCK_AND_KILL && answer != ANSWER_BLOCK_AND_KEEP) {
        Application* app = new Application(this, target, entry);
        owned.insert(app);
        setPendingApplication(app);
        config->getEventQueue()->add(new StartApplicationEvent(this, app));
        return app;
    }
    windowLog(LOG_LEVEL_DEBUG) << "Blocking application upon request from listener.";
    if (!runningApplication)
        return nullptr;
    if (answer == ANSWER_BLOCK_AND_KEEP) {
        windowLog(LOG_LEVEL_DEBUG) << "Leaving running application.";
        state = RUNNING;
    } else {
        windowLog(LOG_LEVEL_DEBUG) << "Killing running application.";
        shutdownApplication(runningApplication, false, false);
    }
    return nullptr;
}

void Window::startPendingApplication(Application* app)
{
    if (!app || !isPendingApplication(app)) {
        windowLog(LOG_LEVEL_WARN)
            << "startPendingApplication: application does not matching pending application, aborting.";
        if (app)
            destroyApplication(app);
        return;
    }
    unsetPendingApplication();

    if (app->hasParentApplication()) {
        if (!app->getParentApplication())
            app->setParentApplication(nullptr);
        else
            windowLog(LOG_LEVEL_DEBUG)
                << "Allowing currently running application to live as fallback until initial page of new application loaded.";
    } else if (runningApplication) {
        windowLog(LOG_LEVEL_LOG) << "Shutting down existing application.";
        shutdownApplication(runningApplication, true, false);
    }

    // A listener may release this window while it grants the browser window.
    if (!app->init() || !app->getDaxoWindow() || released) {
        windowLog(LOG_LEVEL_WARN) << "startPendingApplication(): Failed to initialize application.";
        if (!tryRestoreParentApplication(app))
            shutdownApplication(app, true, false);
        // Never started, so neither call could remove it: it goes here.
        destroyApplication(app);
        return;
    }
    registerApplication(app);
    manager->registerDaxoWindow(app->getDaxoWindow(), this);
    setRunningApplication(app);
    manager->registerApplication(app);
    app->loadInitialPage();
}

void Window::terminateRunningApplication(bool immediate)
{
    windowLog(LOG_LEVEL_DEBUG) << "terminateRunningApplication";
    if (state == RUNNING || state == TEARING_DOWN)
        shutdownApplication(runningApplication, immediate, false);
}

bool Window::shutdownApplication(Application* app, bool immediate, bool reactivate)
{
    windowLog(LOG_LEVEL_DEBUG) << "TesmoHbbTV::Window::shutdownApplication()";
    if (!app || !applicationExists(app))
        return false;
    if (!immediate) {
        windowLog(LOG_LEVEL_LOG) << "Delayed destroy of application";
        ConfigurationManager* config = ConfigurationManager::getInstance();
        if (!config || !config->getEventQueue())
            return false;
        config->getEventQueue()->add(new StopApplicationEvent(this, app, reactivate));
        return true;
    }

    if (Application* parent = app->getParentApplication()) {
        shutdownApplication(parent, true, false);
        // A listener's answer to the parent's stop may have reactivated the table and
        // ended this application with it.
        if (!applicationExists(app))
            return true;
    }
    manager->unregisterApplication(app);
    unregisterApplication(app);
    if (app == runningApplication)
        setRunningApplication(nullptr);

    bool reactivateAit = reactivate && app->isBroadcastRelated() && !pendingApplication && !runningApplication;
    NotificationManager::raise<StopApplicationNotification>(
        this, app->isBroadcastRelated(), app->getOrganisationIdentifier(), app->getApplicationIdentifier(),
        app->getURL().getFullUrl().c_str(), &reactivateAit);
    destroyApplication(app);
    if (reactivateAit) {
        windowLog(LOG_LEVEL_LOG) << "Reactivating AIT...";
        scheduleReactivateAIT(true);
    }
    return true;
}

bool Window::tryRestoreParentApplication(Application* app)
{
    Application* parent = app ? app->getParentApplication() : nullptr;
    if (!parent)
        return false;
    call_application_load_error_listener(app);
    setRunningApplication(parent);
    app->setParentApplication(nullptr);
    shutdownApplication(app, false, false);
    return true;
}

void Window::setRunningApplication(Application* app)
{
    if (app == runningApplication)
        return;
    state = app ? RUNNING : IDLE;
    runningApplication = app;
}

// The replaced application is not deleted: its own start event finds the mismatch and
// deletes it then.
void Window::setPendingApplication(Application* app)
{
    if (pendingApplication)
        windowLog(LOG_LEVEL_WARN) << "Pending application added when pending already existed.";
    pendingApplication = app;
}

void Window::destroyPendingApplication()
{
    if (pendingApplication)
        destroyApplication(pendingApplication);
    pendingApplication = nullptr;
}

void Window::registerApplication(Application* app)
{
    applications.push_back(app);
}

void Window::unregisterApplication(Application* app)
{
    applications.erase(std::remove(applications.begin(), applications.end(), app), applications.end());
}

bool Window::applicationExists(const Application* app) const
{
    return std::find(applications.begin(), applications.end(), app) != applications.end();
}

Application* Window::getApplication(DAXO_TesmoWindow* daxoWindow) const
{
    for (auto it = applications.rbegin(); it != applications.rend(); ++it)
        if ((*it)->getDaxoWindow() == daxoWindow)
            return *it;
    return nullptr;
}

}  // namespace TesmoHbbTV

namespace TesmoHbbTV {

// ---------------------------------------------------------------- load outcomes

void Window::reportLoadSuccess(DAXO_TesmoWindow* daxoWindow)
{
    Application* app = getApplication(daxoWindow);
    if (!app)
        return;
    if (app->getFailedToParse()) {
        reportLoadFailed(daxoWindow);
        if (getApplication(daxoWindow) != app)
            return;
    }
    if (app != runningApplication) {
        windowLog(LOG_LEVEL_LOG) << "Application loaded received on not-running application. Silently ignoring.";
        return;
    }
    if (app->isInitialPageLoaded())
        return;
    windowLog(LOG_LEVEL_LOG) << "Initial page of application successfully loaded.";
    app->setInitialPageLoaded();
    if (app->isShown())
        app->show();
    if (Application* parent = app->getParentApplication()) {
        windowLog(LOG_LEVEL_LOG) << "Shutting down parent application";
        shutdownApplication(parent, false, false);
    }
    app->setParentApplication(nullptr);
}

// False when the window did not take the failure over.
bool Window::reportLoadFailed(DAXO_TesmoWindow* daxoWindow)
{
    Application* app = getApplication(daxoWindow);
    if (!app)
        return false;
    if (app != runningApplication) {
        windowLog(LOG_LEVEL_WARN) << "Application failed received on not-running application. Silently ignoring.";
        return false;
    }
    if (app->isInitialPageLoaded()) {
        windowLog(LOG_LEVEL_ERR) << "Loading a page in a running application failed, no error handling.";
        return false;
    }
    if (app->isBroadcastRelated() && restartApplicationOnNextTransport(app)) {
        windowLog(LOG_LEVEL_ERR) << "Loading failed, loading on next available transport instead.";
        return true;
    }
    if (tryRestoreParentApplication(app)) {
        windowLog(LOG_LEVEL_ERR) << "Loading failed, parent application will not be killed.";
        return true;
    }
    if (!app->isBroadcastRelated())
        return true;
    if (!app->isLaunchedAsAutostart())
        return false;
    if (startNextAutostartApplication(app->getAITApplication())) {
        windowLog(LOG_LEVEL_ERR) << "Loading failed, trying to load next AUTOSTART application instead.";
    } else {
        windowLog(LOG_LEVEL_ERR) << "Automatic load of AUTOSTART application failed.";
        shutdownApplication(app, false, false);
    }
    return true;
}

bool Window::restartApplicationOnNextTransport(Application* app)
{
    if (!app || app != runningApplication || !app->getAITApplication() || !app->getTransport())
        return false;
    AITApplication* entry = app->getAITApplication();
    AITApplicationTransport* next = entry->getNextAvailableTransport(app->getTransport(), broadband());
    if (!next)
        return false;
    Application* restarted = startApplication(entry, HbbTVURL(""), next);
    if (!restarted)
        return false;
    restarted->setLaunchedAsAutostart(app->isLaunchedAsAutostart());
    restarted->adoptParentOf(*app);
    shutdownApplication(app, false, false);
    return true;
}

Application* Window::startNextAutostartApplication(AITApplication* entry)
{
    const ref_ptr<AIT> table = ait;  // held: a listener asked during a start may replace it
    if (!entry || !table)
        return nullptr;
    const bool usable = broadband();
    for (AITApplication* next = table->getNextAITApplication(entry, AITApplication::AUTOSTART, usable); next;
         next = table->getNextAITApplication(next, AITApplication::AUTOSTART, usable)) {
        if (Application* started = startApplication(next, HbbTVURL(""), nullptr)) {
            started->setLaunchedAsAutostart(true);
            return started;
        }
    }
    return nullptr;
}

void Window::reportXMLParseFailure(DAXO_TesmoWindow* daxoWindow)
{
    if (Application* app = getApplication(daxoWindow)) {
        windowLog(LOG_LEVEL_LOG) << "Mark application for termination due to XML parsing error.";
        app->setFailedToParse();
    }
}

bool Window::isLoadedUrlWithinBoundaries(ApplicationDomain* domain) const
{
    if (!runningApplication || !runningApplication->getDaxoWindow() || !domain)
        return false;
    const char* url = nullptr;
    if (tm_get_loading_url(runningApplication->getDaxoWindow(), &url, 0) != 0)
        return false;
    return domain->isWithinBoundaries(url ? url : "");
}

bool Window::setTimeShifted(bool shifted)
{
    if (shifted == timeShifted)
        return false;
    timeShifted = shifted;
    if (shifted && state == RUNNING) {
        Application* app = runningApplication;
        if (!followsTimeShift(app ? app->getAITApplication() : nullptr))
            shutdownApplication(app, true, true);
    }
    return true;
}

}  // namespace TesmoHbbTV
