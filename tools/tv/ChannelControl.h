#ifndef TESMO_TV_CHANNELCONTROL_H
#define TESMO_TV_CHANNELCONTROL_H

#include "ProgrammeGuide.h"

struct Channel;

// What the platform lets others do with its tuner, and what it knows of the tuned service.
class ChannelControl {
public:
    virtual ~ChannelControl() = default;
    virtual const Channel* currentChannel() const = 0;
    // Its programme on now and the next, as far as its EIT has come.
    virtual const PresentFollowing& programmes() const = 0;
    // Tunes at the platform's next tick; false when it cannot.
    virtual bool requestTune(const Channel* channel) = 0;
};

#endif
