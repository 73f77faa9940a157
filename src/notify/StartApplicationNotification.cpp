#include "notify/StartApplicationNotification.h"

namespace TesmoHbbTV {

StartApplicationNotification::StartApplicationNotification(void* window, bool broadcast_signalled,
                                                           unsigned long organisation_id, unsigned short application_id,
                                                           const char* url, unsigned char usage_type, bool autostart,
                                                           int32_t* action)
    : ApplicationNotification(
          HBBTV_NOTIFICATION_APPLICATION_START,
          {window, broadcast_signalled, false, autostart, organisation_id, application_id, url, nullptr, usage_type}),
      action(action)
{
    // The asker's preset is the answer until a listener writes another: 0 normally, and a
    // block for an entry with an invalid identifier.
    application().action = action ? *action : HBBTV_APPLICATION_ACTION_START;
}

StartApplicationNotification::~StartApplicationNotification()
{
    // Kept as the raw integer the listener wrote: a platform may answer any value.
    if (action)
        *action = application().action;
}

}  // namespace TesmoHbbTV
