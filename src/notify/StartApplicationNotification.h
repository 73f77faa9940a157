#ifndef TESMO_HBBTV_NOTIFY_STARTAPPLICATIONNOTIFICATION_H
#define TESMO_HBBTV_NOTIFY_STARTAPPLICATIONNOTIFICATION_H

#include "notify/ApplicationNotification.h"

namespace TesmoHbbTV {

// May an application start? The listeners' action (an HBBTV_ApplicationActionType or
// any other value) comes back in *action.
class StartApplicationNotification : public ApplicationNotification {
public:
    StartApplicationNotification(void* window, bool broadcast_signalled, unsigned long organisation_id,
                                 unsigned short application_id, const char* url, unsigned char usage_type,
                                 bool autostart, int32_t* action);
    ~StartApplicationNotification() override;

private:
    int32_t* action;  // the asker's
};

}  // namespace TesmoHbbTV

#endif
