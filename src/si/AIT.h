#ifndef TESMO_HBBTV_SI_AIT_H
#define TESMO_HBBTV_SI_AIT_H

#include <bitset>
#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "si/AITApplication.h"
#include "si/AITApplicationTransport.h"
#include "support/RefCounted.h"
#include "support/SmallVector.h"
#include "support/ref_ptr.h"
#include "tesmo_hbbtv/browser_core.h"

namespace TesmoHbbTV {

// One Application Information Table of one service: assembled from binary sections, or
// built from an XML AIT record. Owns its applications, in descending priority.
class AIT : public RefCounted<AIT> {
public:
    using TransportMap = std::map<uint8_t, ref_ptr<AITApplicationTransport>>;

    // A broadcast table of the given service.
    AIT(unsigned short originalNetworkId, unsigned short transportStreamId, unsigned short serviceId,
        void* channelHandle);
    // An XML AIT.
    AIT();
    ~AIT() override;

    // section holds exactly 3 + section_length bytes. True when the section was accepted,
    // including a repeat of one the table holds.
    bool parse(const unsigned char* section);
    bool parse(const DAXO_AITData& data);

    void insertAITApplication(AITApplication* app);
    void clearCommonTransports() { commonTransports.clear(); }
    const TransportMap& getCommonTransports() const { return commonTransports; }

    AITApplication* getAITApplication(unsigned int index) const;
    AITApplication* getAITApplication(unsigned long organisationId, unsigned short applicationId) const;
    AITApplication* getAITApplication(AITApplication::ControlCode code, bool broadbandAvailable) const;
    AITApplication* getNextAITApplication(const AITApplication* after, AITApplication::ControlCode code,
                                          bool broadbandAvailable) const;
    bool isHandledAITApplication(const AITApplication* app) const;
    AITApplication* getFirstAITApplicationOfUsageType(AITApplication::ApplicationUsageType type) const;
    AITApplication* getFirstDigitalTeletextAITApplication() const;
    unsigned int getNumApplications() const { return static_cast<unsigned int>(applications.size()); }

    unsigned short getOriginalNetworkId() const { return originalNetworkId; }
    unsigned short getTransportStreamId() const { return transportStreamId; }
    unsigned short getServiceId() const { return serviceId; }
    void* getChannelHandle() const { return channelHandle; }
    bool isXMLAIT() const { return xmlAIT; }
    bool isInvalid() const { return invalid; }
    void setInvalid(bool value) { invalid = value; }
    bool isComplete() const { return complete; }
    bool wasCorrected() const { return corrected; }
    uint8_t getVersionNumber() const { return versionNumber; }
    uint8_t getLastSectionNumber() const { return lastSectionNumber; }
    void printAIT() const {}

private:
    bool parseCommonDescriptorsLoop(SectionReader loop, size_t length);
    bool parseApplicationLoop(SectionReader section, size_t position, size_t end);
    bool isSelectable(const AITApplication& app, AITApplication::ControlCode code, bool broadbandAvailable) const;

    SmallVector<std::unique_ptr<AITApplication>, 4> applications;
    TransportMap commonTransports;  // destroyed before the applications that share them
    unsigned short originalNetworkId = 0;
    unsigned short transportStreamId = 0;
    unsigned short serviceId = 0;
    void* channelHandle = nullptr;  // the platform's, opaque
    bool xmlAIT = false;
    bool invalid = false;
    bool complete = false;
    bool corrected = false;
    uint8_t lastSectionNumber = 0;
    uint8_t versionNumber = 0;
    std::bitset<256> receivedSections;  // by section number
    unsigned receivedCount = 0;
};

}  // namespace TesmoHbbTV

#endif
