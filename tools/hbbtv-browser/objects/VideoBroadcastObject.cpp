#include "VideoBroadcastObject.h"

#include <algorithm>
#include <cstdio>
#include <optional>

#include "tesmo_hbbtv/bindings.h"

namespace {

// The OIPF channel type and identifier type the capture's services get, and the error a
// channel that is not in the list gives.
const int TYPE_TV = 0;
const int ID_DVB_T = 12;
const int UNKNOWN_CHANNEL = 5;
const int ID_DVB_EVENT = 1;  // a Programme's programmeIDType

bool isBroadcastRelated(const PageContext& page)
{
    return native_PermissionsIsBroadcastRelated(page.handle, page.url.c_str()) == 0;
}

const char* const KINDS[] = {"video", "audio", "subtitle"};

// What the present programme's component descriptors add to a stream of the PMT: the
// picture's aspect ratio and the audio's main channels, by stream_content and component_type.
struct Signalled {
    uint8_t streamContent;
    std::vector<uint8_t> types;
    double value;
};
const Signalled ASPECT_RATIOS[] = {
    {0x01, {0x01, 0x05, 0x09, 0x0D}, 4.0 / 3.0},  // MPEG-2 video
    {0x01, {0x02, 0x03, 0x06, 0x07, 0x0A, 0x0B, 0x0E, 0x0F}, 16.0 / 9.0},
    {0x05, {0x01, 0x05}, 4.0 / 3.0},  // H.264
    {0x05, {0x03, 0x07, 0x0B, 0x0F}, 16.0 / 9.0},
};
const Signalled AUDIO_CHANNELS[] = {
    {0x02, {0x01}, 1},  // MPEG-1 layer 2: mono, dual mono or stereo, surround
    {0x02, {0x02, 0x03}, 2},
    {0x02, {0x05}, 5},
    {0x06, {0x01, 0x51}, 1},  // HE-AAC and AAC
    {0x06, {0x03, 0x44, 0x53}, 2},
    {0x06, {0x05, 0x55}, 5},
};

template <size_t N> std::optional<double> lookUp(const Signalled (&table)[N], const ProgrammeComponent& signalled)
{
    for (const Signalled& row : table)
        if (row.streamContent == signalled.streamContent &&
            std::find(row.types.begin(), row.types.end(), signalled.componentType) != row.types.end())
            return row.value;
    return std::nullopt;
}

const std::vector<Component>& componentsOf(const Channel* channel)
{
    static const std::vector<Component> none;
    return channel ? channel->components : none;
}

const ProgrammeComponent* signalledFor(const Component& component, const PresentFollowing& programmes)
{
    if (component.componentTag < 0 || !programmes.present)
        return nullptr;
    for (const ProgrammeComponent& signalled : programmes.present->components)
        if (signalled.componentTag == component.componentTag)
            return &signalled;
    return nullptr;
}

// A component as the page's AVComponent is made from.
JsonNode* componentJson(const Component& component, bool active, const ProgrammeComponent* signalled)
{
    JsonObject* object = json_object_new();
    json_object_set_int_member(object, "type", component.kind);
    json_object_set_string_member(object, "kind", KINDS[component.kind]);
    json_object_set_int_member(object, "pid", component.pid);
    if (component.componentTag >= 0)
        json_object_set_int_member(object, "componentTag", component.componentTag);
    json_object_set_string_member(object, "encoding", component.encoding.c_str());
    json_object_set_boolean_member(object, "encrypted", FALSE);
    if (component.kind != Component::VIDEO) {
        json_object_set_string_member(object, "language", component.language.c_str());
        json_object_set_boolean_member(
            object, component.kind == Component::AUDIO ? "audioDescription" : "hearingImpaired",
            component.kind == Component::AUDIO ? component.audioDescription : component.hearingImpaired);
    }
    const std::optional<double> ratio = signalled ? lookUp(ASPECT_RATIOS, *signalled) : std::nullopt;
    if (component.kind == Component::VIDEO && ratio)
        json_object_set_double_member(object, "aspectRatio", *ratio);
    const std::optional<double> channels = signalled ? lookUp(AUDIO_CHANNELS, *signalled) : std::nullopt;
    if (component.kind == Component::AUDIO && channels)
        json_object_set_int_member(object, "audioChannels", int(*channels));
    json_object_set_boolean_member(object, "active", active);
    return reply::object(object);
}

// A programme as the page's Programme is made from: its DVB event as a DVB URL, its times in
// seconds, its ratings as DVB-SI ages with the country in lower case.
JsonNode* programmeJson(const Programme& programme, const Channel& channel)
{
    char id[48];
    std::snprintf(id, sizeof id, "dvb://%x.%x.%x;%x", channel.originalNetworkId, channel.transportStreamId,
                  channel.serviceId, programme.eventId);
    JsonObject* object = json_object_new();
    json_object_set_string_member(object, "name", programme.name.c_str());
    json_object_set_string_member(object, "description", programme.description.c_str());
    json_object_set_string_member(object, "longDescription", "");
    json_object_set_int_member(object, "startTime", programme.startTime);
    json_object_set_int_member(object, "duration", programme.duration);
    json_object_set_string_member(object, "programmeID", id);
    json_object_set_int_member(object, "programmeIDType", ID_DVB_EVENT);
    json_object_set_string_member(object, "channelID", channel.ccid.c_str());
    JsonArray* ratings = json_array_new();
    for (const ParentalRating& rating : programme.ratings) {
        JsonObject* age = json_object_new();
        json_object_set_string_member(age, "name", std::to_string(rating.age).c_str());
        json_object_set_string_member(age, "scheme", "dvb-si");
        json_object_set_int_member(age, "value", rating.age);
        json_object_set_int_member(age, "labels", 0);
        std::string region = rating.country;
        for (char& c : region)
            c = g_ascii_tolower(c);
        json_object_set_string_member(age, "region", region.c_str());
        json_array_add_object_element(ratings, age);
    }
    json_object_set_array_member(object, "parentalRatings", ratings);
    return reply::object(object);
}

Reply securityError()
{
    return Reply::error("SecurityError", "The application may not use the broadcast");
}

// The page's Channel: by its ccid, else by its triplet.
const Channel* channelOf(const Arguments& args)
{
    if (const Channel* found = ChannelList::get().byCcid(args.textMember(0, "ccid")))
        return found;
    auto number = [&args](const char* name) { return uint16_t(wholeNumber(args.numberMember(0, name, 0))); };
    return ChannelList::get().byTriplet(number("onid"), number("tsid"), number("sid"));
}

}  // namespace

