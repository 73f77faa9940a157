#include "api/StopApplicationEvent.h"

#include "lifecycle/Application.h"
#include "lifecycle/Window.h"
#include "support/LogEntry.h"

namespace TesmoHbbTV {

StopApplicationEvent::StopApplicationEvent(Window* window, Application* application, bool reactivate)
    : WindowEvent(window), applicationId(application ? application->getID() : 0), reactivate(reactivate)
{
}

void StopApplicationEvent::execute()
{
    LogEntry(LOG_LEVEL_DEBUG, "StopApplicationEvent") << "StopApplicationEvent::execute()";
    if (Window* target = liveWindow())
        target->shutdownApplication(target->findApplication(applicationId), true, reactivate);
    else
        LogEntry(LOG_LEVEL_ERR, "StopApplicationEvent") << "Invalid setup or window do not exist.";
}

}  // namespace TesmoHbbTV
