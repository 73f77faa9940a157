#include "NotificationLog.h"

#include "TimelineText.h"

using timelineText::applicationName;
using timelineText::hex;

namespace {

const char* notificationName(HBBTV_NotificationType type)
{
    static const char* const names[] = {"APPLICATION_START", "APPLICATION_STOP",         "AIT_UPDATE",
                                        "TRUSTED",           "BROADCAST_RELATED_CHANGE", "XHR",
                                        "REQUEST_WINDOW",    "RELEASE_WINDOW",           "SHOW_WINDOW",
                                        "HIDE_WINDOW",       "KEYSET_CHANGED",           "GET_FREE_MEMORY"};
    return type >= 0 && type <= HBBTV_NOTIFICATION_GET_FREE_MEMORY ? names[type] : "UNKNOWN";
}

std::string urlsJson(const HBBTV_AITApplicationInfo& info)
{
    std::string json = "[";
    for (int32_t u = 0; u < info.num_urls; ++u)
        json += (u ? "," : "") + (info.urls[u] ? JsonLine::quote(info.urls[u]) : std::string("null"));
    return json + "]";
}

std::string applicationsJson(const HBBTV_AITNotificationData& update)
{
    std::string apps = "[";
    for (int32_t i = 0; i < update.num_applications; ++i) {
        const HBBTV_AITApplicationInfo& info = update.applications[i];
        JsonLine app;
        app.field("name", info.name).field("organisation_id", info.organisation_id);
        app.field("application_id", info.application_id).raw("urls", urlsJson(info));
        app.field("usage_type", info.usage_type).field("control_code", info.control_code);
        apps += (i ? "," : "") + app.str();
    }
    return apps + "]";
}

}  // namespace

JsonLine NotificationLog::json(HBBTV_NotificationType type, const HBBTV_NotificationData* data)
{
    JsonLine line;
    line.field("notification", notificationName(type));
    if (!data)
        return line.raw("data", "null");
    switch (type) {
    case HBBTV_NOTIFICATION_APPLICATION_START:
    case HBBTV_NOTIFICATION_APPLICATION_STOP:
    case HBBTV_NOTIFICATION_TRUSTED:
    case HBBTV_NOTIFICATION_BROADCAST_RELATED_CHANGE: {
        const HBBTV_ApplicationNotificationData& a = data->application;
        line.pointer("window", a.window).field("flag_a", a.flag_a).field("flag_b", a.flag_b).field("flag_c", a.flag_c);
        line.field("organisation_id", a.organisation_id).field("application_id", a.application_id).field("url", a.url);
        line.raw("reactivate_ait", a.reactivate_ait ? (*a.reactivate_ait ? "true" : "false") : "null");
        return line.field("usage_type", a.usage_type).field("action", a.action);
    }
    case HBBTV_NOTIFICATION_AIT_UPDATE: {
        const HBBTV_AITNotificationData& u = data->ait;
        line.pointer("window", u.window)
            .field("is_xml_ait", u.is_xml_ait)
            .field("num_applications", u.num_applications);
        return line.raw("applications", applicationsJson(u)).field("was_corrected", u.was_corrected);
    }
    case HBBTV_NOTIFICATION_XHR:
        return line.field("base_url", data->xhr.base_url)
            .field("target_url", data->xhr.target_url)
            .field("permission", data->xhr.permission);
    case HBBTV_NOTIFICATION_REQUEST_WINDOW:
        return line.pointer("window_slot", data->request_window.window_slot)
            .field("granted", data->request_window.granted)
            .pointer("window", data->request_window.window);
    case HBBTV_NOTIFICATION_RELEASE_WINDOW:
        return line.pointer("window_slot", data->release_window.window_slot)
            .field("released", data->release_window.released);
    case HBBTV_NOTIFICATION_SHOW_WINDOW:
    case HBBTV_NOTIFICATION_HIDE_WINDOW:
        return line.pointer("window_slot", data->visibility.window_slot);
    case HBBTV_NOTIFICATION_KEYSET_CHANGED:
        return line.pointer("daxo_window", data->keyset_changed.daxo_window)
            .field("keyset", data->keyset_changed.keyset);
    case HBBTV_NOTIFICATION_GET_FREE_MEMORY:
        return line.field("free_memory", *data->get_free_memory.free_memory);
    }
    return line;
}

