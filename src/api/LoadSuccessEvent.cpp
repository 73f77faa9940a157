#include "api/LoadSuccessEvent.h"

#include "lifecycle/Window.h"
#include "lifecycle/WindowManager.h"
#include "support/LogEntry.h"

namespace TesmoHbbTV {

void LoadSuccessEvent::execute()
{
    LogEntry(LOG_LEVEL_DEBUG, "LoadSuccessEvent") << "LoadSuccessEvent::execute()";
    WindowManager* manager = WindowManager::existingInstance();
    if (!manager) {
        LogEntry(LOG_LEVEL_ERR, "LoadSuccessEvent") << "Could not get WindowManager instance.";
        return;
    }
    Window* window = manager->getWindow(daxoWindow);
    if (!window) {
        LogEntry(LOG_LEVEL_ERR, "LoadSuccessEvent") << "Could not get Window for given tesmo window.";
        return;
    }
    window->reportLoadSuccess(daxoWindow);
}

}  // namespace TesmoHbbTV
