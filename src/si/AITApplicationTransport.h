#ifndef TESMO_HBBTV_SI_AITAPPLICATIONTRANSPORT_H
#define TESMO_HBBTV_SI_AITAPPLICATIONTRANSPORT_H

#include <cstdint>
#include <string>
#include <string_view>

#include "si/SectionReader.h"
#include "support/RefCounted.h"
#include "support/TailText.h"
#include "support/ref_ptr.h"
#include "tesmo_hbbtv/browser_core.h"

namespace TesmoHbbTV {

// One way of loading an application: an object carousel of a broadcast service, or HTTP
// from a base URL. Shared by reference count between a table's common loop and its
// applications.
class AITApplicationTransport : public RefCounted<AITApplicationTransport> {
public:
    // 0 is no protocol the library knows: such a transport matches neither and has no URL.
    enum ProtocolId { PROTOCOL_UNKNOWN = 0, OBJECT_CAROUSEL = 1, HTTP = 3 };

    // A transport of no known protocol, with no URL.
    AITApplicationTransport() = default;
    // One allocation each, the URL base included. descriptor starts at the tag byte of a
    // transport protocol descriptor; a record of any protocol but HTTP gives null.
    static ref_ptr<AITApplicationTransport> create(SectionReader descriptor);
    static ref_ptr<AITApplicationTransport> create(const DAXO_AITApplicationTransport& record);
    static void operator delete(void* block) { ::operator delete(block); }

    std::string getURL(std::string_view location) const;
    std::string getHostname() const;

    ProtocolId getProtocolId() const { return protocolId; }
    uint8_t getLabel() const { return label; }
    std::string getUrlBase() const { return urlBase.str(); }
    bool isRemoteConnection() const { return remoteConnection != 0; }
    uint16_t getOriginalNetworkId() const { return originalNetworkId; }
    uint16_t getTransportStreamId() const { return transportStreamId; }
    uint16_t getServiceId() const { return serviceId; }
    uint8_t getComponentTag() const { return componentTag; }
    // The broadcast service carrying the carousel, when the signalling leaves it implicit.
    void setService(uint16_t onid, uint16_t tsid, uint16_t sid);

private:
    AITApplicationTransport(char* room, size_t capacity) : urlBase(room, capacity) {}
    static AITApplicationTransport* allocate(size_t urlRoom);
    void parseTransportDescriptor(SectionReader descriptor);
    bool parse(const DAXO_AITApplicationTransport& record);

    ProtocolId protocolId = PROTOCOL_UNKNOWN;
    uint8_t label = 0;
    TailText urlBase;
    uint32_t remoteConnection = 0;
    uint16_t originalNetworkId = 0;
    uint16_t transportStreamId = 0;
    uint16_t serviceId = 0;
    uint8_t componentTag = 0;
};

}  // namespace TesmoHbbTV

#endif