void NotificationLog::tell(HBBTV_NotificationType type, const HBBTV_NotificationData* data, long freeMemory)
{
    out.record(json(type, data));
    if (!data)
        return out.say("AIT update without a table");
    switch (type) {
    case HBBTV_NOTIFICATION_APPLICATION_START:
    case HBBTV_NOTIFICATION_APPLICATION_STOP:
    case HBBTV_NOTIFICATION_BROADCAST_RELATED_CHANGE:
    case HBBTV_NOTIFICATION_TRUSTED:
        return describeApplication(type, data->application);
    case HBBTV_NOTIFICATION_AIT_UPDATE:
        return describeAitUpdate(data->ait);
    case HBBTV_NOTIFICATION_REQUEST_WINDOW:
        return out.say(core.windowName(*data->request_window.window_slot) + " granted");
    case HBBTV_NOTIFICATION_RELEASE_WINDOW:
        return out.say(core.windowName(*data->release_window.window_slot) + " released");
    case HBBTV_NOTIFICATION_SHOW_WINDOW:
        return out.say(core.windowName(*data->visibility.window_slot) + " shown");
    case HBBTV_NOTIFICATION_HIDE_WINDOW:
        return out.say(core.windowName(*data->visibility.window_slot) + " hidden");
    case HBBTV_NOTIFICATION_KEYSET_CHANGED:
        return out.say("key set of " + core.windowName(data->keyset_changed.daxo_window) + " now " +
                       hex((unsigned)data->keyset_changed.keyset, 3));
    case HBBTV_NOTIFICATION_XHR:
        return;  // every request of a page comes here: the browser core tells the refused ones
    case HBBTV_NOTIFICATION_GET_FREE_MEMORY:
        return out.say("free memory asked: " + std::to_string(freeMemory) + " bytes");
    }
}

void NotificationLog::describeApplication(HBBTV_NotificationType type, const HBBTV_ApplicationNotificationData& app)
{
    const std::string who = app.organisation_id || app.application_id
                                ? applicationName(app.organisation_id, app.application_id)
                                : std::string("a broadband application");
    switch (type) {
    case HBBTV_NOTIFICATION_APPLICATION_START:
        out.say("start requested: " + who + " " + app.url + (app.flag_c ? " (AUTOSTART)" : "") +
                (app.action == HBBTV_APPLICATION_ACTION_BLOCK_AND_KILL ? ", blocked: invalid application id" : ""));
        return;
    case HBBTV_NOTIFICATION_APPLICATION_STOP:
        out.say("stopped: " + who + " " + app.url +
                (app.reactivate_ait && *app.reactivate_ait ? " (the broadcast AIT is activated again)" : ""));
        return;
    case HBBTV_NOTIFICATION_BROADCAST_RELATED_CHANGE:
        // Announced while the application is built, before its identifiers are copied.
        out.say(std::string(app.url) + " is now " + (app.flag_a ? "broadcast-related" : "broadcast-independent"));
        return;
    default:
        out.say("trust asked for " + std::string(app.url) + ": " + (app.flag_b ? "trusted" : "not trusted"));
        return;
    }
}

void NotificationLog::describeAitUpdate(const HBBTV_AITNotificationData& update)
{
    out.say(std::string(update.is_xml_ait ? "XML " : "") + "AIT handed to the platform: " +
            std::to_string(update.num_applications) + " application(s)" + (update.was_corrected ? ", corrected" : ""));
    for (int32_t i = 0; i < update.num_applications; ++i) {
        const HBBTV_AITApplicationInfo& info = update.applications[i];
        out.detail(applicationName(info.organisation_id, info.application_id) + " control code " +
                   std::to_string(info.control_code) + ", " + std::to_string(info.num_urls) +
                   " URL(s), last transport first");
        for (int32_t u = 0; u < info.num_urls; ++u)
            out.detail("  " + std::string(info.urls[u] ? info.urls[u] : "(none)"));
    }
}
