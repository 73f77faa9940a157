#include "VideoBroadcastObject.h"

#include "TvPlatform.h"
#include "tesmo_hbbtv/bindings.h"

namespace {

// The OIPF channel type and identifier type the capture's services get, and the error a
// channel that is not in the list gives.
const int TYPE_TV = 0;
const int ID_DVB_T = 12;
const int UNKNOWN_CHANNEL = 5;

bool isBroadcastRelated(const PageContext& page)
{
    return native_PermissionsIsBroadcastRelated(page.handle, page.url.c_str()) == 0;
}

JsonNode* objectWith(const char* name, JsonNode* value)
{
    JsonObject* object = json_object_new();
    json_object_set_member(object, name, value);
    return reply::object(object);
}

JsonNode* securityError()
{
    return objectWith("error", reply::text("SecurityError"));
}

JsonNode* currentChannel()
{
    const Channel* channel = TvPlatform::get().currentChannel();
    return channel ? VideoBroadcastObject::channelJson(*channel) : reply::null();
}

// The page's Channel: by its ccid, else by its triplet.
const Channel* channelOf(const Arguments& args)
{
    JsonNode* ccid = args.member(0, "ccid");
    if (ccid && JSON_NODE_HOLDS_VALUE(ccid) && json_node_get_value_type(ccid) == G_TYPE_STRING)
        if (const Channel* found = ChannelList::get().byCcid(json_node_get_string(ccid)))
            return found;
    auto number = [&args](const char* name) {
        JsonNode* node = args.member(0, name);
        return node && JSON_NODE_HOLDS_VALUE(node) ? uint16_t(json_node_get_int(node)) : uint16_t(0);
    };
    return ChannelList::get().byTriplet(number("onid"), number("tsid"), number("sid"));
}

// A method a broadcast-independent application may not call.
template <JsonNode* (*method)(const PageContext&, const Arguments&)>
JsonNode* broadcastOnly(const PageContext& page, const Arguments& args)
{
    return isBroadcastRelated(page) ? method(page, args) : securityError();
}

JsonNode* channelList(const PageContext&, const Arguments&)
{
    JsonArray* array = json_array_new();
    for (const Channel& channel : ChannelList::get().all())
        json_array_add_element(array, VideoBroadcastObject::channelJson(channel));
    JsonNode* node = json_node_init_array(json_node_alloc(), array);
    json_array_unref(array);
    return node;
}

JsonNode* current(const PageContext&, const Arguments&)
{
    return currentChannel();
}

} // namespace

VideoBroadcastObject::VideoBroadcastObject(TvScreen& tvScreen, const BroadcastPicture& broadcastPictures)
    : screen(tvScreen), pictures(broadcastPictures)
{
    table = {
        {"VideoBroadcast.bindToCurrentChannel", [this](const PageContext& p, const Arguments&) { return bind(p); }},
        {"VideoBroadcast.currentChannel", broadcastOnly<current>},
        {"VideoBroadcast.setChannel", [this](const PageContext& p, const Arguments& a) { return setChannel(p, a); }},
        {"VideoBroadcast.step", [this](const PageContext& p, const Arguments& a) { return step(p, a); }},
        {"VideoBroadcast.video", [this](const PageContext&, const Arguments& a) { return placeVideo(a); }},
        // Where the current service's audio and video play from; null without them.
        {"VideoBroadcast.picture",
         [this](const PageContext& page, const Arguments&) {
             const Channel* channel = isBroadcastRelated(page) ? TvPlatform::get().currentChannel() : nullptr;
             const std::string url = channel ? pictures.urlOf(channel->serviceId) : "";
             return url.empty() ? reply::null() : reply::text(url);
         }},
        {"ChannelConfig.channelList", broadcastOnly<channelList>},
    };
}

JsonNode* VideoBroadcastObject::channelJson(const Channel& channel)
{
    JsonObject* object = json_object_new();
    json_object_set_string_member(object, "ccid", channel.ccid.c_str());
    json_object_set_int_member(object, "onid", channel.originalNetworkId);
    json_object_set_int_member(object, "tsid", channel.transportStreamId);
    json_object_set_int_member(object, "sid", channel.serviceId);
    json_object_set_string_member(object, "name", channel.name.c_str());
    json_object_set_int_member(object, "channelType", TYPE_TV);
    json_object_set_int_member(object, "idType", ID_DVB_T);
    return reply::object(object);
}

JsonNode* VideoBroadcastObject::bind(const PageContext& page)
{
    if (!isBroadcastRelated(page))
        return securityError();
    return objectWith("channel", currentChannel());
}

// null releases the broadcast: the application becomes broadcast-independent. A channel
// of the list is tuned to; the page hears of it when the platform has.
JsonNode* VideoBroadcastObject::setChannel(const PageContext& page, const Arguments& args)
{
    if (args.isNull(0)) {
        native_AppManNotifySetChannelCalled(page.handle, page.url.c_str(), nullptr);
        screen.setVideoWindow({false, true, 0, 0, 0, 0});
        return objectWith("released", reply::boolean(true));
    }
    if (!isBroadcastRelated(page))
        return securityError();
    return tuneTo(page, channelOf(args));
}

JsonNode* VideoBroadcastObject::step(const PageContext& page, const Arguments& args)
{
    if (!isBroadcastRelated(page))
        return securityError();
    return tuneTo(page, ChannelList::get().neighbour(TvPlatform::get().currentChannel(), args.number(0) < 0 ? -1 : 1));
}

JsonNode* VideoBroadcastObject::tuneTo(const PageContext& page, const Channel* channel)
{
    if (!channel)
        return objectWith("error", reply::number(UNKNOWN_CHANNEL));
    if (channel == TvPlatform::get().currentChannel())
        return objectWith("channel", channelJson(*channel));
    native_AppManNotifySetChannelCalled(page.handle, page.url.c_str(), ChannelList::get().handleOf(*channel));
    if (!TvPlatform::get().requestTune(channel))
        return objectWith("error", reply::number(UNKNOWN_CHANNEL));
    return objectWith("tuning", channelJson(*channel));
}

// {presenting, fullScreen, x, y, width, height} from the page's object.
JsonNode* VideoBroadcastObject::placeVideo(const Arguments& args)
{
    auto number = [&args](const char* name) {
        JsonNode* node = args.member(0, name);
        return node && JSON_NODE_HOLDS_VALUE(node) ? int(wholeNumber(json_node_get_double(node))) : 0;
    };
    auto flag = [&args](const char* name) {
        JsonNode* node = args.member(0, name);
        return node && JSON_NODE_HOLDS_VALUE(node) && json_node_get_boolean(node);
    };
    screen.setVideoWindow({flag("presenting"), flag("fullScreen"), number("x"), number("y"), number("width"), number("height")});
    return reply::null();
}
