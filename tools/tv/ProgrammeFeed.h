#ifndef TESMO_TV_PROGRAMMEFEED_H
#define TESMO_TV_PROGRAMMEFEED_H

#include <cstdint>
#include <memory>
#include <vector>

#include "ProgrammeGuide.h"
#include "Timeline.h"
#include "TransportStream.h"

// The service's present/following as the platform's section filter delivers it: the EIT
// sections of the capture spread evenly over the ticks the service's tables take, each once,
// and each new present/following told in the timeline.
class ProgrammeFeed {
public:
    explicit ProgrammeFeed(Timeline& out) : out(out) {}

    // A service's EIT sections, spread over that many ticks from the service's tick 0; what
    // the service before had is gone.
    void start(std::vector<TimedSection> sections, uint16_t serviceId, uint64_t ticks);
    // Adds the sections due at the service's tick: true when the present/following changed.
    bool step(uint64_t serviceTick);
    const PresentFollowing& current() const;

    // The timeline's words for a present/following: "programmes v2: now "News" (20:15-20:45
    // UTC), next ..." (nothing for either slot that is empty).
    static std::string describe(const PresentFollowing& programmes);

private:
    void tell() const;

    Timeline& out;
    uint16_t serviceId = 0;
    std::unique_ptr<ProgrammeGuide> guide;
    std::vector<TimedSection> sections;
    size_t next = 0;
    uint64_t span = 0;  // the ticks the sections are spread over
};

#endif
