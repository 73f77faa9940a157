#ifndef TESMO_HBBTV_NOTIFY_GETFREEMEMORYNOTIFICATION_H
#define TESMO_HBBTV_NOTIFY_GETFREEMEMORYNOTIFICATION_H

#include "notify/Notification.h"

namespace TesmoHbbTV {

// The listener writes through free_memory directly.
class GetFreeMemoryNotification : public Notification {
public:
    explicit GetFreeMemoryNotification(long* free_memory) : Notification(HBBTV_NOTIFICATION_GET_FREE_MEMORY)
    {
        data->get_free_memory.free_memory = free_memory;
    }
};

}  // namespace TesmoHbbTV

#endif
