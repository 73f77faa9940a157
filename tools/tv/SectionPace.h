#ifndef TESMO_TV_SECTIONPACE_H
#define TESMO_TV_SECTIONPACE_H

#include <algorithm>
#include <cstddef>
#include <cstdint>

// How a feed spreads a service's sections evenly over the ticks its tables take: the same
// number at each tick, enough to be through them all by the last one (all at once when there
// are no ticks to spread over), at least one.
class SectionPace {
public:
    SectionPace() = default;
    SectionPace(size_t sections, uint64_t ticks)
        : perTick(std::max<size_t>(1, ticks == 0 ? sections : size_t((sections + ticks - 1) / ticks)))
    {
    }

    // How many sections are due from the start to the end of the tick.
    size_t dueBy(uint64_t tick) const { return size_t(tick + 1) * perTick; }
    // The tick that brings the last of that many sections.
    uint64_t lastTick(size_t sections) const { return sections == 0 ? 0 : (sections + perTick - 1) / perTick - 1; }

private:
    size_t perTick = 1;
};

#endif
