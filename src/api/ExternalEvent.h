#ifndef TESMO_HBBTV_API_EXTERNALEVENT_H
#define TESMO_HBBTV_API_EXTERNALEVENT_H

#include "api/ThreadsafeEventQueue.h"
#include "tesmo_hbbtv/tesmo_hbbtv.h"

namespace TesmoHbbTV {

class Window;

// A platform event waiting for the browser thread. It owns the platform's malloc'ed record:
// after execute() the record and the strings its type owns are freed; an event destroyed
// unexecuted frees the record only.
class ExternalEvent : public ThreadsafeEventQueue::Event {
public:
    // type is one of HBBTV_EventType or any other value the platform sent.
    ExternalEvent(int type, HBBTV_EventData* data);
    ~ExternalEvent() override;

    ExternalEvent(const ExternalEvent&) = delete;
    ExternalEvent& operator=(const ExternalEvent&) = delete;

    void execute() override;
    // Events 2, 3 and 4 name a window. A forgotten start frees its URL, which no one else
    // could.
    bool forgetWindow(const Window* window) override;

private:
    void dispatch(HBBTV_EventData* event);
    void handleAitSection(HBBTV_EventData* event);
    void feedSection(Window& window, const unsigned char* section, const HBBTV_EventData& event);
    void handleAitWithdrawn();
    void handleStartApplication(HBBTV_EventData* event);
    void handleStartBroadcastIndependent(HBBTV_EventData* event);
    void handleTerminateApplication(HBBTV_EventData* event);
    void handleCarouselFile(HBBTV_EventData* event, bool ready);
    void handleBroadband(bool up);
    void handleStreamEvent(HBBTV_EventData* event);
    void handleTerminalIdentity(HBBTV_EventData* event);
    void handlePlatformProfiles(HBBTV_EventData* event);

    int type;
    HBBTV_EventData* data;  // owned; malloc'ed by the platform
};

}  // namespace TesmoHbbTV

#endif
