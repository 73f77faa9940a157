#ifndef TESMO_HBBTV_NOTIFY_APPLICATIONNOTIFICATION_H
#define TESMO_HBBTV_NOTIFY_APPLICATIONNOTIFICATION_H

#include "notify/Notification.h"

namespace TesmoHbbTV {

// The layout shared by the start, stop, trusted and broadcast-related-change records.
class ApplicationNotification : public Notification {
protected:
    struct Fields {
        void* window;
        bool flagA;
        bool flagB;
        bool flagC;
        unsigned long organisationId;
        unsigned short applicationId;
        const char* url;
        bool* reactivateAit;
        unsigned char usageType;
    };

    ApplicationNotification(HBBTV_NotificationType type, const Fields& fields);
    ~ApplicationNotification() override;

    HBBTV_ApplicationNotificationData& application() { return data->application; }
};

}  // namespace TesmoHbbTV

#endif
