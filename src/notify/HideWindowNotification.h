#ifndef TESMO_HBBTV_NOTIFY_HIDEWINDOWNOTIFICATION_H
#define TESMO_HBBTV_NOTIFY_HIDEWINDOWNOTIFICATION_H

#include "notify/Notification.h"

namespace TesmoHbbTV {

class HideWindowNotification : public Notification {
public:
    explicit HideWindowNotification(DAXO_TesmoWindow** window_slot) : Notification(HBBTV_NOTIFICATION_HIDE_WINDOW)
    {
        data->visibility.window_slot = window_slot;
    }
};

}  // namespace TesmoHbbTV

#endif
