#include "si/AIT.h"

#include <algorithm>

#include "si/BitReaders.h"

namespace TesmoHbbTV {

namespace {

const uint8_t AIT_TABLE_ID = 0x74;
const uint8_t TRANSPORT_PROTOCOL_DESCRIPTOR = 0x02;
const size_t SECTION_HEADER_SIZE = 10;  // through common_descriptors_length
const size_t APPLICATION_ENTRY_HEADER_SIZE = 9;

}  // namespace

AIT::AIT(unsigned short originalNetworkId, unsigned short transportStreamId, unsigned short serviceId,
         void* channelHandle)
    : originalNetworkId(originalNetworkId), transportStreamId(transportStreamId), serviceId(serviceId),
      channelHandle(channelHandle)
{
}

AIT::AIT() : xmlAIT(true), complete(true) {}

AIT::~AIT() = default;

bool AIT::parse(const unsigned char* section)
{
    if (!section || section[0] != AIT_TABLE_ID)
        return false;
    const size_t end = 3 + size_t(U16GetBits(section + 1, 4, 15));
    // Shorter than its own header: nothing in it can be read.
    if (end < SECTION_HEADER_SIZE)
        return false;
    const SectionReader bytes(section, end);

    const uint8_t version = U8GetBits(section + 5, 2, 6);
    if (receivedCount == 0)
        versionNumber = version;
    else if (version != versionNumber || complete)
        return false;

    const uint8_t sectionNumber = section[6];
    if (receivedSections.test(sectionNumber))
        return true;
    // Recorded before the rest is parsed and kept if it fails: such a section still counts
    // towards completeness and its retransmission is ignored as a repeat.
    receivedSections.set(sectionNumber);
    ++receivedCount;
    lastSectionNumber = section[7];
    if (receivedCount == unsigned(lastSectionNumber) + 1)
        complete = true;

    const size_t commonLength = U16GetBits(section + 8, 4, 15);
    size_t position = SECTION_HEADER_SIZE;
    if (position + commonLength > end)
        return false;
    if (commonLength != 0 && !parseCommonDescriptorsLoop(bytes.at(position), commonLength))
        return false;
    position += commonLength;
    if (!(position + 1 < end))
        return false;
    return parseApplicationLoop(bytes, position, end);
}

// Entries are bounded by the section end, not by the loop length.
bool AIT::parseApplicationLoop(SectionReader section, size_t position, size_t end)
{
    const size_t loopLength = section.at(position).bits16(4, 15);
    position += 2;
    if (position + loopLength > end)
        return false;
    const size_t loopEnd = position + loopLength;
    while (position < loopEnd) {
        if (position + APPLICATION_ENTRY_HEADER_SIZE - 1 >= end)
            return false;
        const size_t descriptorsLength = section.at(position + 7).bits16(4, 15);
        if (position + APPLICATION_ENTRY_HEADER_SIZE + descriptorsLength > end)
            return false;
        const SectionReader entry = section.at(position);
        std::unique_ptr<AITApplication> app = AITApplication::create(this, entry);
        if (!app->parse(entry))
            return false;
        insertAITApplication(app.release());
        position += APPLICATION_ENTRY_HEADER_SIZE + descriptorsLength;
    }
    return true;
}

bool AIT::parseCommonDescriptorsLoop(SectionReader loop, size_t length)
{
    for (size_t position = 0; position < length;) {
        const SectionReader descriptor = loop.at(position);
        const size_t descriptorLength = descriptor.peek(1);
        if (length - position < 2 || position + 2 + descriptorLength > length)
            return false;
        if (descriptor.peek(0) == TRANSPORT_PROTOCOL_DESCRIPTOR) {
            ref_ptr<AITApplicationTransport> transport = AITApplicationTransport::create(descriptor);
            if (!transport->isRemoteConnection())
                transport->setService(originalNetworkId, transportStreamId, serviceId);
            commonTransports.emplace(transport->getLabel(), transport);
        }
        position += 2 + descriptorLength;
    }
    return true;
}

bool AIT::parse(const DAXO_AITData& data)
{
    if (data.num_applications < 1 || !data.applications)
        return false;
    // Only the first application of an XML AIT is used.
    std::unique_ptr<AITApplication> app = AITApplication::create(this, data.applications[0]);
    if (!app->parse(data.applications[0], corrected))
        return false;
    insertAITApplication(app.release());
    return true;
}

void AIT::insertAITApplication(AITApplication* app)
{
    const unsigned char priority = app->getApplicationPriority();
    // Kept in descending priority; entries mostly come in that order, and join at the end.
    if (applications.empty() || applications[applications.size() - 1]->getApplicationPriority() >= priority) {
        applications.push_back(std::unique_ptr<AITApplication>(app));
        return;
    }
    auto lower = std::find_if(applications.begin(), applications.end(), [priority](const auto& existing) {
        return existing->getApplicationPriority() < priority;
    });
    applications.insert(lower, std::unique_ptr<AITApplication>(app));
}

AITApplication* AIT::getAITApplication(unsigned int index) const
{
    return index < applications.size() ? applications[index].get() : nullptr;
}

AITApplication* AIT::getAITApplication(unsigned long organisationId, unsigned short applicationId) const
{
    for (const auto& app : applications)
        if (app->getOrganisationIdentifier() == organisationId && app->getApplicationIdentifier() == applicationId)
            return app.get();
    return nullptr;
}

bool AIT::isSelectable(const AITApplication& app, AITApplication::ControlCode code, bool broadbandAvailable) const
{
    return app.isSignalledWith(code) && app.getFirstAvailableTransport(broadbandAvailable);
}

AITApplication* AIT::getAITApplication(AITApplication::ControlCode code, bool broadbandAvailable) const
{
    for (const auto& app : applications)
        if (isSelectable(*app, code, broadbandAvailable))
            return app.get();
    return nullptr;
}

AITApplication* AIT::getNextAITApplication(const AITApplication* after, AITApplication::ControlCode code,
                                           bool broadbandAvailable) const
{
    auto it =
        std::find_if(applications.begin(), applications.end(), [after](const auto& app) { return app.get() == after; });
    if (it == applications.end())
        return nullptr;
    for (++it; it != applications.end(); ++it)
        if (isSelectable(**it, code, broadbandAvailable))
            return it->get();
    return nullptr;
}

bool AIT::isHandledAITApplication(const AITApplication* app) const
{
    return std::any_of(applications.begin(), applications.end(),
                       [app](const auto& existing) { return existing.get() == app; });
}

AITApplication* AIT::getFirstAITApplicationOfUsageType(AITApplication::ApplicationUsageType type) const
{
    for (const auto& app : applications)
        if (app->getApplicationUsageType() == type)
            return app.get();
    return nullptr;
}

AITApplication* AIT::getFirstDigitalTeletextAITApplication() const
{
    return getFirstAITApplicationOfUsageType(AITApplication::DIGITAL_TELETEXT);
}

}  // namespace TesmoHbbTV
