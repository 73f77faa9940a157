#include "notify/ApplicationNotification.h"

#include <cstdlib>

namespace TesmoHbbTV {

ApplicationNotification::ApplicationNotification(HBBTV_NotificationType type, const Fields& fields) : Notification(type)
{
    HBBTV_ApplicationNotificationData& app = application();
    app.window = fields.window;
    app.flag_a = fields.flagA;
    app.flag_b = fields.flagB;
    app.flag_c = fields.flagC;
    app.organisation_id = static_cast<uint32_t>(fields.organisationId);
    app.application_id = fields.applicationId;
    app.url = copyString(fields.url);
    app.reactivate_ait = fields.reactivateAit;
    app.usage_type = fields.usageType;
    app.action = HBBTV_APPLICATION_ACTION_START;
}

ApplicationNotification::~ApplicationNotification()
{
    std::free(application().url);
}

}  // namespace TesmoHbbTV
