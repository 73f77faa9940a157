#include "si/AITApplication.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <utility>

#include "api/ConfigurationManager.h"
#include "si/AIT.h"
#include "si/HbbTVURL.h"

namespace TesmoHbbTV {

namespace {

// A transport protocol descriptor's label, as the transport reads it (0 where it is cut off).
uint8_t labelOf(const SectionReader& descriptor)
{
    return descriptor.peek(4);
}

bool isUsable(const AITApplicationTransport& transport, bool broadbandAvailable)
{
    return broadbandAvailable || transport.getProtocolId() != AITApplicationTransport::HTTP;
}

// The length of a name descriptor's first name. Its length byte is checked against the end
// of the descriptor loop only, not the descriptor's own length; nothing when the name does
// not fit the loop, which fails the entry.
std::optional<size_t> firstNameLength(const SectionReader& descriptor, size_t loopRemaining)
{
    if (loopRemaining <= 5)
        return std::nullopt;
    const size_t length = descriptor.peek(5);
    if (6 + length > loopRemaining)
        return std::nullopt;
    return length;
}

enum DescriptorTag : uint8_t {
    APPLICATION = 0x00,
    APPLICATION_NAME = 0x01,
    TRANSPORT_PROTOCOL = 0x02,
    APPLICATION_RECORDING = 0x06,
    SIMPLE_APPLICATION_LOCATION = 0x15,
    APPLICATION_USAGE = 0x16,
    SIMPLE_APPLICATION_BOUNDARY = 0x17,
};

}  // namespace

AITApplication::AITApplication(AIT* ait, char* room, size_t nameRoom, size_t locationRoom)
    : ait(ait), name(room, nameRoom), channelHandle(ait ? ait->getChannelHandle() : nullptr),
      location(room + nameRoom, locationRoom)
{
}

std::unique_ptr<AITApplication> AITApplication::allocate(AIT* ait, size_t nameRoom, size_t locationRoom)
{
    void* block = TailText::allocate(sizeof(AITApplication), nameRoom + locationRoom);
    char* room = TailText::roomOf(block, sizeof(AITApplication));
    return std::unique_ptr<AITApplication>(new (block) AITApplication(ait, room, nameRoom, locationRoom));
}

// A location is never longer than its descriptor. A name may run past its descriptor to
// the end of the loop, so its room is what parseName() will take.
std::unique_ptr<AITApplication> AITApplication::create(AIT* ait, SectionReader entry)
{
    size_t nameRoom = 0;
    size_t locationRoom = 0;
    const size_t loopEnd = 9 + (size_t(entry.peek(7) & 0x0F) << 8 | entry.peek(8));
    for (size_t offset = 9; offset + 2 <= loopEnd && entry.canRead(offset + 2); offset += 2 + entry.peek(offset + 1)) {
        if (entry.peek(offset) == APPLICATION_NAME)
            nameRoom += firstNameLength(entry.at(offset), loopEnd - offset).value_or(0);
        else if (entry.peek(offset) == SIMPLE_APPLICATION_LOCATION)
            locationRoom += entry.peek(offset + 1);
    }
    return allocate(ait, nameRoom, locationRoom);
}

std::unique_ptr<AITApplication> AITApplication::create(AIT* ait, const DAXO_AITApplication& record)
{
    return allocate(ait, record.name ? std::strlen(record.name) : 0,
                    record.location ? std::strlen(record.location) : 0);
}

AITApplication::~AITApplication() = default;

bool AITApplication::parse(SectionReader entry)
{
    SectionReader in = entry;
    organisationId = in.u32();
    applicationId = in.u16();
    controlCode = ControlCode(in.u8());
    const size_t loopLength = in.bits16(4, 15);
    if (!in.ok())
        return false;

    LocalTransports local;
    const size_t loopEnd = 9 + loopLength;
    for (size_t offset = 9; offset < loopEnd;) {
        const SectionReader descriptor = entry.at(offset);
        const size_t loopRemaining = loopEnd - offset;
        const size_t length = descriptor.peek(1);
        // A lone byte before the loop end cannot hold a descriptor of any length.
        if (loopRemaining < 2 || length == 0 || 2 + length > loopRemaining || !descriptor.canRead(2 + length))
            return false;
        if (!parseDescriptor(descriptor, loopRemaining, local))
            return false;
        offset += 2 + length;
    }

    if (applicationDescriptor)
        buildTransportList(local);
    isSignedApp = applicationId >= 0x4000 && applicationId < 0x8000;
    return true;
}

// descriptor reaches to the section end; loopRemaining counts the bytes from the
// descriptor to the end of the application's descriptor loop.
bool AITApplication::parseDescriptor(SectionReader descriptor, size_t loopRemaining, LocalTransports& local)
{
    const size_t length = descriptor.peek(1);
    switch (descriptor.peek(0)) {
    case APPLICATION:
        if (!applicationDescriptor)
            applicationDescriptor.emplace(descriptor);
        break;
    case APPLICATION_NAME:
        return parseName(descriptor, loopRemaining);
    case TRANSPORT_PROTOCOL:
        addLocalTransport(descriptor, local);
        break;
    case APPLICATION_RECORDING:
        if (!recordingDescriptor)
            recordingDescriptor.emplace(descriptor);
        break;
    case SIMPLE_APPLICATION_LOCATION:
        descriptor.at(2).appendTo(location, length);
        break;
    case APPLICATION_USAGE:
        usageType = ApplicationUsageType(descriptor.peek(2));
        break;
    case SIMPLE_APPLICATION_BOUNDARY:
        domain.parseSimpleApplicationBoundaryExtensionDescriptor(descriptor);
        break;
    default:
        break;
    }
    return true;
}

// Only the first name of a descriptor is read; the names of several descriptors are
// concatenated, which receivers in the field show as one name.
bool AITApplication::parseName(SectionReader descriptor, size_t loopRemaining)
{
    const std::optional<size_t> nameLength = firstNameLength(descriptor, loopRemaining);
    if (!nameLength)
        return false;
    descriptor.at(6).appendTo(name, *nameLength);
    return true;
}

// Only the first transport of a label counts. Its object is made when the application
// descriptor lists the label: one it does not list costs nothing.
void AITApplication::addLocalTransport(SectionReader descriptor, LocalTransports& local)
{
    for (const SectionReader& existing : local)
        if (labelOf(existing) == labelOf(descriptor))
            return;
    local.push_back(descriptor);
}

AITApplication::Transport AITApplication::makeLocalTransport(SectionReader descriptor) const
{
    Transport transport = AITApplicationTransport::create(descriptor);
    const bool implicitService =
        transport->getProtocolId() == AITApplicationTransport::HTTP ||
        (transport->getProtocolId() == AITApplicationTransport::OBJECT_CAROUSEL && !transport->isRemoteConnection());
    if (implicitService && ait)
        transport->setService(ait->getOriginalNetworkId(), ait->getTransportStreamId(), ait->getServiceId());
    return transport;
}

// The application's own transport wins over a common one of the same label; the order is
// the signalled label order, and a label listed twice yields the local transport, then the
// common one.
void AITApplication::buildTransportList(LocalTransports& local)
{
    static const AIT::TransportMap none;
    const AIT::TransportMap& common = ait ? ait->getCommonTransports() : none;
    for (uint8_t label : applicationDescriptor->transportProtocolLabels) {
        auto own = local.begin();
        while (own != local.end() && labelOf(*own) != label)
            ++own;
        if (own != local.end()) {
            transports.push_back(makeLocalTransport(*own));
            local.erase(own);
            continue;
        }
        auto shared = common.find(label);
        if (shared != common.end())
            transports.push_back(shared->second);
    }
}

bool AITApplication::parse(const DAXO_AITApplication& record, bool& corrected)
{
    if (!record.location)
        corrected = true;
    else
        location.append(record.location, std::strlen(record.location));

    for (int32_t i = 0; record.transports && i < record.num_transports; ++i)
        if (Transport transport = AITApplicationTransport::create(record.transports[i]))
            transports.push_back(std::move(transport));
    if (transports.empty())
        return false;

    if (record.name)
        name.append(record.name, std::strlen(record.name));
    organisationId = record.organisation_id;
    applicationId = static_cast<uint16_t>(record.application_id);
    applicationDescriptor.emplace();
    for (int32_t i = 0; record.profiles && i < record.num_profiles; ++i) {
        const DAXO_AITProfile& p = record.profiles[i];
        applicationDescriptor->profiles.push_back(PlatformProfile{p.profile, p.major, p.minor, p.micro});
    }
    applicationDescriptor->priority = static_cast<uint8_t>(record.priority);
    usageType = ApplicationUsageType(record.usage_type);
    for (int32_t i = 0; record.boundaries && i < record.num_boundaries; ++i)
        if (record.boundaries[i])
            domain.addBoundaryExtension(record.boundaries[i]);

    // Replaces the flag set for a missing location: only a changed entry counts as corrected.
    corrected = !(record.control_code == AUTOSTART && record.visibility == ApplicationDescriptor::VISIBLE_ALL &&
                  record.service_bound == 0);
    controlCode = AUTOSTART;
    applicationDescriptor->visibility = ApplicationDescriptor::VISIBLE_ALL;
    applicationDescriptor->serviceBound = false;
    return true;
}

bool AITApplication::isPlatformProfileSupported() const
{
    if (!applicationDescriptor)
        return false;
    const ConfigurationManager* config = ConfigurationManager::getInstance();
    const uint16_t supported = config->getSupportedPlatformProfiles();
    const ConfigurationManager::HbbTVVersion& version = config->getHbbTVVersion();
    for (const PlatformProfile& profile : applicationDescriptor->profiles)
        if (profile.isCompatible(supported, version.major, version.minor, version.micro))
            return true;
    return false;
}

unsigned char AITApplication::getApplicationPriority() const
{
    return applicationDescriptor ? applicationDescriptor->priority : 0;
}

bool AITApplication::isSignalledAsServiceBound() const
{
    return applicationDescriptor && applicationDescriptor->serviceBound;
}

bool AITApplication::sameAITApplication(const AITApplication* other) const
{
    return other && other->applicationId == applicationId && other->organisationId == organisationId;
}

bool AITApplication::hasValidAppId() const
{
    return isXMLAITbased() || (applicationId != 0 && applicationId < 0x8000);
}

bool AITApplication::isXMLAITbased() const
{
    return ait && ait->isXMLAIT();
}

bool AITApplication::isPreferredTransportProtocol(AITApplicationTransport::ProtocolId protocol) const
{
    return !transports.empty() && transports[0]->getProtocolId() == protocol;
}

bool AITApplication::getPreferredTransportProtocol(AITApplicationTransport::ProtocolId& protocol) const
{
    for (const Transport& transport : transports) {
        const auto id = transport->getProtocolId();
        if (id == AITApplicationTransport::HTTP || id == AITApplicationTransport::OBJECT_CAROUSEL) {
            protocol = id;
            return true;
        }
    }
    return false;
}

AITApplicationTransport* AITApplication::firstAvailableFrom(size_t index, bool broadbandAvailable) const
{
    for (; index < transports.size(); ++index)
        if (isUsable(*transports[index], broadbandAvailable))
            return transports[index];
    return nullptr;
}

AITApplicationTransport* AITApplication::getFirstAvailableTransport(bool broadbandAvailable) const
{
    return firstAvailableFrom(0, broadbandAvailable);
}

// A transport listed twice (one common transport named by two labels) is offered once:
// failing over to it again would retry the same load for ever.
AITApplicationTransport* AITApplication::getNextAvailableTransport(const AITApplicationTransport* current,
                                                                   bool broadbandAvailable) const
{
    const auto begin = transports.begin();
    const auto at = std::find(begin, transports.end(), current);
    for (auto next = at == transports.end() ? at : at + 1; next != transports.end(); ++next)
        if (isUsable(**next, broadbandAvailable) && std::find(begin, next, *next) == next)
            return next->get();
    return nullptr;
}

AITApplicationTransport* AITApplication::getTransportMatchingURL(const HbbTVURL& url) const
{
    for (const Transport& transport : transports)
        if (url.matches(transport->getURL(location.view())))
            return transport;
    return nullptr;
}

bool AITApplication::isTransportedOverProtocol(AITApplicationTransport::ProtocolId protocol) const
{
    const size_t counted = getNumTransports();
    for (size_t i = 0; i < counted && i < transports.size(); ++i)
        if (transports[i]->getProtocolId() == protocol)
            return true;
    return false;
}

}  // namespace TesmoHbbTV
