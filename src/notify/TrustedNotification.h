#ifndef TESMO_HBBTV_NOTIFY_TRUSTEDNOTIFICATION_H
#define TESMO_HBBTV_NOTIFY_TRUSTEDNOTIFICATION_H

#include "notify/ApplicationNotification.h"

namespace TesmoHbbTV {

// Is this page trusted? flag_b starts as the library's verdict; listeners may overturn it.
class TrustedNotification : public ApplicationNotification {
public:
    TrustedNotification(void* window, const char* url, bool* trusted, bool broadcast_related,
                        unsigned long organisation_id, unsigned short application_id, unsigned char usage_type,
                        bool autostart)
        : ApplicationNotification(HBBTV_NOTIFICATION_TRUSTED,
                                  {window, broadcast_related, trusted && *trusted, autostart, organisation_id,
                                   application_id, url, nullptr, usage_type}),
          trusted(trusted)
    {
    }
    ~TrustedNotification() override
    {
        if (trusted)
            *trusted = application().flag_b != 0;
    }

private:
    bool* trusted;  // the asker's
};

}  // namespace TesmoHbbTV

#endif
