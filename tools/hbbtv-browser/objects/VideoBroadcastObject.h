#ifndef TESMO_BROWSER_VIDEOBROADCASTOBJECT_H
#define TESMO_BROWSER_VIDEOBROADCASTOBJECT_H

#include "ChannelList.h"
#include "PageObject.h"

// The video/broadcast object and the channel list behind it.
class VideoBroadcastObject {
public:
    static const PageMethods& methods();
    // A channel as the page's Channel object is made from.
    static JsonNode* channelJson(const Channel& channel);
};

#endif
