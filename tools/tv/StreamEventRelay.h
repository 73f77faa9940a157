#ifndef TESMO_TV_STREAMEVENTRELAY_H
#define TESMO_TV_STREAMEVENTRELAY_H

#include <map>
#include <string>
#include <vector>

#include "PlatformEvents.h"
#include "StreamEventFeed.h"
#include "Timeline.h"

// The platform's stream events: the library's subscriptions, and each event that the
// service's stream descriptors trigger, sent through the library as the platform's stream
// event, whose callback (given here) hands it to the browser core on the browser thread.
class StreamEventRelay {
public:
    StreamEventRelay(Timeline& out, PostEvent post, HBBTV_StreamEventCallback deliver)
        : out(out), post(std::move(post)), deliver(deliver)
    {
    }

    // A service's stream descriptor sections by component tag, spread over that many ticks.
    void start(std::map<uint8_t, std::vector<TimedSection>> sections, uint64_t ticks);
    // Resolves what the carousel holds and sends what the sections due at the service's tick trigger.
    void step(uint64_t serviceTick, const carousel::ObjectCarousel& carousel);

    // ---- the library's calls
    void call(JsonLine line, const std::string& text);
    // The library's path is the carousel's host, then the object's path below its gateway.
    void subscribe(const char* path, void* listener, const char* eventName);
    void subscribeXml(const char* eventName, uint16_t componentTag, uint16_t eventId, void* listener);
    void unsubscribe(void* listener) { feed.unsubscribe(listener); }

private:
    Timeline& out;
    PostEvent post;
    HBBTV_StreamEventCallback deliver;
    StreamEventFeed feed;
};

#endif
