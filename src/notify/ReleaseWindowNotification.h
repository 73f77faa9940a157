#ifndef TESMO_HBBTV_NOTIFY_RELEASEWINDOWNOTIFICATION_H
#define TESMO_HBBTV_NOTIFY_RELEASEWINDOWNOTIFICATION_H

#include "notify/Notification.h"

namespace TesmoHbbTV {

class ReleaseWindowNotification : public Notification {
public:
    ReleaseWindowNotification(DAXO_TesmoWindow** window_slot, bool* released)
        : Notification(HBBTV_NOTIFICATION_RELEASE_WINDOW), released(released)
    {
        data->release_window.window_slot = window_slot;
    }
    ~ReleaseWindowNotification() override
    {
        if (released)
            *released = data->release_window.released != 0;
    }

private:
    bool* released;  // the asker's
};

}  // namespace TesmoHbbTV

#endif
