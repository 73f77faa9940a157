#include "api/BrowserNotificationDispatcher.h"

#include <string>

#include "api/ConfigurationManager.h"
#include "api/DAXOAITEvent.h"
#include "api/LoadSuccessEvent.h"
#include "api/ThreadsafeEventQueue.h"
#include "carousel/OCDownloadManager.h"
#include "lifecycle/Application.h"
#include "lifecycle/Window.h"
#include "lifecycle/WindowManager.h"
#include "notify/NotificationManager.h"
#include "notify/XHRNotification.h"
#include "si/AIT.h"
#include "si/HbbTVDVBURL.h"
#include "support/LogEntry.h"
#include "tesmo_hbbtv/tesmo_hbbtv.h"

namespace TesmoHbbTV {

namespace {

LogEntry coreLog(LogLevel level)
{
    return LogEntry(level, "tesmo_hbbtv");
}

const int RESULT_DONE = 0;
const int RESULT_REFUSED = 1;
const int RESULT_FAILURE = -1;
const int RESULT_INVALID = -3;
const int32_t OUTCOME_CONNECTION_FAILED = 3;
const int16_t HTTP_NOT_FOUND = 404;

OCDownloadManager* downloadManager()
{
    ConfigurationManager* config = ConfigurationManager::getInstance();
    return config ? config->getDownloadManager() : nullptr;
}

std::string textOf(const char* text)
{
    return text ? text : "";
}

}  // namespace

bool BrowserNotificationDispatcher::dispatch(int id)
{
    if (id == DAXO_TESMO_EVT_PROTOCOL_LOADING_STOP)
        return protocolLoadingStop();
    if (id == DAXO_TESMO_EVT_AIT)
        coreLog(LOG_LEVEL_DEBUG) << "DAXO_TESMO_EVT_AIT";
    if (!tesmo_hbbtv_is_hbbtv_window(browserWindow))
        return false;
    switch (id) {
    case DAXO_TESMO_EVT_WINDOW_CLOSE:
        return windowClosed();
    case DAXO_TESMO_EVT_LOADING_STARTED:
        return handled(RESULT_DONE);
    case DAXO_TESMO_EVT_LOADING_FINISHED:
        return loadingFinished();
    case DAXO_TESMO_EVT_LOADING_FAILED:
        return loadingFailed();
    case DAXO_TESMO_EVT_PROTOCOL_LOADING_START:
        return protocolLoadingStart();
    case DAXO_TESMO_EVT_XML_AIT_PARSE_FAILED:
        return xmlParseFailed();
    case DAXO_TESMO_EVT_XHR_REQUEST:
        return scriptRequest();
    case DAXO_TESMO_EVT_AIT:
        return xmlAit();
    default:
        return false;
    }
}

bool BrowserNotificationDispatcher::handled(int result)
{
    if (resultSlot)
        *resultSlot = result;
    return true;
}

Window* BrowserNotificationDispatcher::managedWindow() const
{
    WindowManager* manager = WindowManager::existingInstance();
    return manager ? manager->getWindow(browserWindow) : nullptr;
}

Application* BrowserNotificationDispatcher::applicationOfWindow() const
{
    Window* window = managedWindow();
    return window ? window->getApplication(browserWindow) : nullptr;
}

bool BrowserNotificationDispatcher::reportLoadFailed(Window& window)
{
    return handled(window.reportLoadFailed(browserWindow) ? RESULT_DONE : RESULT_INVALID);
}

bool BrowserNotificationDispatcher::windowClosed()
{
    coreLog(LOG_LEVEL_DEBUG) << "DAXO_TESMO_EVT_WINDOW_CLOSE";
    if (Window* window = managedWindow())
        window->terminateRunningApplication(false);
    return true;
}

bool BrowserNotificationDispatcher::loadingFinished()
{
    coreLog(LOG_LEVEL_DEBUG) << "DAXO_TESMO_EVT_LOADING_FINISHED";
    Window* window = managedWindow();
    const auto* record = static_cast<const DAXO_LoadRecord*>(data);
    ConfigurationManager* config = ConfigurationManager::getInstance();
    if (!window || !record || !config || !config->getEventQueue())
        return false;
    if (record->outcome != OUTCOME_CONNECTION_FAILED && record->http_status != HTTP_NOT_FOUND) {
        config->getEventQueue()->add(new LoadSuccessEvent(browserWindow));
        return handled(RESULT_DONE);
    }
    coreLog(LOG_LEVEL_ERR) << "DAXO_LOAD_CONNECTION_FAILED";
    return reportLoadFailed(*window);
}

bool BrowserNotificationDispatcher::loadingFailed()
{
    coreLog(LOG_LEVEL_DEBUG) << "DAXO_TESMO_EVT_LOADING_FAILED";
    Window* window = managedWindow();
    return window && reportLoadFailed(*window);
}

// Every protocol stream given to this handler is a dvb: one, so no other scheme is turned
// away here: the URL is taken as a dvb: URL whatever its text.
bool BrowserNotificationDispatcher::protocolLoadingStart()
{
    const auto* record = static_cast<const DAXO_ProtocolRecord*>(data);
    if (!record)
        return false;
    const std::string text = textOf(record->url);
    coreLog(LOG_LEVEL_DEBUG) << "DAXO_TESMO_EVT_PROTOCOL_LOADING_START";
    coreLog(LOG_LEVEL_DEBUG) << (text.size() > 6 ? text.substr(6) : "");
    coreLog(LOG_LEVEL_DEBUG) << text;
    HbbTVDVBURL url(text);
    OCDownloadManager* downloads = downloadManager();
    if (!downloads)
        return false;

    Application* app = applicationOfWindow();
    if (app && app->isBroadcastRelated()) {
        url.resolveRelativeUrl(app->getURL());
        if (downloads->startDownload(url, record->stream) == OCDownloadManager::FAILED)
            coreLog(LOG_LEVEL_ERR) << "Failed to load dvb url.";
    } else {
        tm_protocol_failed(record->stream, HTTP_NOT_FOUND);
    }
    return handled(RESULT_DONE);
}

bool BrowserNotificationDispatcher::protocolLoadingStop()
{
    coreLog(LOG_LEVEL_DEBUG) << "DAXO_TESMO_EVT_PROTOCOL_LOADING_STOP";
    const auto* record = static_cast<const DAXO_ProtocolRecord*>(data);
    OCDownloadManager* downloads = downloadManager();
    if (!record || !downloads)
        return false;
    if (!downloads->stopDownload(record->stream)) {
        coreLog(LOG_LEVEL_ERR) << "Unrecognized id, releasing to platform";
        return false;
    }
    return handled(RESULT_DONE);
}

bool BrowserNotificationDispatcher::xmlParseFailed()
{
    if (Window* window = managedWindow())
        window->reportXMLParseFailure(browserWindow);
    return true;
}

bool BrowserNotificationDispatcher::scriptRequest()
{
    auto* record = static_cast<DAXO_RequestRecord*>(data);
    if (!record)
        return false;
    const HbbTVURL base(textOf(record->base_url));
    HbbTVURL requested(textOf(record->url));
    if (HbbTVURL::getURLType(requested.getBaseUrl()) == HbbTVURL::URL_TYPE_DVB)
        requested.resolveRelativeUrl(base);

    if (!managedWindow())
        return handled(RESULT_DONE);
    Application* app = applicationOfWindow();
    if (!app) {
        coreLog(LOG_LEVEL_WARN) << "XHR request received when no running application. Rejecting as invalid.";
        return handled(RESULT_INVALID);
    }
    const std::string target = requested.getFullUrl();
    if (app->isWithinApplicationBoundaries(requested)) {
        int32_t permission = HBBTV_XHR_PERMISSION_DEFAULT;
        NotificationManager::raise<XHRNotification>(base.getFullUrl().c_str(), target.c_str(), &permission);
        record->permission = permission;
    } else if (target.compare(0, 4, "dvb:") == 0) {
        coreLog(LOG_LEVEL_DEBUG) << "Denying out of bound dvb XHR request.";
        record->permission = HBBTV_XHR_PERMISSION_DENY;
    } else {
        coreLog(LOG_LEVEL_DEBUG) << "Letting core decide on an out of bound http(s) XHR request.";
        record->permission = HBBTV_XHR_PERMISSION_CORE_DECIDES;
    }
    return handled(RESULT_DONE);
}

// The table is activated at a later tick, never inside the notification.
bool BrowserNotificationDispatcher::xmlAit()
{
    ConfigurationManager* config = ConfigurationManager::getInstance();
    Window* window = managedWindow();
    if (!config || !config->getEventQueue() || !window)
        return handled(RESULT_FAILURE);
    Application* app = window->getApplication(browserWindow);
    const auto* record = static_cast<const DAXO_AITData*>(data);
    if (!app || !app->isXMLAITAllowed()) {
        coreLog(LOG_LEVEL_ERR) << "XML AIT received but not allowed to start";
        return handled(RESULT_REFUSED);
    }
    ref_ptr<AIT> ait(new AIT());
    if (!record || !ait->parse(*record)) {
        coreLog(LOG_LEVEL_ERR) << "Invalid XML AIT received, rejecting";
        if (!window->tryRestoreParentApplication(app))
            window->shutdownApplication(app, false, false);
        return handled(RESULT_REFUSED);
    }
    config->getEventQueue()->add(new DAXOAITEvent(window, ait));
    return handled(RESULT_DONE);
}

}  // namespace TesmoHbbTV
