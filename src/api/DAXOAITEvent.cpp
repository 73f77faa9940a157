#include "api/DAXOAITEvent.h"

#include "lifecycle/Window.h"
#include "notify/AITUpdateNotification.h"
#include "notify/NotificationManager.h"

namespace TesmoHbbTV {

void DAXOAITEvent::execute()
{
    Window* target = liveWindow();
    if (!target)
        return;
    if (NotificationManager::existingInstance())
        NotificationManager::raise<AITUpdateNotification>(target, ait.get());
    ait->printAIT();
    target->setAIT(ait);
    target->activateAIT();
}

}  // namespace TesmoHbbTV
