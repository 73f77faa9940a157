#ifndef TESMO_HBBTV_API_LOADSUCCESSEVENT_H
#define TESMO_HBBTV_API_LOADSUCCESSEVENT_H

#include "api/ThreadsafeEventQueue.h"
#include "tesmo_hbbtv/browser_core.h"

namespace TesmoHbbTV {

// A finished load, handed to the window that owns the browser window at a later tick.
class LoadSuccessEvent : public ThreadsafeEventQueue::Event {
public:
    explicit LoadSuccessEvent(DAXO_TesmoWindow* daxoWindow) : daxoWindow(daxoWindow) {}
    void execute() override;

private:
    DAXO_TesmoWindow* daxoWindow;  // the browser core's; looked up when the event runs
};

}  // namespace TesmoHbbTV

#endif
