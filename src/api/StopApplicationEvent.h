#ifndef TESMO_HBBTV_API_STOPAPPLICATIONEVENT_H
#define TESMO_HBBTV_API_STOPAPPLICATIONEVENT_H

#include "api/WindowEvent.h"

namespace TesmoHbbTV {

class Application;

// Shuts an application down at a later tick.
class StopApplicationEvent : public WindowEvent {
public:
    StopApplicationEvent(Window* window, Application* application, bool reactivate);
    void execute() override;

private:
    uint32_t applicationId;  // found again through the window when the event runs
    bool reactivate;
};

}  // namespace TesmoHbbTV

#endif
