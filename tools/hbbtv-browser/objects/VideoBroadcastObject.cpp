#include "VideoBroadcastObject.h"

namespace {

// The OIPF channel types and identifier types the capture's services get.
const int TYPE_TV = 0;
const int ID_DVB_T = 12;

JsonNode* channelList(const PageContext&, const Arguments&)
{
    JsonArray* array = json_array_new();
    for (const Channel& channel : ChannelList::get().all())
        json_array_add_element(array, VideoBroadcastObject::channelJson(channel));
    JsonNode* node = json_node_init_array(json_node_alloc(), array);
    json_array_unref(array);
    return node;
}

} // namespace

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
    JsonNode* node = json_node_init_object(json_node_alloc(), object);
    json_object_unref(object);
    return node;
}

const PageMethods& VideoBroadcastObject::methods()
{
    static const PageMethods table = {
        {"ChannelConfig.channelList", channelList},
    };
    return table;
}