VideoBroadcastObject::VideoBroadcastObject(ObjectServices& objectServices, ChannelControl& channelControl,
                                           TvScreen& tvScreen)
    : services(objectServices), tuner(channelControl), screen(tvScreen)
{
    table = {
        {"VideoBroadcast.bindToCurrentChannel", "", TOLD,
         [this](const PageContext& p, const Arguments&) { return bind(p); }},
        {"VideoBroadcast.currentChannel", "", QUIET,
         [this](const PageContext& p, const Arguments&) { return currentChannel(p); }},
        {"VideoBroadcast.setChannel", "O", TOLD,
         [this](const PageContext& p, const Arguments& a) { return setChannel(p, a); }},
        {"VideoBroadcast.step", "n", TOLD, [this](const PageContext& p, const Arguments& a) { return step(p, a); }},
        {"VideoBroadcast.video", "o", TOLD, [this](const PageContext&, const Arguments& a) { return placeVideo(a); }},
        {"VideoBroadcast.picture", "", TOLD, [this](const PageContext& p, const Arguments&) { return picture(p); }},
        {"ChannelConfig.channelList", "", QUIET,
         [this](const PageContext& p, const Arguments&) { return channelList(p); }},
        {"VideoBroadcast.programmes", "", QUIET,
         [this](const PageContext& p, const Arguments&) { return programmes(p); }},
        {"VideoBroadcast.components", "", QUIET,
         [this](const PageContext& p, const Arguments&) { return components(p); }},
        {"VideoBroadcast.selectComponent", "n", TOLD,
         [this](const PageContext& p, const Arguments& a) { return changeComponent(p, a, true); }},
        {"VideoBroadcast.unselectComponent", "n", TOLD,
         [this](const PageContext& p, const Arguments& a) { return changeComponent(p, a, false); }},
    };
}

JsonNode* VideoBroadcastObject::channelJson(const Channel& channel)
{
    JsonObject* object = json_object_new();
    json_object_set_string_member(object, "ccid", channel.ccid.c_str());
    json_object_set_int_member(object, "onid", channel.originalNetworkId);
    json_object_set_int_member(object, "tsid", channel.transportStreamId);
    json_object_set_int_member(object, "sid", channel.serviceId);
    json_object_set_int_member(object, "nid", channel.networkId);
    json_object_set_string_member(object, "name", channel.name.c_str());
    json_object_set_int_member(object, "channelType", TYPE_TV);
    json_object_set_int_member(object, "idType", ID_DVB_T);
    return reply::object(object);
}

// Every page's video/broadcast objects follow the TV to the new service, whose components
// are its own first ones again.
void VideoBroadcastObject::channelChanged(const Channel& channel)
{
    chosen = {FIRST, FIRST, NOTHING};
    screen.selectAudio(FIRST);
    services.toEveryPage("VideoBroadcast.channelChanged", channelJson(channel));
}

void VideoBroadcastObject::programmesChanged()
{
    services.toEveryPage("VideoBroadcast.programmesChanged", reply::null());
}

// The objects that are connecting present, or fail, as the TV's picture does.
void VideoBroadcastObject::pictureChanged(const std::string& state)
{
    services.toEveryPage("VideoBroadcast.picture", reply::text(state));
}

Reply VideoBroadcastObject::currentChannel(const PageContext& page) const
{
    if (!isBroadcastRelated(page))
        return securityError();
    const Channel* channel = tuner.currentChannel();
    return channel ? channelJson(*channel) : reply::null();
}

