#ifndef TESMO_TV_ACTIVITY_H
#define TESMO_TV_ACTIVITY_H

#include <cstdint>

// The platform's record of the last tick at which the library acted or was told something:
// a run is over once nothing has happened for a while.
class Activity {
public:
    void setTick(uint64_t now) { tick = now; }
    void note() { last = tick; }
    uint64_t lastTick() const { return last; }

private:
    uint64_t tick = 0;
    uint64_t last = 0;
};

#endif
