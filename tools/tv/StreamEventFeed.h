#ifndef TESMO_TV_STREAMEVENTFEED_H
#define TESMO_TV_STREAMEVENTFEED_H

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "ObjectCarousel.h"
#include "SectionPace.h"
#include "TransportStream.h"

// Stream events as a receiver's carousel client delivers them. A subscription names a
// stream event object of the carousel and one of its events (or, from an XML event
// description, a component tag and an event id); the object tells the event's id and the
// elementary stream whose stream descriptors carry it, and each version of a descriptor for
// that id triggers the event once, at once ("do it now"), from when the subscription's
// filter is set. The stream repeats, as a broadcast does.
class StreamEventFeed {
public:
    struct Trigger {
        void* listener;
        std::string name;
        std::string data;  // the descriptor's private data, in hexadecimal
        std::string text;  // the same bytes read as UTF-8, what is not UTF-8 replaced
        std::string status;  // "trigger", or "error" when the event cannot be found
    };

    // The service's stream descriptor sections by component tag, spread over that many ticks.
    void start(std::map<uint8_t, std::vector<TimedSection>> streams, uint64_t ticks);
    // path is the object's below the service gateway.
    void subscribe(const std::string& path, const std::string& eventName, void* listener);
    void subscribe(const std::string& eventName, uint8_t componentTag, uint16_t eventId, void* listener);
    void unsubscribe(void* listener);

    // Resolves what the carousel now holds, adds the sections due at the tick, and gives the
    // events they trigger.
    void step(uint64_t tick, const carousel::ObjectCarousel& carousel, std::vector<Trigger>& triggers);

private:
    struct Subscription {
        std::string path;  // empty once resolved
        std::string eventName;
        void* listener;
        uint8_t componentTag = 0;
        uint16_t eventId = 0;
    };

    void resolve(const carousel::ObjectCarousel& carousel, std::vector<Trigger>& triggers);
    void fire(uint8_t componentTag, const Bytes& section, std::vector<Trigger>& triggers);

    std::vector<Subscription> subscriptions;
    std::vector<std::pair<uint8_t, TimedSection>> sections;  // in stream order
    size_t next = 0;
    SectionPace pace;
    std::set<std::tuple<void*, uint16_t, uint8_t>> seen;  // listener, event id, version
};

#endif
