#include "notify/AITUpdateNotification.h"

#include <cstdlib>
#include <cstring>

#include "si/AIT.h"

namespace TesmoHbbTV {

namespace {

// One URL per counted transport, walking the available transports from the first; the
// slots are filled from the last index down, so the first transport lands last. Receivers
// in the field read them in that order. A step without a transport leaves its slot null.
char** transportUrls(const AITApplication& app, int32_t count)
{
    if (count <= 0)
        return nullptr;
    auto** urls = static_cast<char**>(std::calloc(size_t(count), sizeof(char*)));
    const std::string location = app.getApplicationLocation();
    const AITApplicationTransport* transport = app.getFirstAvailableTransport(true);
    for (int32_t slot = count - 1; slot >= 0; --slot) {
        if (transport) {
            urls[slot] = strdup(transport->getURL(location).c_str());
            transport = app.getNextAvailableTransport(transport, true);
        }
    }
    return urls;
}

}  // namespace

AITUpdateNotification::AITUpdateNotification(void* window, AIT* ait)
    : Notification(HBBTV_NOTIFICATION_AIT_UPDATE, ait != nullptr)
{
    if (!ait)
        return;
    HBBTV_AITNotificationData& update = data->ait;
    update.window = window;
    update.is_xml_ait = ait->isXMLAIT();
    update.num_applications = static_cast<int32_t>(ait->getNumApplications());
    if (update.num_applications > 0)
        update.applications = static_cast<HBBTV_AITApplicationInfo*>(
            std::calloc(size_t(update.num_applications), sizeof(HBBTV_AITApplicationInfo)));
    for (int32_t i = 0; i < update.num_applications; ++i) {
        const AITApplication& app = *ait->getAITApplication(unsigned(i));
        HBBTV_AITApplicationInfo& info = update.applications[i];
        info.name = copyString(app.getApplicationName().c_str());
        info.organisation_id = app.getOrganisationIdentifier();
        info.application_id = app.getApplicationIdentifier();
        info.usage_type = app.getApplicationUsageType();
        info.control_code = app.getApplicationDescriptor() ? app.getControlCode() : 0;
        info.num_urls = app.getNumTransports();
        info.urls = transportUrls(app, info.num_urls);
    }
    update.was_corrected = ait->isXMLAIT() && ait->wasCorrected();
}

AITUpdateNotification::~AITUpdateNotification()
{
    if (!data)
        return;
    HBBTV_AITNotificationData& update = data->ait;
    for (int32_t i = 0; i < update.num_applications; ++i) {
        HBBTV_AITApplicationInfo& info = update.applications[i];
        std::free(info.name);
        for (int32_t u = 0; u < info.num_urls; ++u)
            std::free(info.urls[u]);
        std::free(info.urls);
    }
    std::free(update.applications);
}

}  // namespace TesmoHbbTV
