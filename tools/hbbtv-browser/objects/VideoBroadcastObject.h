#ifndef TESMO_BROWSER_VIDEOBROADCASTOBJECT_H
#define TESMO_BROWSER_VIDEOBROADCASTOBJECT_H

#include "BroadcastPicture.h"
#include "ChannelList.h"
#include "PageObject.h"
#include "TvScreen.h"

// The video/broadcast object and the channel list behind it. Channel changes go to the
// platform, which tunes at its next tick, and to the library, which hears of them through
// native_AppManNotifySetChannelCalled; the broadcast picture goes where the page puts the
// object: the service's own audio and video where the capture has them. A broadcast-
// independent application may not reach the broadcast: it gets a SecurityError.
class VideoBroadcastObject {
public:
    VideoBroadcastObject(TvScreen& screen, const BroadcastPicture& pictures);
    VideoBroadcastObject(const VideoBroadcastObject&) = delete;
    VideoBroadcastObject& operator=(const VideoBroadcastObject&) = delete;

    const PageMethods& methods() const { return table; }
    // A channel as the page's Channel object is made from.
    static JsonNode* channelJson(const Channel& channel);

private:
    JsonNode* bind(const PageContext& page);
    JsonNode* setChannel(const PageContext& page, const Arguments& args);
    JsonNode* step(const PageContext& page, const Arguments& args);
    JsonNode* tuneTo(const PageContext& page, const Channel* channel);
    JsonNode* placeVideo(const Arguments& args);

    TvScreen& screen;
    const BroadcastPicture& pictures;
    PageMethods table;
};

#endif
