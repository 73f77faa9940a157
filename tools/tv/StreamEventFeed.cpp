#include "StreamEventFeed.h"

#include <algorithm>
#include <cstdio>

#include "DvbText.h"

namespace {

const uint8_t STREAM_DESCRIPTORS_TABLE = 0x3D;
const uint8_t STREAM_EVENT_DESCRIPTOR = 0x1A;
const size_t STREAM_EVENT_FIXED = 10;  // event id, reserved bits and the NPT

std::string hexOf(const std::string& bytes)
{
    std::string hex;
    char pair[3];
    for (unsigned char c : bytes) {
        std::snprintf(pair, sizeof pair, "%02x", c);
        hex += pair;
    }
    return hex;
}

}  // namespace

void StreamEventFeed::start(std::map<uint8_t, std::vector<TimedSection>> streams, uint64_t ticks)
{
    sections.clear();
    for (auto& stream : streams)
        for (TimedSection& section : stream.second)
            sections.push_back({stream.first, std::move(section)});
    std::stable_sort(sections.begin(), sections.end(),
                     [](const auto& a, const auto& b) { return a.second.packet < b.second.packet; });
    next = 0;
    pace = SectionPace(sections.size(), ticks);
}

void StreamEventFeed::subscribe(const std::string& path, const std::string& eventName, void* listener)
{
    subscriptions.push_back({path, eventName, listener});
}

void StreamEventFeed::subscribe(const std::string& eventName, uint8_t componentTag, uint16_t eventId, void* listener)
{
    subscriptions.push_back({"", eventName, listener, componentTag, eventId});
}

void StreamEventFeed::unsubscribe(void* listener)
{
    subscriptions.erase(std::remove_if(subscriptions.begin(), subscriptions.end(),
                                       [listener](const Subscription& s) { return s.listener == listener; }),
                        subscriptions.end());
    for (auto it = seen.begin(); it != seen.end();)
        it = std::get<0>(*it) == listener ? seen.erase(it) : std::next(it);
}

void StreamEventFeed::step(uint64_t tick, const carousel::ObjectCarousel& carousel, std::vector<Trigger>& triggers)
{
    resolve(carousel, triggers);
    if (sections.empty())
        return;
    for (const size_t due = pace.dueBy(tick); next < due; ++next) {
        const auto& section = sections[next % sections.size()];
        fire(section.first, section.second.bytes, triggers);
    }
}

// An object the carousel has brought gives its event's id and stream; one that is not
// there, or lacks the event, ends the subscription with an error.
void StreamEventFeed::resolve(const carousel::ObjectCarousel& carousel, std::vector<Trigger>& triggers)
{
    for (auto it = subscriptions.begin(); it != subscriptions.end();) {
        if (it->path.empty()) {
            ++it;
            continue;
        }
        carousel::StreamEventInfo events;
        const carousel::ObjectCarousel::Lookup found = carousel.streamEvent(it->path, events);
        if (found == carousel::ObjectCarousel::Lookup::PENDING) {
            ++it;
            continue;
        }
        auto name = std::find(events.names.begin(), events.names.end(), it->eventName);
        if (found == carousel::ObjectCarousel::Lookup::MISSING || name == events.names.end() ||
            events.associationTags.empty()) {
            triggers.push_back({it->listener, it->eventName, "", "", "error"});
            it = subscriptions.erase(it);
            continue;
        }
        it->eventId = events.ids[size_t(name - events.names.begin())];
        it->componentTag = uint8_t(events.associationTags.front());
        it->path.clear();
        ++it;
    }
}

void StreamEventFeed::fire(uint8_t componentTag, const Bytes& section, std::vector<Trigger>& triggers)
{
    if (section.size() < 12 || section[0] != STREAM_DESCRIPTORS_TABLE)
        return;
    const uint8_t version = (section[5] >> 1) & 0x1F;
    const size_t end = section.size() - 4;  // before the CRC
    for (size_t at = 8; at + 2 <= end && at + 2 + section[at + 1] <= end; at += 2 + section[at + 1]) {
        const size_t length = section[at + 1];
        if (section[at] != STREAM_EVENT_DESCRIPTOR || length < STREAM_EVENT_FIXED)
            continue;
        const uint16_t eventId = uint16_t(section[at + 2] << 8 | section[at + 3]);
        const std::string data(section.begin() + long(at + 2 + STREAM_EVENT_FIXED),
                               section.begin() + long(at + 2 + length));
        for (const Subscription& s : subscriptions)
            if (s.path.empty() && s.componentTag == componentTag && s.eventId == eventId &&
                seen.insert({s.listener, eventId, version}).second)  // not a repetition already acted on
                triggers.push_back({s.listener, s.eventName, hexOf(data), validUtf8(data), "trigger"});
    }
}
