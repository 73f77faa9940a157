#ifndef TESMO_HBBTV_NOTIFY_BROADCASTRELATEDCHANGENOTIFICATION_H
#define TESMO_HBBTV_NOTIFY_BROADCASTRELATEDCHANGENOTIFICATION_H

#include "notify/ApplicationNotification.h"

namespace TesmoHbbTV {

class BroadcastRelatedChangeNotification : public ApplicationNotification {
public:
    BroadcastRelatedChangeNotification(void* window, bool broadcast_related, bool flag_b, bool autostart,
                                       unsigned long organisation_id, unsigned short application_id, const char* url,
                                       unsigned char usage_type)
        : ApplicationNotification(
              HBBTV_NOTIFICATION_BROADCAST_RELATED_CHANGE,
              {window, broadcast_related, flag_b, autostart, organisation_id, application_id, url, nullptr, usage_type})
    {
    }
};

}  // namespace TesmoHbbTV

#endif
