#include "ChannelList.h"

#include <cstdio>

ChannelList& ChannelList::get()
{
    static ChannelList list;
    return list;
}

void ChannelList::set(std::vector<Channel> list)
{
    channels = std::move(list);
}

void* ChannelList::handleOf(const Channel& channel) const
{
    return const_cast<Channel*>(&channel);
}

// Compared by address only: a handle that is not one of ours is never read.
const Channel* ChannelList::byHandle(const void* handle) const
{
    for (const Channel& channel : channels)
        if (&channel == handle)
            return &channel;
    return nullptr;
}

const Channel* ChannelList::byCcid(const std::string& ccid) const
{
    for (const Channel& channel : channels)
        if (channel.ccid == ccid)
            return &channel;
    return nullptr;
}

const Channel* ChannelList::byTriplet(uint16_t onid, uint16_t tsid, uint16_t sid) const
{
    for (const Channel& channel : channels)
        if (channel.originalNetworkId == onid && channel.transportStreamId == tsid && channel.serviceId == sid)
            return &channel;
    return nullptr;
}

const Channel* ChannelList::neighbour(const Channel* from, int step) const
{
    if (channels.empty())
        return nullptr;
    const long count = long(channels.size());
    const long at = from ? long(from - channels.data()) : 0;
    return &channels[size_t(((at + step) % count + count) % count)];
}

std::string ChannelList::ccidOf(uint16_t onid, uint16_t tsid, uint16_t sid)
{
    char text[32];
    std::snprintf(text, sizeof text, "ccid:%x.%x.%x", onid, tsid, sid);
    return text;
}
