#include "ServiceScanner.h"

#include <algorithm>

#include "SectionBuilder.h"
#include "si/PMT.h"
#include "si/SectionReader.h"

using namespace TesmoHbbTV;

namespace {

const uint16_t HBBTV_APPLICATION_TYPE = 0x0010;
const uint8_t AIT_STREAM_TYPE = 0x05;
const uint8_t CAROUSEL_STREAM_TYPE = 0x0B;
const uint8_t STREAM_DESCRIPTORS_TYPE = 0x0C;
const uint8_t DSMCC_SECTIONS_TYPE = 0x0D;
const uint8_t APPLICATION_SIGNALLING_TAG = 0x6F;

// The application types that the 0x6F descriptor of the stream on pid lists. The library's
// PMT keeps only the descriptor's presence, so its body is read here.
std::vector<uint16_t> applicationTypes(const Bytes& section, uint16_t pid)
{
    std::vector<uint16_t> types;
    SectionReader in(section.data(), section.size() >= 4 ? section.size() - 4 : 0);  // without the CRC
    in.skip(10);
    in.skip(in.bits16(6, 15));
    while (in.ok() && in.remaining() >= 5) {
        in.skip(1);
        const uint16_t streamPid = in.bits16(3, 15);
        SectionReader descriptors = in.limit(in.bits16(4, 15));
        in = in.at(descriptors.remaining());
        while (streamPid == pid && descriptors.remaining() >= 2) {
            const uint8_t tag = descriptors.u8();
            SectionReader body = descriptors.limit(descriptors.u8());
            descriptors = descriptors.at(body.remaining());
            while (tag == APPLICATION_SIGNALLING_TAG && body.remaining() >= 3) {
                types.push_back(body.bits16(1, 15));
                body.skip(1);
            }
        }
    }
    return types;
}

const Bytes* pmtOf(const std::vector<TimedSection>& sections, uint16_t program)
{
    for (const TimedSection& s : sections)
        if (s.bytes.size() >= 12 && s.bytes[0] == 0x02 && (s.bytes[3] << 8 | s.bytes[4]) == program)
            return &s.bytes;
    return nullptr;
}

uint16_t pcrPidOf(const Bytes& section)
{
    return section.size() >= 10 ? uint16_t((section[8] & 0x1F) << 8 | section[9]) : 0x1FFF;
}

} // namespace

bool AitStream::isHbbTV() const
{
    for (uint16_t type : applicationTypes)
        if (type == HBBTV_APPLICATION_TYPE)
            return true;
    return false;
}

const AitStream* Service::hbbtvStream() const
{
    for (const AitStream& stream : aitStreams)
        if (stream.isHbbTV())
            return &stream;
    return nullptr;
}

const AitStream* Service::unlabelledStream() const
{
    for (const AitStream& stream : aitStreams)
        if (stream.applicationTypes.empty())
            return &stream;
    return nullptr;
}

std::vector<Service> scanServices(const TransportStream& stream)
{
    std::set<uint16_t> pmtPids;
    for (const TransportStream::Program& program : stream.programs())
        pmtPids.insert(program.pmtPid);
    std::map<uint16_t, std::vector<TimedSection>> pmtSections = stream.sectionsOnPids(pmtPids);
    std::vector<Service> services;
    for (const TransportStream::Program& program : stream.programs()) {
        Service service{program.number, program.pmtPid, "", "", {}, {}, {}, {}};
        auto name = stream.serviceNames().find(program.number);
        if (name != stream.serviceNames().end()) {
            service.name = name->second.name;
            service.provider = name->second.provider;
        }
        const std::vector<TimedSection>& sections = pmtSections[program.pmtPid];
        if (const Bytes* section = pmtOf(sections, program.number)) {
            PMT pmt(section->data());
            for (const auto& es : pmt.getStreams()) {
                if (es->getStreamType() == AIT_STREAM_TYPE && es->getApplicationSignallingDescriptor())
                    service.aitStreams.push_back({es->getElementaryPID(), applicationTypes(*section, es->getElementaryPID())});
                const auto* tag = es->getStreamIdentifierDescriptor();
                if (es->getStreamType() == CAROUSEL_STREAM_TYPE && tag)
                    service.carouselStreams.push_back({es->getElementaryPID(), tag->getComponentTag()});
                if ((es->getStreamType() == STREAM_DESCRIPTORS_TYPE || es->getStreamType() == DSMCC_SECTIONS_TYPE) && tag)
                    service.eventStreams.push_back({es->getElementaryPID(), tag->getComponentTag()});
                if (tesmo_test::isAudioOrVideo(es->getStreamType()))
                    service.avPids.push_back(es->getElementaryPID());
            }
            const uint16_t pcr = pcrPidOf(*section);
            if (service.hasPicture() && pcr != 0x1FFF && std::find(service.avPids.begin(), service.avPids.end(), pcr) == service.avPids.end())
                service.avPids.push_back(pcr);
        }
        services.push_back(service);
    }
    return services;
}
