#include "ProgrammeFeed.h"

#include <algorithm>

#include "DvbTime.h"

namespace {

std::string slot(const char* when, const std::optional<Programme>& programme)
{
    if (!programme)
        return std::string(when) + " nothing";
    return std::string(when) + " \"" + programme->name + "\" (" + dvbTime::clock(programme->startTime) + "-" +
           dvbTime::clock(programme->startTime + programme->duration) + " UTC)";
}

std::string ratingsJson(const std::vector<ParentalRating>& ratings)
{
    std::string json = "[";
    for (const ParentalRating& r : ratings)
        json += (json.size() > 1 ? "," : "") + JsonLine().field("country", r.country).field("age", r.age).str();
    return json + "]";
}

std::string componentsJson(const std::vector<ProgrammeComponent>& components)
{
    std::string json = "[";
    for (const ProgrammeComponent& c : components)
        json += (json.size() > 1 ? "," : "") + JsonLine()
                                                   .field("stream_content", c.streamContent)
                                                   .field("component_type", c.componentType)
                                                   .field("component_tag", c.componentTag)
                                                   .field("language", c.language)
                                                   .field("text", c.text)
                                                   .str();
    return json + "]";
}

std::string programmeJson(const std::optional<Programme>& programme)
{
    if (!programme)
        return "null";
    return JsonLine()
        .field("event_id", programme->eventId)
        .field("start_time", static_cast<long long>(programme->startTime))
        .field("duration", static_cast<long long>(programme->duration))
        .field("language", programme->language)
        .field("name", programme->name)
        .field("description", programme->description)
        .raw("ratings", ratingsJson(programme->ratings))
        .raw("components", componentsJson(programme->components))
        .str();
}

}  // namespace

void ProgrammeFeed::start(std::vector<TimedSection> all, uint16_t service, uint64_t ticks)
{
    serviceId = service;
    guide = std::make_unique<ProgrammeGuide>(service);
    sections = std::move(all);
    next = 0;
    span = ticks;
}

bool ProgrammeFeed::step(uint64_t serviceTick)
{
    bool changed = false;
    // Section i of n is due at tick i * span / n: a version that goes on air partway through
    // the capture comes as far into the service's time.
    for (; next < sections.size() && next * span <= serviceTick * sections.size(); ++next)
        changed = guide->add(sections[next].bytes) || changed;
    if (changed)
        tell();
    return changed;
}

const PresentFollowing& ProgrammeFeed::current() const
{
    static const PresentFollowing none;
    return guide ? guide->current() : none;
}

std::string ProgrammeFeed::describe(const PresentFollowing& programmes)
{
    return "programmes v" + std::to_string(programmes.version) + ": " + slot("now", programmes.present) + ", " +
           slot("next", programmes.following);
}

void ProgrammeFeed::tell() const
{
    const PresentFollowing& programmes = current();
    out.say(describe(programmes));
    out.record(JsonLine()
                   .field("broadcast", "programmes")
                   .field("service_id", serviceId)
                   .field("version", programmes.version)
                   .raw("present", programmeJson(programmes.present))
                   .raw("following", programmeJson(programmes.following)));
}
