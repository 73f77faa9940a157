#ifndef TESMO_HBBTV_NOTIFY_STOPAPPLICATIONNOTIFICATION_H
#define TESMO_HBBTV_NOTIFY_STOPAPPLICATIONNOTIFICATION_H

#include "notify/ApplicationNotification.h"

namespace TesmoHbbTV {

// An application stopped; listeners answer through reactivate_ait directly.
class StopApplicationNotification : public ApplicationNotification {
public:
    StopApplicationNotification(void* window, bool broadcast_related, unsigned long organisation_id,
                                unsigned short application_id, const char* url, bool* reactivate_ait)
        : ApplicationNotification(
              HBBTV_NOTIFICATION_APPLICATION_STOP,
              {window, broadcast_related, false, false, organisation_id, application_id, url, reactivate_ait, 0})
    {
    }
};

}  // namespace TesmoHbbTV

#endif
