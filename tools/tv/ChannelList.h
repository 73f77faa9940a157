#ifndef TESMO_TV_CHANNELLIST_H
#define TESMO_TV_CHANNELLIST_H

#include <cstdint>
#include <string>
#include <vector>

#include "ServiceScanner.h"

// A service of the capture as the TV's channel list holds it.
struct Channel {
    std::string ccid;  // "ccid:" and the DVB triplet in hexadecimal
    uint16_t originalNetworkId = 0;
    uint16_t transportStreamId = 0;
    uint16_t serviceId = 0;
    std::string name;
    bool hasAit = false;  // the service signals an AIT the TV plays
    std::vector<Component> components;  // its video, audio and subtitles
    uint16_t networkId = 0;  // of the network that delivers it (the NIT's); 0 when not told
};

// The channels the platform can tune to, in the capture's order. A channel's handle is the
// opaque value the platform gives the library with each AIT section; it resolves only to a
// channel of this list.
class ChannelList {
public:
    static ChannelList& get();

    void set(std::vector<Channel> channels);
    const std::vector<Channel>& all() const { return channels; }
    void* handleOf(const Channel& channel) const;
    const Channel* byHandle(const void* handle) const;
    const Channel* byCcid(const std::string& ccid) const;
    const Channel* byTriplet(uint16_t onid, uint16_t tsid, uint16_t sid) const;
    // The channel before or after one, wrapping around; null for an empty list.
    const Channel* neighbour(const Channel* from, int step) const;

    static std::string ccidOf(uint16_t onid, uint16_t tsid, uint16_t sid);

private:
    std::vector<Channel> channels;
};

#endif
