#include "BiopObject.h"

namespace carousel {

namespace {

// Names and kinds are carried with their terminating zero.
std::string withoutZeros(std::string text)
{
    while (!text.empty() && text.back() == '\0')
        text.pop_back();
    return text;
}

std::string shortKind(const std::string& typeId)
{
    const std::string kind = withoutZeros(typeId);
    if (kind == "DSM::ServiceGateway")
        return "srg";
    if (kind == "DSM::Directory")
        return "dir";
    if (kind == "DSM::File")
        return "fil";
    if (kind == "DSM::Stream")
        return "str";
    if (kind == "BIOP::StreamEvent")
        return "ste";
    return kind;
}

void readLiteComponents(ByteReader profile, ObjectRef& ref, bool& located)
{
    profile.skip(1);  // byte order
    const uint8_t count = profile.u8();
    for (uint8_t i = 0; i < count && profile.good(); ++i) {
        const uint32_t tag = profile.u32();
        ByteReader component = profile.part(profile.u8());
        if (tag == TAG_OBJECT_LOCATION) {
            ref.carouselId = component.u32();
            ref.moduleId = component.u16();
            component.skip(2);  // version 1.0
            ref.objectKey = component.text(component.u8());
            located = component.good();
        } else if (tag == TAG_CONN_BINDER && component.u8() > 0) {
            component.skip(4);  // first tap: id, use
            ref.associationTag = component.u16();
        }
    }
}

bool readBindings(ByteReader body, BiopObject& object)
{
    const uint16_t count = body.u16();
    for (uint16_t i = 0; i < count && body.good(); ++i) {
        Binding binding;
        const uint8_t components = body.u8();
        for (uint8_t c = 0; c < components && body.good(); ++c) {
            if (c > 0)
                binding.name += '/';
            binding.name += withoutZeros(body.text(body.u8()));
            body.skip(body.u8());  // the kind, which the reference repeats
        }
        body.skip(1);  // binding type
        if (!readObjectRef(body, binding.target))
            return false;
        body.skip(body.u16());  // object info
        if (body.good())
            object.bindings.push_back(binding);
    }
    return body.good();
}

// The event names from the object info (after the stream's description, duration and the
// three stream flags), the taps and the event ids from the body.
bool readStreamEvent(ByteReader info, ByteReader body, StreamEventInfo& events)
{
    info.skip(info.u8());  // description
    info.skip(8 + 3);  // duration, audio, video, data
    for (uint16_t count = info.u16(); count > 0 && info.good(); --count)
        events.names.push_back(withoutZeros(info.text(info.u8())));
    for (uint8_t taps = body.u8(); taps > 0 && body.good(); --taps) {
        body.skip(2);  // id
        const uint16_t use = body.u16();
        const uint16_t tag = body.u16();
        body.skip(body.u8());  // selector
        if (use == STR_EVENT_USE || use == STR_EVENT_USE - 1)  // events, or status and events
            events.associationTags.push_back(tag);
    }
    for (uint8_t count = body.u8(); count > 0 && body.good(); --count)
        events.ids.push_back(body.u16());
    return info.good() && body.good() && events.ids.size() == events.names.size();
}

}  // namespace

bool readObjectRef(ByteReader& in, ObjectRef& ref)
{
    const uint32_t typeLength = in.u32();
    ref.kind = shortKind(in.text(typeLength));
    in.skip((4 - typeLength % 4) % 4);
    const uint32_t profiles = in.u32();
    bool located = false;
    for (uint32_t i = 0; i < profiles && in.good(); ++i) {
        const uint32_t tag = in.u32();
        ByteReader profile = in.part(in.u32());
        if (tag == TAG_BIOP && in.good())
            readLiteComponents(profile, ref, located);
    }
    return in.good() && located;
}

bool parseBiopModule(const std::string& module, std::vector<BiopObject>& objects, std::string& error)
{
    ByteReader in(reinterpret_cast<const uint8_t*>(module.data()), module.size());
    while (in.left() > 0) {
        if (in.text(4) != "BIOP" || in.u8() != 1 || in.u8() != 0) {
            error = "no BIOP message where one should start";
            return false;
        }
        in.skip(2);  // byte order, message type
        const uint32_t size = in.u32();
        if (size > in.left()) {
            error = "a BIOP message claims more bytes than its module holds";
            return false;
        }
        ByteReader message = in.part(size);

        BiopObject object;
        object.objectKey = message.text(message.u8());
        object.kind = shortKind(message.text(message.u32()));
        ByteReader info = message.part(message.u16());
        for (uint8_t contexts = message.u8(); contexts > 0 && message.good(); --contexts) {
            message.skip(4);
            message.skip(message.u16());
        }
        const uint32_t bodyLength = message.u32();
        if (bodyLength > message.left()) {
            error = "a BIOP message body runs past its message";
            return false;
        }
        ByteReader body = message.part(bodyLength);
        bool fine = true;
        if (object.kind == "fil")
            object.content = body.text(body.u32());
        else if (object.kind == "srg" || object.kind == "dir")
            fine = readBindings(body, object);
        else if (object.kind == "ste")
            fine = readStreamEvent(info, body, object.events);
        if (!fine || !body.good() || !message.good()) {
            error = "the " + object.kind + " object's lengths do not hold";
            return false;
        }
        objects.push_back(std::move(object));
    }
    return true;
}

}  // namespace carousel
