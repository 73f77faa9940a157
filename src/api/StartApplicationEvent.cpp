#include "api/StartApplicationEvent.h"

#include "lifecycle/Application.h"
#include "lifecycle/Window.h"
#include "support/LogEntry.h"

namespace TesmoHbbTV {

StartApplicationEvent::StartApplicationEvent(Window* window, Application* application)
    : WindowEvent(window), applicationId(application ? application->getID() : 0)
{
}

void StartApplicationEvent::execute()
{
    LogEntry(LOG_LEVEL_DEBUG, "StartApplicationEvent") << "StartApplicationEvent::execute()";
    if (Window* target = liveWindow())
        target->startPendingApplication(target->findUnstartedApplication(applicationId));
    else
        LogEntry(LOG_LEVEL_ERR, "StartApplicationEvent") << "Invalid setup or window do not exist.";
}

}  // namespace TesmoHbbTV
