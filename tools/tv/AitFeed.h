#ifndef TESMO_TV_AITFEED_H
#define TESMO_TV_AITFEED_H

#include <cstdint>
#include <map>
#include <set>
#include <vector>

#include "AitDecoder.h"
#include "PlatformEvents.h"
#include "Timeline.h"
#include "TransportStream.h"

// The service's AIT as the platform's section filter delivers it: one section every interval
// ticks, each described in the timeline as it goes to the library. It keeps which sections of
// each version went through, to tell a table the library did not take.
class AitFeed {
public:
    struct ServiceIds {
        uint16_t originalNetworkId, transportStreamId, serviceId;
    };

    AitFeed(Timeline& out, uint64_t interval, PostEvent post) : out(out), interval(interval), post(std::move(post)) {}

    // A service's sections, from the tick given on.
    void start(std::vector<TimedSection> sections, uint64_t fromTick, const ServiceIds& ids);
    // The platform's handle of the service's channel, which each section carries.
    void setChannel(void* handle) { channel = handle; }
    bool empty() const { return sections.empty(); }
    // The platform's word that the service carries no AIT.
    void postNoAit();
    // The ticks the sections take.
    uint64_t span() const { return sections.size() * interval; }
    // Posts the section due at the tick, if any.
    void step(uint64_t tick);
    // The library took the table of that version.
    void completed(int version) { completedVersions.insert(version); }
    // Every section of a version went through an interval ago and the library did not take the
    // table: says so once, since the library itself reports nothing on a refused section.
    void checkAcceptance(uint64_t tick);

private:
    void postSection(const TimedSection& section, uint64_t tick);
    void describe(const DecodedAit& ait, size_t packet);

    Timeline& out;
    const uint64_t interval;
    PostEvent post;
    std::vector<TimedSection> sections;
    uint64_t from = 0;
    ServiceIds ids{};
    void* channel = nullptr;

    std::map<int, std::set<int>> postedSections;  // by version
    std::map<int, uint64_t> versionPostedAt;  // the tick each version's last section went through
    std::set<int> completedVersions;
    std::set<int> reportedVersions;
    std::set<std::pair<int, int>> shownSections;
};

#endif
