#include "AitDecoder.h"

#include <cstdio>

#include "ByteReader.h"
#include "DvbText.h"

namespace {

DecodedTransport readTransport(ByteReader body)
{
    DecodedTransport t;
    t.protocol = body.u16();
    t.label = body.u8();
    if (t.protocol == 1) {
        t.remote = body.u8() & 0x80;
        if (t.remote) {
            t.originalNetworkId = body.u16();
            t.transportStreamId = body.u16();
            t.serviceId = body.u16();
        }
        t.componentTag = body.u8();
    } else if (t.protocol == 3) {
        t.urlBase = body.text(body.u8());
    }
    return t;
}

void readApplicationDescriptor(ByteReader body, DecodedApplication& app)
{
    ByteReader profiles = body.part(body.u8());
    while (profiles.left() >= 5)
        app.profiles.push_back({profiles.u16(), profiles.u8(), profiles.u8(), profiles.u8()});
    const uint8_t flags = body.u8();
    app.serviceBound = flags & 0x80;
    app.visibility = (flags >> 5) & 3;
    app.priority = body.u8();
    while (body.left() > 0)
        app.labels.push_back(body.u8());
}

void readDescriptors(ByteReader loop, DecodedApplication& app, std::vector<DecodedTransport>& transports)
{
    while (loop.left() >= 2) {
        const uint8_t tag = loop.u8();
        ByteReader body = loop.part(loop.u8());
        switch (tag) {
        case 0x00:
            readApplicationDescriptor(body, app);
            break;
        case 0x01:
            body.skip(3);
            app.name += dvbTextToUtf8(body.text(body.u8()));
            break;
        case 0x02:
            transports.push_back(readTransport(body));
            break;
        case 0x15:
            app.location += body.text(body.left());
            break;
        case 0x17:
            for (uint8_t count = body.u8(); count > 0 && body.good(); --count)
                app.boundaries.push_back(body.text(body.u8()));
            break;
        default:
            break;
        }
    }
}

}  // namespace

std::string DecodedTransport::describe() const
{
    char text[64];
    switch (protocol) {
    case 3:
        return "HTTP " + urlBase;
    case 1:
        if (remote)
            std::snprintf(text, sizeof text, "object carousel tag 0x%02X on %X.%X.%X", componentTag, originalNetworkId,
                          transportStreamId, serviceId);
        else
            std::snprintf(text, sizeof text, "object carousel tag 0x%02X", componentTag);
        return text;
    default:
        std::snprintf(text, sizeof text, "protocol 0x%04X", protocol);
        return text;
    }
}

std::string controlCodeName(uint8_t code)
{
    static const char* const names[] = {"",         "AUTOSTART", "PRESENT",  "DESTROY",           "KILL",
                                        "PREFETCH", "REMOTE",    "DISABLED", "PLAYBACK_AUTOSTART"};
    if (code >= 1 && code <= 8)
        return names[code];
    char text[16];
    std::snprintf(text, sizeof text, "0x%02X", code);
    return text;
}

DecodedAit decodeAit(const Bytes& section)
{
    DecodedAit ait;
    ByteReader in(section.data(), section.size() >= 4 ? section.size() - 4 : 0);
    if (in.u8() != 0x74)
        return ait;
    in.skip(2);
    ait.applicationType = in.u16() & 0x7FFF;
    ait.version = (in.u8() >> 1) & 0x1F;
    ait.sectionNumber = in.u8();
    ait.lastSectionNumber = in.u8();
    const uint16_t commonLength = in.u16() & 0x0FFF;
    ait.readable = in.good();
    DecodedApplication ignored;
    readDescriptors(in.part(commonLength), ignored, ait.commonTransports);
    ByteReader loop = in.part(in.u16() & 0x0FFF);
    while (loop.left() >= 9) {
        DecodedApplication app;
        app.organisationId = loop.u32();
        app.applicationId = loop.u16();
        app.controlCode = loop.u8();
        readDescriptors(loop.part(loop.u16() & 0x0FFF), app, app.transports);
        ait.applications.push_back(app);
    }
    return ait;
}
