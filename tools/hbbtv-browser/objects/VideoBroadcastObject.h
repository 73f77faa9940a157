#ifndef TESMO_BROWSER_VIDEOBROADCASTOBJECT_H
#define TESMO_BROWSER_VIDEOBROADCASTOBJECT_H

#include <array>

#include "ChannelControl.h"
#include "ChannelList.h"
#include "PageObject.h"
#include "TvScreen.h"

// The video/broadcast object and the channel list behind it. Channel changes go to the
// platform, which tunes at its next tick, and to the library, which hears of them through
// native_AppManNotifySetChannelCalled; every page's objects hear when the TV has tuned. The
// broadcast picture (the TV's, on the plane behind the page) goes where the page puts the
// object: the service's own audio and video where the capture has them. A
// broadcast-independent application may not reach the broadcast: its calls throw a
// SecurityError.
class VideoBroadcastObject : public PageObject {
public:
    VideoBroadcastObject(ObjectServices& services, ChannelControl& tuner, TvScreen& screen);
    // A channel as the page's Channel object is made from.
    static JsonNode* channelJson(const Channel& channel);

    void channelChanged(const Channel& channel) override;
    void pictureChanged(const std::string& state) override;
    void programmesChanged() override;

private:
    Reply bind(const PageContext& page) const;
    Reply currentChannel(const PageContext& page) const;
    Reply setChannel(const PageContext& page, const Arguments& args);
    Reply step(const PageContext& page, const Arguments& args);
    Reply tuneTo(const PageContext& page, const Channel* channel);
    Reply placeVideo(const Arguments& args);
    Reply picture(const PageContext& page) const;
    Reply channelList(const PageContext& page) const;
    Reply components(const PageContext& page) const;
    Reply programmes(const PageContext& page) const;
    Reply changeComponent(const PageContext& page, const Arguments& args, bool selected);
    // The PID of the active component of the kind, -1 for none.
    int activePid(Component::Kind kind) const;

    ObjectServices& services;
    ChannelControl& tuner;
    TvScreen& screen;
    // What the viewer or a page chose for each kind on this service: a PID, NOTHING, or
    // FIRST (the service's first of the kind; no subtitles).
    static const int FIRST = -2;
    static const int NOTHING = -1;
    std::array<int, 3> chosen{FIRST, FIRST, NOTHING};
};

#endif