Reply VideoBroadcastObject::bind(const PageContext& page) const
{
    if (!isBroadcastRelated(page))
        return securityError();
    const Channel* channel = tuner.currentChannel();
    return reply::objectWith("channel", channel ? channelJson(*channel) : reply::null());
}

// null releases the broadcast: the application becomes broadcast-independent. A channel
// of the list is tuned to, by any application: the library hears of it first, and a
// broadcast-independent one becomes broadcast-related when the new service signals it (or
// is stopped when it does not). The page hears of the change when the platform has tuned.
Reply VideoBroadcastObject::setChannel(const PageContext& page, const Arguments& args)
{
    if (args.isNull(0)) {
        native_AppManNotifySetChannelCalled(page.handle, page.url.c_str(), nullptr);
        screen.setVideoWindow({false, true, 0, 0, 0, 0});
        return reply::objectWith("released", reply::boolean(true));
    }
    return tuneTo(page, channelOf(args));
}

Reply VideoBroadcastObject::step(const PageContext& page, const Arguments& args)
{
    if (!isBroadcastRelated(page))
        return securityError();
    return tuneTo(page, ChannelList::get().neighbour(tuner.currentChannel(), args.number(0) < 0 ? -1 : 1));
}

// {"channel"} when already there, {"tuning"} when the platform tunes, {"channelError": code}
// when it cannot.
Reply VideoBroadcastObject::tuneTo(const PageContext& page, const Channel* channel)
{
    if (!channel)
        return reply::objectWith("channelError", reply::number(UNKNOWN_CHANNEL));
    if (channel == tuner.currentChannel())
        return reply::objectWith("channel", channelJson(*channel));
    native_AppManNotifySetChannelCalled(page.handle, page.url.c_str(), ChannelList::get().handleOf(*channel));
    if (!tuner.requestTune(channel))
        return reply::objectWith("channelError", reply::number(UNKNOWN_CHANNEL));
    return reply::objectWith("tuning", channelJson(*channel));
}

// {presenting, fullScreen, x, y, width, height} from the page's object.
Reply VideoBroadcastObject::placeVideo(const Arguments& args)
{
    auto number = [&args](const char* name) { return int(wholeNumber(args.numberMember(0, name, 0))); };
    screen.setVideoWindow({args.booleanMember(0, "presenting"), args.booleanMember(0, "fullScreen"), number("x"),
                           number("y"), number("width"), number("height")});
    return reply::null();
}

// The state of the TV's picture of the current service, never where it comes from.
Reply VideoBroadcastObject::picture(const PageContext& page) const
{
    return reply::text(isBroadcastRelated(page) ? screen.pictureState() : "none");
}

Reply VideoBroadcastObject::channelList(const PageContext& page) const
{
    if (!isBroadcastRelated(page))
        return securityError();
    JsonArray* array = json_array_new();
    for (const Channel& channel : ChannelList::get().all())
        json_array_add_element(array, channelJson(channel));
    JsonNode* node = json_node_init_array(json_node_alloc(), array);
    json_array_unref(array);
    return node;
}

int VideoBroadcastObject::activePid(Component::Kind kind) const
{
    if (chosen[kind] != FIRST)
        return chosen[kind];
    for (const Component& component : componentsOf(tuner.currentChannel()))
        if (component.kind == kind)
            return component.pid;
    return NOTHING;
}

Reply VideoBroadcastObject::components(const PageContext& page) const
{
    if (!isBroadcastRelated(page))
        return securityError();
    JsonArray* array = json_array_new();
    for (const Component& component : componentsOf(tuner.currentChannel()))
        json_array_add_element(array, componentJson(component, activePid(component.kind) == component.pid,
                                                    signalledFor(component, tuner.programmes())));
    JsonNode* node = json_node_init_array(json_node_alloc(), array);
    json_array_unref(array);
    return node;
}

// The component of that PID becomes the active one of its kind, or none is; the picture
// plays the audio chosen. False for a PID the service does not have.
Reply VideoBroadcastObject::changeComponent(const PageContext& page, const Arguments& args, bool selected)
{
    if (!isBroadcastRelated(page))
        return securityError();
    const int pid = int(wholeNumber(args.number(0)));
    for (const Component& component : componentsOf(tuner.currentChannel())) {
        if (component.pid != pid || (!selected && activePid(component.kind) != pid))
            continue;
        chosen[component.kind] = selected ? pid : NOTHING;
        if (component.kind == Component::AUDIO)
            screen.selectAudio(chosen[component.kind]);
        return reply::boolean(true);
    }
    return reply::boolean(false);
}

// Present, then following, of the tuned service; none for a broadcast-independent application.
Reply VideoBroadcastObject::programmes(const PageContext& page) const
{
    JsonArray* array = json_array_new();
    const Channel* channel = tuner.currentChannel();
    const PresentFollowing& known = tuner.programmes();
    if (channel && isBroadcastRelated(page))
        for (const std::optional<Programme>& programme : {known.present, known.following})
            if (programme)
                json_array_add_element(array, programmeJson(*programme, *channel));
    JsonNode* node = json_node_init_array(json_node_alloc(), array);
    json_array_unref(array);
    return node;
}
