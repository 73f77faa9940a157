#include "si/AITApplicationTransport.h"

#include <cstdio>
#include <cstring>

namespace TesmoHbbTV {

AITApplicationTransport* AITApplicationTransport::allocate(size_t urlRoom)
{
    void* block = TailText::allocate(sizeof(AITApplicationTransport), urlRoom);
    return new (block) AITApplicationTransport(TailText::roomOf(block, sizeof(AITApplicationTransport)), urlRoom);
}

// The URL base is never longer than the descriptor that holds it.
ref_ptr<AITApplicationTransport> AITApplicationTransport::create(SectionReader descriptor)
{
    ref_ptr<AITApplicationTransport> transport(allocate(descriptor.peek(1)));
    transport->parseTransportDescriptor(descriptor);
    return transport;
}

ref_ptr<AITApplicationTransport> AITApplicationTransport::create(const DAXO_AITApplicationTransport& record)
{
    ref_ptr<AITApplicationTransport> transport(allocate(record.url_base ? std::strlen(record.url_base) : 0));
    if (!transport->parse(record))
        return nullptr;
    return transport;
}

void AITApplicationTransport::parseTransportDescriptor(SectionReader in)
{
    // Fields that lie beyond the section keep their defaults; inside it, the selector is
    // read as laid out even where descriptor_length is shorter.
    const size_t descriptorEnd = 2 + size_t(in.peek(1));
    in.skip(2);
    const uint16_t protocol = in.u16();
    const uint8_t readLabel = in.u8();
    if (!in.ok())
        return;
    label = readLabel;

    if (protocol == OBJECT_CAROUSEL) {
        protocolId = OBJECT_CAROUSEL;
        remoteConnection = in.bits8(0, 0);
        if (remoteConnection) {
            const uint16_t onid = in.u16();
            const uint16_t tsid = in.u16();
            const uint16_t sid = in.u16();
            if (in.ok())
                setService(onid, tsid, sid);
        }
        const uint8_t tag = in.u8();
        if (in.ok())
            componentTag = tag;
    } else if (protocol == HTTP) {
        protocolId = HTTP;
        const size_t length = in.u8();
        if (6 + length <= descriptorEnd)
            in.appendTo(urlBase, length);
    }
}

bool AITApplicationTransport::parse(const DAXO_AITApplicationTransport& record)
{
    if (record.protocol_id != HTTP)
        return false;
    protocolId = HTTP;
    if (record.url_base)
        urlBase.append(record.url_base, std::strlen(record.url_base));
    remoteConnection = static_cast<uint32_t>(record.remote_connection);
    setService(record.original_network_id, record.transport_stream_id, record.service_id);
    componentTag = record.component_tag;
    return true;
}

void AITApplicationTransport::setService(uint16_t onid, uint16_t tsid, uint16_t sid)
{
    originalNetworkId = onid;
    transportStreamId = tsid;
    serviceId = sid;
}

std::string AITApplicationTransport::getHostname() const
{
    if (protocolId != OBJECT_CAROUSEL)
        return "";
    char host[32];
    std::snprintf(host, sizeof host, "%x.%x.%x.%x", unsigned(originalNetworkId), unsigned(transportStreamId),
                  unsigned(serviceId), unsigned(componentTag));
    return host;
}

std::string AITApplicationTransport::getURL(std::string_view location) const
{
    switch (protocolId) {
    case HTTP:
        return urlBase.str().append(location);
    case OBJECT_CAROUSEL:
        return ("dvb://" + getHostname() + "/").append(location);
    default:
        return "";
    }
}

}  // namespace TesmoHbbTV
