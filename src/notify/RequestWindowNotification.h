#ifndef TESMO_HBBTV_NOTIFY_REQUESTWINDOWNOTIFICATION_H
#define TESMO_HBBTV_NOTIFY_REQUESTWINDOWNOTIFICATION_H

#include "notify/Notification.h"

namespace TesmoHbbTV {

class RequestWindowNotification : public Notification {
public:
    RequestWindowNotification(DAXO_TesmoWindow** window_slot, bool* granted, void* window)
        : Notification(HBBTV_NOTIFICATION_REQUEST_WINDOW), granted(granted)
    {
        data->request_window.window_slot = window_slot;
        data->request_window.window = window;
    }
    ~RequestWindowNotification() override
    {
        if (granted)
            *granted = data->request_window.granted != 0;
    }

private:
    bool* granted;  // the asker's
};

}  // namespace TesmoHbbTV

#endif
