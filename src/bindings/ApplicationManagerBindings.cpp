#include "bindings/ApplicationManagerBindings.h"

#include "api/ConfigurationManager.h"
#include "lifecycle/Application.h"
#include "lifecycle/Window.h"
#include "lifecycle/WindowManager.h"
#include "notify/GetFreeMemoryNotification.h"
#include "notify/NotificationManager.h"
#include "notify/TrustedNotification.h"
#include "si/HbbTVCurrentAITDVBURL.h"
#include "support/LogEntry.h"
#include "support/EntryGuard.h"
#include "tesmo_hbbtv/bindings.h"

namespace TesmoHbbTV {

namespace {

// Written by the set-listener bindings, on the browser thread only.
HBBTV_AppManagerListener applicationManagerListener = nullptr;
HBBTV_AppDestroyedListener applicationDestroyedListener = nullptr;

const uint32_t EVENT_LOW_MEMORY = 0;
const uint32_t EVENT_LOAD_ERROR = 3;

const int RESULT_OK = 0;
const int RESULT_FAILED = 1;
const int RESULT_NOT_FOUND = 3;
const int RESULT_NO = 6;

LogEntry bindingLog(LogLevel level = LOG_LEVEL_DEBUG)
{
    return LogEntry(level, "ApplicationManager");
}

void* idAsPointer(uint32_t id)
{
    return reinterpret_cast<void*>(static_cast<uintptr_t>(id));
}

}  // namespace

void call_application_destroyed_listener(Application* application)
{
    if (applicationDestroyedListener)
        applicationDestroyedListener(get_id_from_application(application));
}

void call_application_load_error_listener(Application* application)
{
    if (applicationManagerListener)
        applicationManagerListener(EVENT_LOAD_ERROR, get_id_from_application(application));
}

void call_low_memory_listener()
{
    if (applicationManagerListener)
        applicationManagerListener(EVENT_LOW_MEMORY, 0);
}

Application* get_application_from_window(long handle)
{
    WindowManager* manager = WindowManager::existingInstance();
    DAXO_TesmoWindow* browserWindow = nullptr;
    if (!manager || tm_get_window(ConfigurationManager::getInstance()->getTesmo(), handle, &browserWindow) != 0)
        return nullptr;
    Window* window = manager->getWindow(browserWindow);
    if (!window) {
        bindingLog(LOG_LEVEL_ERR) << "No window found in native call";
        return nullptr;
    }
    return window->getApplication(browserWindow);
}

Application* get_application_from_id(void* id)
{
    WindowManager* manager = WindowManager::existingInstance();
    Application* app =
        manager ? manager->getApplication(static_cast<unsigned long>(reinterpret_cast<uintptr_t>(id))) : nullptr;
    if (!app)
        bindingLog() << "Native application manager api called with invalid appId.";
    return app;
}

uint32_t get_id_from_application(const Application* application)
{
    return application ? application->getID() : 0;
}

}  // namespace TesmoHbbTV

using namespace TesmoHbbTV;

namespace {

const int RESULT_INVALID_URL = 3;

// An application started from a script: the current-AIT form names an entry of the
// window's table, any other URL starts a broadband application when broadband is usable.
// Sets result to RESULT_INVALID_URL for a current-AIT URL that names nothing.
Application* startFromScript(Window& window, const std::string& url, int& result)
{
    if (HbbTVURL::getURLType(url) == HbbTVURL::URL_TYPE_DVB_CURRENT_AIT) {
        HbbTVCurrentAITDVBURL current(url);
        if (!current.isValid()) {
            result = RESULT_INVALID_URL;
            return nullptr;
        }
        return window.startApplication(current.getOrgId(), static_cast<unsigned short>(current.getAppId()), current);
    }
    if (!WindowManager::existingInstance()->getBroadbandOperational())
        return nullptr;
    return window.createApplication(HbbTVURL(url), nullptr);
}

}  // namespace

