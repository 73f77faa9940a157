#ifndef TESMO_HBBTV_SI_AITAPPLICATION_H
#define TESMO_HBBTV_SI_AITAPPLICATION_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "si/AITApplicationTransport.h"
#include "si/ApplicationDescriptor.h"
#include "si/ApplicationDomain.h"
#include "si/ApplicationRecordingDescriptor.h"
#include "si/PlatformProfile.h"
#include "si/SectionReader.h"
#include "support/SmallVector.h"
#include "support/TailText.h"
#include "support/ref_ptr.h"
#include "tesmo_hbbtv/browser_core.h"

namespace TesmoHbbTV {

class AIT;
class HbbTVURL;

// One application entry of an AIT, from a binary application loop or an XML AIT record.
class AITApplication {
public:
    // Values other than these are kept as signalled.
    enum ControlCode : uint8_t {
        AUTOSTART = 1,
        PRESENT = 2,
        DESTROY = 3,
        KILL = 4,
        PREFETCH = 5,
        REMOTE = 6,
        DISABLED = 7,
        PLAYBACK_AUTOSTART = 8
    };
    enum ApplicationUsageType : uint8_t { NO_USAGE = 0, DIGITAL_TELETEXT = 1 };

    using ApplicationDescriptor = TesmoHbbTV::ApplicationDescriptor;
    using ApplicationRecordingDescriptor = TesmoHbbTV::ApplicationRecordingDescriptor;
    using PlatformProfile = TesmoHbbTV::PlatformProfile;
    using Transport = ref_ptr<AITApplicationTransport>;
    using TransportList = SmallVector<Transport, 2>;

    // One allocation for the entry with room for its name and location, sized from the
    // binary entry (positioned at organisation_id) or the XML record that parse() then
    // reads. ait owns the entry and outlives it.
    static std::unique_ptr<AITApplication> create(AIT* ait, SectionReader entry);
    static std::unique_ptr<AITApplication> create(AIT* ait, const DAXO_AITApplication& record);
    static void operator delete(void* block) { ::operator delete(block); }
    ~AITApplication();

    AITApplication(const AITApplication&) = delete;
    AITApplication& operator=(const AITApplication&) = delete;

    // entry is positioned at organisation_id; it may read up to the end of the section.
    bool parse(SectionReader entry);
    bool parse(const DAXO_AITApplication& record, bool& corrected);

    bool isSignalledWith(ControlCode code) const { return controlCode == code; }
    bool isPlatformProfileSupported() const;
    unsigned char getApplicationPriority() const;
    bool isSignalledAsServiceBound() const;
    bool sameAITApplication(const AITApplication* other) const;
    bool hasValidAppId() const;
    bool isXMLAITbased() const;
    bool isSigned() const { return isSignedApp; }

    uint32_t getOrganisationIdentifier() const { return organisationId; }
    uint16_t getApplicationIdentifier() const { return applicationId; }
    ApplicationUsageType getApplicationUsageType() const { return usageType; }
    ControlCode getControlCode() const { return controlCode; }
    std::string getApplicationName() const { return name.str(); }
    std::string getApplicationLocation() const { return location.str(); }
    const ApplicationDescriptor* getApplicationDescriptor() const
    {
        return applicationDescriptor ? &*applicationDescriptor : nullptr;
    }
    const ApplicationRecordingDescriptor* getApplicationRecordingDescriptor() const
    {
        return recordingDescriptor ? &*recordingDescriptor : nullptr;
    }
    ApplicationDomain* getApplicationDomain() { return &domain; }
    const ApplicationDomain* getApplicationDomain() const { return &domain; }
    void* getChannelHandle() const { return channelHandle; }
    void setChannelHandle(void* handle) { channelHandle = handle; }
    AIT* getAIT() const { return ait; }
    void printAITApplication() const {}

    // Transports in order of preference.
    uint8_t getNumTransports() const { return static_cast<uint8_t>(transports.size()); }
    const TransportList& getTransports() const { return transports; }
    bool isPreferredTransportProtocol(AITApplicationTransport::ProtocolId protocol) const;
    bool getPreferredTransportProtocol(AITApplicationTransport::ProtocolId& protocol) const;
    AITApplicationTransport* getFirstAvailableTransport(bool broadbandAvailable) const;
    AITApplicationTransport* getNextAvailableTransport(const AITApplicationTransport* current,
                                                       bool broadbandAvailable) const;
    AITApplicationTransport* getTransportMatchingURL(const HbbTVURL& url) const;
    bool isTransportedOverProtocol(AITApplicationTransport::ProtocolId protocol) const;

private:
    AITApplication(AIT* ait, char* room, size_t nameRoom, size_t locationRoom);
    static std::unique_ptr<AITApplication> allocate(AIT* ait, size_t nameRoom, size_t locationRoom);
    // The entry's own transport protocol descriptors, one per label, before they are needed.
    using LocalTransports = SmallVector<SectionReader, 2>;

    bool parseDescriptor(SectionReader descriptor, size_t loopRemaining, LocalTransports& local);
    bool parseName(SectionReader descriptor, size_t loopRemaining);
    void addLocalTransport(SectionReader descriptor, LocalTransports& local);
    Transport makeLocalTransport(SectionReader descriptor) const;
    void buildTransportList(LocalTransports& local);
    AITApplicationTransport* firstAvailableFrom(size_t index, bool broadbandAvailable) const;

    AIT* ait;  // the owning table
    TailText name;
    ControlCode controlCode = ControlCode(0);
    uint32_t organisationId = 0;
    uint16_t applicationId = 0;
    void* channelHandle;  // the platform's, opaque
    std::optional<ApplicationDescriptor> applicationDescriptor;
    TransportList transports;
    ApplicationDomain domain;
    TailText location;
    ApplicationUsageType usageType = NO_USAGE;
    bool isSignedApp = false;
    std::optional<ApplicationRecordingDescriptor> recordingDescriptor;
};

}  // namespace TesmoHbbTV

#endif
