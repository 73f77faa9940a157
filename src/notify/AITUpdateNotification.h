#ifndef TESMO_HBBTV_NOTIFY_AITUPDATENOTIFICATION_H
#define TESMO_HBBTV_NOTIFY_AITUPDATENOTIFICATION_H

#include "notify/Notification.h"

namespace TesmoHbbTV {

class AIT;

// A new table for a window: every application with its URLs. Without a table the
// listeners get a null payload.
class AITUpdateNotification : public Notification {
public:
    AITUpdateNotification(void* window, AIT* ait);
    ~AITUpdateNotification() override;
};

}  // namespace TesmoHbbTV

#endif
