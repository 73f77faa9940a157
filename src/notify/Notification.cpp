#include "notify/Notification.h"

#include <cstdlib>
#include <cstring>

namespace TesmoHbbTV {

Notification::Notification(HBBTV_NotificationType type, bool withPayload)
    : type(type),
      data(withPayload ? static_cast<HBBTV_NotificationData*>(std::calloc(1, sizeof(HBBTV_NotificationData))) : nullptr)
{
}

Notification::~Notification()
{
    std::free(data);
}

void Notification::call(HBBTV_NotificationListener listener)
{
    if (listener)
        listener(type, data);
}

char* Notification::copyString(const char* text)
{
    return strdup(text ? text : "");
}

}  // namespace TesmoHbbTV
