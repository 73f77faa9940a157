#ifndef TESMO_TV_CHANNELCONTROL_H
#define TESMO_TV_CHANNELCONTROL_H

struct Channel;

// What the platform lets others do with its tuner.
class ChannelControl {
public:
    virtual ~ChannelControl() = default;
    virtual const Channel* currentChannel() const = 0;
    // Tunes at the platform's next tick; false when it cannot.
    virtual bool requestTune(const Channel* channel) = 0;
};

#endif
