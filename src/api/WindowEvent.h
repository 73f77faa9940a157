#ifndef TESMO_HBBTV_API_WINDOWEVENT_H
#define TESMO_HBBTV_API_WINDOWEVENT_H

#include <cstdint>

#include "api/ThreadsafeEventQueue.h"

namespace TesmoHbbTV {

class Window;

// Queued work for one window. The window may be released before the event runs, and a new
// window may then stand at the same address; the serial tells the two apart.
class WindowEvent : public ThreadsafeEventQueue::Event {
protected:
    explicit WindowEvent(Window* window);

    // The window the event was made for, when it still exists; otherwise null.
    Window* liveWindow() const;

    Window* window;  // not owned; may be gone
    uint32_t windowSerial;
};

}  // namespace TesmoHbbTV

#endif