extern "C" {

int native_ApplicationManagerSetListener(HBBTV_AppManagerListener listener)
{
    EntryGuard guard;
    applicationManagerListener = listener;
    return RESULT_OK;
}

int native_ApplicationManagerSetAppDestroyedListener(HBBTV_AppDestroyedListener listener)
{
    EntryGuard guard;
    applicationDestroyedListener = listener;
    return RESULT_OK;
}

int native_AppManGetApplicationId(long window_handle, void** application_id)
{
    EntryGuard guard;
    bindingLog() << "native_AppManGetApplicationId";
    Application* app = get_application_from_window(window_handle);
    if (!app)
        return RESULT_NOT_FOUND;
    if (application_id)
        *application_id = idAsPointer(app->getID());
    return RESULT_OK;
}

int native_AppManNotifySetChannelCalled(long window_handle, const char* text, void* channel)
{
    EntryGuard guard;
    bindingLog() << "native_AppManNotifySetChannelCalled()";
    Application* app = get_application_from_window(window_handle);
    if (!app)
        return RESULT_OK;
    AITApplication* entry = app->getAITApplication();
    // Selecting no broadcast service from a page inside the boundary leaves the broadcast.
    if (!channel && entry && app->isBroadcastRelated() && app->isWithinApplicationBoundaries(text))
        app->setBroadcastRelated(false);
    if (entry)
        entry->setChannelHandle(channel);
    return RESULT_OK;
}

int native_ApplicationShow(void* application_id)
{
    EntryGuard guard;
    bindingLog() << "native_ApplicationShow";
    Application* app = get_application_from_id(application_id);
    if (!app)
        return RESULT_NOT_FOUND;
    app->show();
    return RESULT_OK;
}

int native_ApplicationHide(void* application_id)
{
    EntryGuard guard;
    bindingLog() << "native_ApplicationHide";
    Application* app = get_application_from_id(application_id);
    if (!app)
        return RESULT_NOT_FOUND;
    app->hide();
    return RESULT_OK;
}

// The child flag is not consulted: the new application always gets the caller as parent.
int native_ApplicationCreateApplication(const char* url, int, void* parent_id, void** application_id)
{
    EntryGuard guard;
    bindingLog() << "native_ApplicationCreateApplication";
    if (!WindowManager::existingInstance())
        return RESULT_NOT_FOUND;
    Application* parent = get_application_from_id(parent_id);
    if (!parent) {
        bindingLog() << "Invalid parent application id in native application create call";
        return RESULT_NOT_FOUND;
    }
    Window* window = parent->getWindow();
    if (!window) {
        bindingLog() << "No window found to create application in in native call";
        return RESULT_NOT_FOUND;
    }
    const std::string text = url ? url : "";
    bindingLog() << text;
    if (application_id)
        *application_id = nullptr;
    int result = RESULT_OK;
    Application* app = startFromScript(*window, text, result);
    if (result == RESULT_INVALID_URL)
        return RESULT_NOT_FOUND;
    if (!app) {
        bindingLog() << "Create application failed";
        return RESULT_FAILED;
    }
    app->setParentApplication(parent);
    app->setXMLAITAllowed();
    if (application_id)
        *application_id = idAsPointer(app->getID());
    return RESULT_OK;
}

int native_ApplicationDestroyApplication(void* application_id)
{
    EntryGuard guard;
    bindingLog() << "native_ApplicationDestroyApplication";
    Application* app = application_id ? get_application_from_id(application_id) : nullptr;
    if (!app)
        return RESULT_NOT_FOUND;
    bindingLog() << app->getURL().getFullUrl();
    Window* window = app->getWindow();
    if (!window) {
        bindingLog() << "No window found for application in native call.";
        return RESULT_NOT_FOUND;
    }
    window->shutdownApplication(app, false, true);
    return RESULT_OK;
}

int native_AppPrivateDataGetFreeMem(void*, void*, void*, double* free_memory)
{
    EntryGuard guard;
    bindingLog() << "native_AppPrivateDataGetFreeMem";
    long value = -1;
    NotificationManager::raise<GetFreeMemoryNotification>(&value);
    if (free_memory)
        *free_memory = static_cast<double>(value);
    return RESULT_OK;
}

int native_AppPrivateDataGetCurrentChannel(void* application_id, void** channel)
{
    EntryGuard guard;
    bindingLog() << "native_AppPrivateDataGetCurrentChannel";
    Application* app = get_application_from_id(application_id);
    if (!app || !channel)
        return RESULT_NOT_FOUND;
    if (app->isBroadcastRelated() && app->getAITApplication())
        *channel = app->getAITApplication()->getChannelHandle();
    return *channel ? RESULT_OK : RESULT_FAILED;
}

// Trusted: broadcast-related, signed, and the page inside the boundary, unless a listener
// says otherwise.
int native_PermissionsIsTrusted(long window_handle, const char* url)
{
    EntryGuard guard;
    bindingLog() << "native_PermissionIsTrusted()";
    Application* app = get_application_from_window(window_handle);
    if (!app)
        return RESULT_NO;
    const AITApplication* entry = app->getAITApplication();
    bool trusted = app->isBroadcastRelated() && entry && entry->isSigned() && app->isWithinApplicationBoundaries(url);
    NotificationManager::raise<TrustedNotification>(
        app->getWindow(), url, &trusted, app->isBroadcastRelated(), entry ? entry->getOrganisationIdentifier() : 0,
        entry ? entry->getApplicationIdentifier() : 0, entry ? entry->getApplicationUsageType() : 0,
        app->isLaunchedAsAutostart());
    return trusted ? RESULT_OK : RESULT_NO;
}

int native_PermissionsIsBroadcastRelated(long window_handle, const char* url)
{
    EntryGuard guard;
    bindingLog() << "native_PermissionsIsBroadcastRelated()";
    Application* app = get_application_from_window(window_handle);
    return app && app->isWithinApplicationBoundaries(url) && app->isBroadcastRelated() ? RESULT_OK : RESULT_NO;
}

}  // extern "C"
