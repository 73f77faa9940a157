#ifndef TESMO_HBBTV_API_STARTAPPLICATIONEVENT_H
#define TESMO_HBBTV_API_STARTAPPLICATIONEVENT_H

#include "api/WindowEvent.h"

namespace TesmoHbbTV {

class Application;

// Starts a pending application at a later tick.
class StartApplicationEvent : public WindowEvent {
public:
    StartApplicationEvent(Window* window, Application* application);
    void execute() override;

private:
    uint32_t applicationId;  // found again through the window when the event runs
};

}  // namespace TesmoHbbTV

#endif
