#include "StreamEventRelay.h"

#include <cstring>

void StreamEventRelay::start(std::map<uint8_t, std::vector<TimedSection>> sections, uint64_t ticks)
{
    feed.start(std::move(sections), ticks);
}

void StreamEventRelay::step(uint64_t serviceTick, const carousel::ObjectCarousel& carousel)
{
    std::vector<StreamEventFeed::Trigger> triggers;
    feed.step(serviceTick, carousel, triggers);
    for (const StreamEventFeed::Trigger& trigger : triggers) {
        out.say("stream event \"" + trigger.name + "\" " + trigger.status +
                (trigger.text.empty() ? "" : ": " + trigger.text));
        HBBTV_EventData* event = newEvent();
        event->stream_event.callback = deliver;
        event->stream_event.a = strdup(trigger.name.c_str());
        event->stream_event.b = strdup(trigger.data.c_str());
        event->stream_event.c = strdup(trigger.text.c_str());
        event->stream_event.d = strdup(trigger.status.c_str());
        event->stream_event.e = trigger.listener;
        post(HBBTV_EVENT_DSMCC_STREAM_EVENT, event);
    }
}

void StreamEventRelay::call(JsonLine line, const std::string& text)
{
    out.record(std::move(line));
    out.say(text);
}

void StreamEventRelay::subscribe(const char* path, void* listener, const char* eventName)
{
    const std::string text = path ? path : "";
    const size_t slash = text.find('/');
    feed.subscribe(slash == std::string::npos ? "" : text.substr(slash + 1), eventName ? eventName : "", listener);
}

void StreamEventRelay::subscribeXml(const char* eventName, uint16_t componentTag, uint16_t eventId, void* listener)
{
    feed.subscribe(eventName ? eventName : "", uint8_t(componentTag), eventId, listener);
}
