#ifndef TESMO_HBBTV_API_EXTERNALEVENT_H
#define TESMO_HBBTV_API_EXTERNALEVENT_H

#include "api/ThreadsafeEventQueue.h"
#include "tesmo_hbbtv/tesmo_hbbtv.h"

namespace TesmoHbbTV {

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

private:
    void handleStreamEvent(HBBTV_EventData* data);
    void handleTerminalIdentity(HBBTV_EventData* data);
    void handlePlatformProfiles(HBBTV_EventData* data);

    int type;
    HBBTV_EventData* data;  // owned; malloc'ed by the platform
};

} // namespace TesmoHbbTV

#endif
