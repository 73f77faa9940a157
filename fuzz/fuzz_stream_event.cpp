// A stream event's way from the broadcast's bytes to the page: the platform's stream
// descriptors reader, then the JSON the browser sends the page and the D-Bus message that
// carries it. Byte 0 is the stream's component tag, bytes 1-2 the event id a page listens
// for; the rest is a whole stream descriptors section when it starts with its table id, else
// the descriptor loop of one. Whatever the payload holds, each event must reach the page as
// valid UTF-8 JSON whose data is the payload's bytes in hexadecimal and whose text is those
// bytes read as UTF-8.

#include <glib.h>
#include <json-glib/json-glib.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#include "DvbText.h"
#include "StreamEventFeed.h"
#include "objects/StreamEventsObject.h"

namespace {

const uint8_t STREAM_DESCRIPTORS_TABLE = 0x3D;

Bytes sectionAround(const uint8_t* loop, size_t size)
{
    const size_t sectionLength = 5 + size + 4;
    Bytes section = {STREAM_DESCRIPTORS_TABLE,
                     uint8_t(0xB0 | ((sectionLength >> 8) & 0x0F)),
                     uint8_t(sectionLength),
                     0x00,
                     0x01,
                     0xC3,
                     0x00,
                     0x00};
    section.insert(section.end(), loop, loop + size);
    section.insert(section.end(), 4, 0);  // the reader does not check the CRC
    return section;
}

std::string bytesOfHex(const std::string& hex)
{
    std::string bytes;
    for (size_t i = 0; i + 1 < hex.size(); i += 2)
        bytes += char(std::strtoul(hex.substr(i, 2).c_str(), nullptr, 16));
    return bytes;
}

void require(bool condition)
{
    if (!condition)
        std::abort();
}

void checkWhatThePageGets(const StreamEventFeed::Trigger& trigger)
{
    JsonNode* payload = StreamEventsObject::payload(1, trigger.name, trigger.data, trigger.text, trigger.status);
    char* json = json_to_string(payload, FALSE);
    json_node_unref(payload);
    require(g_utf8_validate(json, -1, nullptr));
    GVariant* message = g_variant_ref_sink(g_variant_new("(tss)", guint64(1), "StreamEvents.event", json));
    g_variant_unref(message);

    JsonNode* back = json_from_string(json, nullptr);
    require(back && JSON_NODE_HOLDS_OBJECT(back));
    JsonObject* event = json_node_get_object(back);
    const std::string data = json_object_get_string_member(event, "data");
    require(json_object_get_string_member(event, "text") == validUtf8(bytesOfHex(data)));
    require(json_object_get_string_member(event, "name") == trigger.name);
    json_node_unref(back);
    g_free(json);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 4 || size > 3 + 0xFFF)
        return 0;  // the three bytes before the section, and at least one of it
    // A GLib assertion (a string that is not UTF-8) is a failure, not a warning.
    g_log_set_always_fatal(GLogLevelFlags(G_LOG_LEVEL_CRITICAL | G_LOG_LEVEL_WARNING));
    const uint8_t componentTag = data[0];
    const uint16_t eventId = uint16_t(data[1] << 8 | data[2]);
    const Bytes section =
        data[3] == STREAM_DESCRIPTORS_TABLE ? Bytes(data + 3, data + size) : sectionAround(data + 3, size - 3);

    StreamEventFeed feed;
    feed.start({{componentTag, {TimedSection{0, section}}}}, 1);
    int listener = 0;
    feed.subscribe("event", componentTag, eventId, &listener);
    std::vector<StreamEventFeed::Trigger> triggers;
    const carousel::ObjectCarousel nothing;
    feed.step(0, nothing, triggers);
    for (const StreamEventFeed::Trigger& trigger : triggers)
        checkWhatThePageGets(trigger);
    return 0;
}
