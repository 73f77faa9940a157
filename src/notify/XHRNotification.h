#ifndef TESMO_HBBTV_NOTIFY_XHRNOTIFICATION_H
#define TESMO_HBBTV_NOTIFY_XHRNOTIFICATION_H

#include <cstdlib>

#include "notify/Notification.h"

namespace TesmoHbbTV {

// May a page's script request this URL? The listeners' permission comes back in *permission.
class XHRNotification : public Notification {
public:
    XHRNotification(const char* base_url, const char* target_url, int32_t* permission)
        : Notification(HBBTV_NOTIFICATION_XHR), permission(permission)
    {
        data->xhr.base_url = copyString(base_url);
        data->xhr.target_url = copyString(target_url);
        data->xhr.permission = HBBTV_XHR_PERMISSION_DEFAULT;
    }
    ~XHRNotification() override
    {
        if (permission)
            *permission = data->xhr.permission;
        std::free(data->xhr.base_url);
        std::free(data->xhr.target_url);
    }

private:
    int32_t* permission;  // the asker's
};

}  // namespace TesmoHbbTV

#endif
