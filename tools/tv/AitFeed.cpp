#include "AitFeed.h"

#include <cstdlib>
#include <cstring>

#include "TimelineText.h"

using timelineText::applicationName;
using timelineText::hex;

void AitFeed::start(std::vector<TimedSection> serviceSections, uint64_t fromTick, const ServiceIds& serviceIds)
{
    sections = std::move(serviceSections);
    from = fromTick;
    ids = serviceIds;
    postedSections.clear();
    versionPostedAt.clear();
    completedVersions.clear();
    reportedVersions.clear();
    shownSections.clear();
}

void AitFeed::postNoAit()
{
    out.say("the service signals no AIT");
    HBBTV_EventData* data = newEvent();
    data->ait_section.original_network_id = ids.originalNetworkId;
    data->ait_section.transport_stream_id = ids.transportStreamId;
    data->ait_section.service_id = ids.serviceId;
    post(HBBTV_EVENT_AIT_SECTION, data);
}

void AitFeed::step(uint64_t tick)
{
    if (tick < from)
        return;
    const uint64_t due = tick - from;
    if (due % interval == 0 && due / interval < sections.size())
        postSection(sections[due / interval], tick);
}

void AitFeed::postSection(const TimedSection& section, uint64_t tick)
{
    const DecodedAit ait = decodeAit(section.bytes);
    if (ait.readable && shownSections.insert({ait.version, ait.sectionNumber}).second)
        describe(ait, section.packet);
    // As the library does, a section already posted says nothing new, not even its last number.
    if (ait.readable && postedSections[ait.version].insert(ait.sectionNumber).second) {
        if (postedSections[ait.version].size() == size_t(ait.lastSectionNumber) + 1 &&
            !versionPostedAt.count(ait.version))
            versionPostedAt[ait.version] = tick;
    }
    HBBTV_EventData* data = newEvent();
    data->ait_section.section = static_cast<unsigned char*>(std::malloc(section.bytes.size()));
    std::memcpy(data->ait_section.section, section.bytes.data(), section.bytes.size());
    data->ait_section.original_network_id = ids.originalNetworkId;
    data->ait_section.transport_stream_id = ids.transportStreamId;
    data->ait_section.service_id = ids.serviceId;
    data->ait_section.ait_present = 1;
    data->ait_section.channel = channel;
    post(HBBTV_EVENT_AIT_SECTION, data);
}

void AitFeed::describe(const DecodedAit& ait, size_t packet)
{
    out.say("AIT v" + std::to_string(ait.version) + " section " + std::to_string(ait.sectionNumber) + "/" +
            std::to_string(ait.lastSectionNumber) + " (packet " + std::to_string(packet) +
            "): " + std::to_string(ait.applications.size()) + " application(s)");
    for (const DecodedApplication& app : ait.applications) {
        std::string line = applicationName(app.organisationId, app.applicationId) + " \"" + app.name + "\" " +
                           controlCodeName(app.controlCode) + ", priority " + std::to_string(app.priority);
        for (const DecodedProfile& p : app.profiles)
            line += ", profile " + hex(p.profile, 4) + " version " + std::to_string(p.major) + "." +
                    std::to_string(p.minor) + "." + std::to_string(p.micro);
        if (app.serviceBound)
            line += ", service-bound";
        out.detail(line);
        for (const DecodedTransport& t : app.transports)
            out.detail("  transport " + std::to_string(t.label) + ": " + t.describe());
        if (!app.location.empty())
            out.detail("  location " + app.location);
    }
}

void AitFeed::checkAcceptance(uint64_t tick)
{
    for (const auto& posted : versionPostedAt) {
        const int version = posted.first;
        if (completedVersions.count(version) || reportedVersions.count(version) || tick < posted.second + interval)
            continue;
        reportedVersions.insert(version);
        out.say("AIT v" + std::to_string(version) +
                ": every section was posted, but the library did not complete the table");
    }
}
