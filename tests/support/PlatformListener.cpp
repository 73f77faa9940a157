#include "PlatformListener.h"

namespace tesmo_test {

PlatformListener& PlatformListener::get()
{
    static PlatformListener listener;
    return listener;
}

void PlatformListener::reset()
{
    notices.clear();
    grantWindows = true;
    startAction.reset();
    reactivateAit.reset();
    trusted.reset();
    freeMemory = -1;
    grantOneWindow = false;
    onNotice = nullptr;
    lastGranted = nullptr;
}

void PlatformListener::install()
{
    tesmo_hbbtv_add_notification_listener(&PlatformListener::listen);
}

HBBTV_STATUS PlatformListener::listen(HBBTV_NotificationType type, HBBTV_NotificationData* data)
{
    PlatformListener& listener = get();
    listener.handle(type, data);
    if (listener.onNotice)
        listener.onNotice(type, data);
    return HBBTV_STATUS_OK;
}

void PlatformListener::handle(HBBTV_NotificationType type, HBBTV_NotificationData* data)
{
    Notice notice;
    notice.type = type;
    notice.hasPayload = data != nullptr;
    if (!data) {
        notices.push_back(notice);
        return;
    }
    switch (type) {
    case HBBTV_NOTIFICATION_APPLICATION_START:
    case HBBTV_NOTIFICATION_APPLICATION_STOP:
    case HBBTV_NOTIFICATION_TRUSTED:
    case HBBTV_NOTIFICATION_BROADCAST_RELATED_CHANGE: {
        HBBTV_ApplicationNotificationData& app = data->application;
        notice.window = app.window;
        notice.flagA = app.flag_a;
        notice.flagB = app.flag_b;
        notice.flagC = app.flag_c;
        notice.organisationId = app.organisation_id;
        notice.applicationId = app.application_id;
        notice.url = app.url;
        notice.usageType = app.usage_type;
        if (type == HBBTV_NOTIFICATION_APPLICATION_START && startAction)
            app.action = *startAction;
        if (type == HBBTV_NOTIFICATION_APPLICATION_STOP && reactivateAit)
            *app.reactivate_ait = *reactivateAit;
        if (type == HBBTV_NOTIFICATION_TRUSTED && trusted)
            app.flag_b = *trusted;
        break;
    }
    case HBBTV_NOTIFICATION_AIT_UPDATE:
        notice.window = data->ait.window;
        notice.isXmlAit = data->ait.is_xml_ait;
        notice.wasCorrected = data->ait.was_corrected;
        for (int32_t i = 0; i < data->ait.num_applications; ++i) {
            const HBBTV_AITApplicationInfo& info = data->ait.applications[i];
            Notice::Entry entry{info.name, info.organisation_id, info.application_id, info.control_code, {}};
            for (int32_t u = 0; u < info.num_urls; ++u)
                entry.urls.push_back(info.urls[u] ? info.urls[u] : "");
            notice.applications.push_back(entry);
        }
        break;
    case HBBTV_NOTIFICATION_XHR:
        notice.url = data->xhr.target_url;
        break;
    case HBBTV_NOTIFICATION_REQUEST_WINDOW:
        notice.window = data->request_window.window;
        if (grantWindows) {
            lastGranted = reinterpret_cast<DAXO_TesmoWindow*>(nextWindow);
            if (!grantOneWindow)
                nextWindow += 0x100;
            *data->request_window.window_slot = lastGranted;
            data->request_window.granted = 1;
        }
        notice.browserWindow = *data->request_window.window_slot;
        break;
    case HBBTV_NOTIFICATION_RELEASE_WINDOW:
        notice.browserWindow = *data->release_window.window_slot;
        data->release_window.released = 1;
        break;
    case HBBTV_NOTIFICATION_SHOW_WINDOW:
    case HBBTV_NOTIFICATION_HIDE_WINDOW:
        notice.browserWindow = *data->visibility.window_slot;
        break;
    case HBBTV_NOTIFICATION_KEYSET_CHANGED:
        notice.browserWindow = data->keyset_changed.daxo_window;
        notice.keyset = data->keyset_changed.keyset;
        break;
    case HBBTV_NOTIFICATION_GET_FREE_MEMORY:
        if (freeMemory != -1)
            *data->get_free_memory.free_memory = freeMemory;
        break;
    }
    notices.push_back(notice);
}

std::vector<HBBTV_NotificationType> PlatformListener::types() const
{
    std::vector<HBBTV_NotificationType> out;
    for (const Notice& n : notices)
        out.push_back(n.type);
    return out;
}

std::vector<Notice> PlatformListener::ofType(HBBTV_NotificationType type) const
{
    std::vector<Notice> out;
    for (const Notice& n : notices)
        if (n.type == type)
            out.push_back(n);
    return out;
}

std::vector<std::string> PlatformListener::startedUrls() const
{
    std::vector<std::string> out;
    for (const Notice& n : ofType(HBBTV_NOTIFICATION_APPLICATION_START))
        out.push_back(n.url);
    return out;
}

}  // namespace tesmo_test
