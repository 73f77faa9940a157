#include "api/WindowEvent.h"

#include "lifecycle/Window.h"
#include "lifecycle/WindowManager.h"

namespace TesmoHbbTV {

WindowEvent::WindowEvent(Window* window) : window(window), windowSerial(window ? window->getSerial() : 0) {}

Window* WindowEvent::liveWindow() const
{
    WindowManager* manager = WindowManager::existingInstance();
    if (!manager || !manager->windowExists(window) || window->getSerial() != windowSerial)
        return nullptr;
    return window;
}

}  // namespace TesmoHbbTV
