#include "AitDecoder.h"

#include <cstdio>

#include "DvbText.h"
#include "si/SectionReader.h"

using namespace TesmoHbbTV;

namespace {

DecodedTransport readTransport(SectionReader body)
{
    DecodedTransport t;
    t.protocol = body.u16();
    t.label = body.u8();
    if (t.protocol == 1) {
        t.remote = body.bits8(0, 0);
        if (t.remote) {
            t.originalNetworkId = body.u16();
            t.transportStreamId = body.u16();
            t.serviceId = body.u16();
        }
        t.componentTag = body.u8();
    } else if (t.protocol == 3) {
        body.appendTo(t.urlBase, body.u8());
    }
    return t;
}

void readApplicationDescriptor(SectionReader body, DecodedApplication& app)
{
    SectionReader profiles = body.limit(body.u8());
    body = body.at(profiles.remaining());
    while (profiles.remaining() >= 5)
        app.profiles.push_back({profiles.u16(), profiles.u8(), profiles.u8(), profiles.u8()});
    const uint8_t flags = body.u8();
    app.serviceBound = flags & 0x80;
    app.visibility = (flags >> 5) & 3;
    app.priority = body.u8();
    while (body.remaining() > 0)
        app.labels.push_back(body.u8());
}

void readDescriptors(SectionReader loop, DecodedApplication& app, std::vector<DecodedTransport>& transports)
{
    while (loop.ok() && loop.remaining() >= 2) {
        const uint8_t tag = loop.u8();
        SectionReader body = loop.limit(loop.u8());
        loop = loop.at(body.remaining());
        switch (tag) {
        case 0x00:
            readApplicationDescriptor(body, app);
            break;
        case 0x01: {
            body.skip(3);
            std::string name;
            body.appendTo(name, body.u8());
            app.name += dvbTextToUtf8(name);
            break;
        }
        case 0x02:
            transports.push_back(readTransport(body));
            break;
        case 0x15:
            body.appendTo(app.location, body.remaining());
            break;
        case 0x17:
            for (uint8_t count = body.u8(); count > 0 && body.ok(); --count) {
                std::string extension;
                body.appendTo(extension, body.u8());
                app.boundaries.push_back(extension);
            }
            break;
        default:
            break;
        }
    }
}

} // namespace

std::string DecodedTransport::describe() const
{
    char text[64];
    switch (protocol) {
    case 3:
        return "HTTP " + urlBase;
    case 1:
        if (remote)
            std::snprintf(text, sizeof text, "object carousel tag 0x%02X on %X.%X.%X", componentTag,
                          originalNetworkId, transportStreamId, serviceId);
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
    static const char* const names[] = {"",        "AUTOSTART", "PRESENT",  "DESTROY",           "KILL",
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
    SectionReader in(section.data(), section.size() >= 4 ? section.size() - 4 : 0);
    if (in.u8() != 0x74)
        return ait;
    in.skip(2);
    ait.applicationType = in.bits16(1, 15);
    ait.version = in.bits8(2, 6);
    ait.sectionNumber = in.u8();
    ait.lastSectionNumber = in.u8();
    SectionReader common = in.limit(in.bits16(4, 15));
    in = in.at(common.remaining());
    ait.readable = in.ok();
    DecodedApplication ignored;
    readDescriptors(common, ignored, ait.commonTransports);
    SectionReader loop = in.limit(in.bits16(4, 15));
    while (loop.ok() && loop.remaining() >= 9) {
        DecodedApplication app;
        app.organisationId = loop.u32();
        app.applicationId = loop.u16();
        app.controlCode = loop.u8();
        SectionReader descriptors = loop.limit(loop.bits16(4, 15));
        loop = loop.at(descriptors.remaining());
        readDescriptors(descriptors, app, app.transports);
        ait.applications.push_back(app);
    }
    return ait;
}
