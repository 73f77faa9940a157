#ifndef TESMO_HBBTV_NOTIFY_SHOWWINDOWNOTIFICATION_H
#define TESMO_HBBTV_NOTIFY_SHOWWINDOWNOTIFICATION_H

#include "notify/Notification.h"

namespace TesmoHbbTV {

class ShowWindowNotification : public Notification {
public:
    explicit ShowWindowNotification(DAXO_TesmoWindow** window_slot) : Notification(HBBTV_NOTIFICATION_SHOW_WINDOW)
    {
        data->visibility.window_slot = window_slot;
    }
};

}  // namespace TesmoHbbTV

#endif
