#include "ServiceScanner.h"

#include <algorithm>
#include <cstddef>
#include <memory>

extern "C" {
#include <dvbpsi/dvbpsi.h>
#include <dvbpsi/psi.h>
#include <dvbpsi/descriptor.h>
#include <dvbpsi/pmt.h>
#include <dvbpsi/dr_0a.h>
#include <dvbpsi/dr_52.h>
#include <dvbpsi/dr_59.h>
}

#include "DvbText.h"
#include "SectionBuilder.h"

namespace {

const uint16_t HBBTV_APPLICATION_TYPE = 0x0010;
const uint8_t AIT_STREAM_TYPE = 0x05;
const uint8_t CAROUSEL_STREAM_TYPE = 0x0B;
const uint8_t STREAM_DESCRIPTORS_TYPE = 0x0C;
const uint8_t DSMCC_SECTIONS_TYPE = 0x0D;
const uint8_t STREAM_IDENTIFIER_TAG = 0x52;
const uint8_t APPLICATION_SIGNALLING_TAG = 0x6F;
const uint16_t NO_PCR = 0x1FFF;
const uint8_t ISO_639_TAG = 0x0A;
const uint8_t SUBTITLING_TAG = 0x59;
const uint8_t AC3_TAG = 0x6A;
const uint8_t ENHANCED_AC3_TAG = 0x7A;
const uint8_t PRIVATE_PES_TYPE = 0x06;
const uint8_t VISUAL_IMPAIRED_COMMENTARY = 0x03;  // ISO 639 audio_type

// The media format labels of the pages' components: by stream_type, and for private PES
// data by the descriptor that says what it is.
struct Coding {
    uint8_t id;
    Component::Kind kind;
    const char* encoding;
};
const Coding BY_STREAM_TYPE[] = {
    {0x01, Component::VIDEO, "MPEG1"},     {0x02, Component::VIDEO, "MPEG2_SD_25"},
    {0x1B, Component::VIDEO, "AVC_SD_25"}, {0x24, Component::VIDEO, "HEVC_HD_25"},
    {0x03, Component::AUDIO, "MPEG1_L2"},  {0x04, Component::AUDIO, "MPEG1_L2"},
    {0x0F, Component::AUDIO, "HEAAC"},     {0x11, Component::AUDIO, "HEAAC"},
};
const Coding BY_DESCRIPTOR[] = {
    {SUBTITLING_TAG, Component::SUBTITLE, "DVB-SUBT"},
    {AC3_TAG, Component::AUDIO, "AC3"},
    {ENHANCED_AC3_TAG, Component::AUDIO, "E-AC3"},
};

// What a player needs of a stream's descriptors: its language, its component tag, and what
// says that private data is AC-3.
tesmo_test::Bytes playerDescriptors(const dvbpsi_pmt_es_t& es)
{
    tesmo_test::Bytes bytes;
    for (const dvbpsi_descriptor_t* d = es.p_first_descriptor; d; d = d->p_next) {
        if (d->i_tag != ISO_639_TAG && d->i_tag != STREAM_IDENTIFIER_TAG && d->i_tag != AC3_TAG &&
            d->i_tag != ENHANCED_AC3_TAG)
            continue;
        bytes.push_back(d->i_tag);
        bytes.push_back(d->i_length);
        bytes.insert(bytes.end(), d->p_data, d->p_data + d->i_length);
    }
    return bytes;
}

const dvbpsi_descriptor_t* descriptorOf(const dvbpsi_pmt_es_t& es, uint8_t tag)
{
    for (const dvbpsi_descriptor_t* d = es.p_first_descriptor; d; d = d->p_next)
        if (d->i_tag == tag)
            return d;
    return nullptr;
}

// Its kind and coding from the stream type, or, for private PES data, from what its
// descriptors say it is; false for a stream that is none of the three.
bool classify(const dvbpsi_pmt_es_t& es, Component& component)
{
    const Coding* found = nullptr;
    for (const Coding& coding : BY_STREAM_TYPE)
        if (coding.id == es.i_type)
            found = &coding;
    for (const Coding& coding : BY_DESCRIPTOR)
        if (es.i_type == PRIVATE_PES_TYPE && !found && descriptorOf(es, coding.id))
            found = &coding;
    if (!found)
        return false;
    component.kind = found->kind;
    component.encoding = found->encoding;
    return true;
}

// Language and the kind of audience, from the ISO 639 or the subtitling descriptor. The
// subtitling descriptor's decoder fills a fixed table: a longer descriptor is not given to it.
void describeAudience(dvbpsi_pmt_es_t& es, Component& component)
{
    if (auto* d = const_cast<dvbpsi_descriptor_t*>(descriptorOf(es, ISO_639_TAG)))
        if (const dvbpsi_iso639_dr_t* decoded = dvbpsi_DecodeISO639Dr(d); decoded && decoded->i_code_count > 0) {
            component.language = letterCode(decoded->code[0].iso_639_code);
            component.audioDescription = decoded->code[0].i_audio_type == VISUAL_IMPAIRED_COMMENTARY;
        }
    auto* d = const_cast<dvbpsi_descriptor_t*>(descriptorOf(es, SUBTITLING_TAG));
    if (!d || d->i_length > 8 * DVBPSI_SUBTITLING_DR_MAX)
        return;
    if (const dvbpsi_subtitling_dr_t* decoded = dvbpsi_DecodeSubtitlingDr(d); decoded && decoded->i_subtitles_number) {
        component.language = letterCode(decoded->p_subtitle[0].i_iso6392_language_code);
        const uint8_t type = decoded->p_subtitle[0].i_subtitling_type;
        component.hearingImpaired = type >= 0x20 && type <= 0x25;
    }
}

// An application_signalling_descriptor lists application types, each with an AIT version.
void addApplicationTypes(const dvbpsi_descriptor_t& descriptor, std::vector<uint16_t>& types)
{
    for (int at = 0; at + 3 <= descriptor.i_length; at += 3)
        types.push_back(uint16_t((descriptor.p_data[at] & 0x7F) << 8 | descriptor.p_data[at + 1]));
}

void describeStreams(dvbpsi_pmt_t& pmt, Service& service)
{
    for (dvbpsi_pmt_es_t* es = pmt.p_first_es; es; es = es->p_next) {
        bool signalsApplications = false;
        std::vector<uint16_t> types;
        const dvbpsi_stream_identifier_dr_t* identifier = nullptr;
        for (dvbpsi_descriptor_t* d = es->p_first_descriptor; d; d = d->p_next) {
            if (d->i_tag == APPLICATION_SIGNALLING_TAG) {
                signalsApplications = true;
                addApplicationTypes(*d, types);
            } else if (d->i_tag == STREAM_IDENTIFIER_TAG) {
                if (const dvbpsi_stream_identifier_dr_t* decoded = dvbpsi_DecodeStreamIdentifierDr(d))
                    identifier = decoded;
            }
        }
        if (es->i_type == AIT_STREAM_TYPE && signalsApplications)
            service.aitStreams.push_back({es->i_pid, types});
        if (es->i_type == CAROUSEL_STREAM_TYPE && identifier)
            service.carouselStreams.push_back({es->i_pid, identifier->i_component_tag});
        if ((es->i_type == STREAM_DESCRIPTORS_TYPE || es->i_type == DSMCC_SECTIONS_TYPE) && identifier)
            service.eventStreams.push_back({es->i_pid, identifier->i_component_tag});
        Component component;
        component.pid = es->i_pid;
        const bool listed = classify(*es, component);
        if (tesmo_test::isAudioOrVideo(es->i_type) || (listed && component.kind == Component::AUDIO)) {
            service.avPids.push_back(es->i_pid);
            service.avStreams.push_back({es->i_type, es->i_pid, playerDescriptors(*es)});
        }
        if (listed) {
            component.componentTag = identifier ? identifier->i_component_tag : -1;
            describeAudience(*es, component);
            service.components.push_back(component);
        }
    }
    const uint16_t pcr = pmt.i_pcr_pid;
    service.pcrPid = pcr;
    if (service.hasPicture() && pcr != NO_PCR &&
        std::find(service.avPids.begin(), service.avPids.end(), pcr) == service.avPids.end())
        service.avPids.push_back(pcr);
}

// A service's PMT, read by libdvbpsi's decoder from the packets of its PID. The first table
// describes the service, as it would for a receiver tuning in.
class PmtReader {
public:
    explicit PmtReader(Service& service) : service(service), handle(dvbpsi_new(nullptr, DVBPSI_MSG_NONE))
    {
        handle->p_sys = this;
        dvbpsi_pmt_attach(handle, service.serviceId, describe, this);
        decode = handle->p_decoder->pf_gather;
        handle->p_decoder->pf_gather = decodeIfSound;
    }
    ~PmtReader()
    {
        dvbpsi_pmt_detach(handle);
        dvbpsi_delete(handle);
    }
    PmtReader(const PmtReader&) = delete;
    PmtReader& operator=(const PmtReader&) = delete;

    void push(uint8_t* packet)
    {
        if (!described && ((packet[1] & 0x1F) << 8 | packet[2]) == service.pmtPid)
            dvbpsi_packet_push(handle, packet);
    }

private:
    // The decoder takes program_info_length on trust, and reads past the section where it
    // runs beyond: such a section goes no further.
    static void decodeIfSound(dvbpsi_t* handle, dvbpsi_psi_section_t* section)
    {
        const uint8_t* payload = section->p_payload_start;
        const ptrdiff_t size = section->p_payload_end - payload;
        if (size >= 4 && 4 + ((payload[2] & 0x0F) << 8 | payload[3]) <= size)
            static_cast<PmtReader*>(handle->p_sys)->decode(handle, section);
        else
            dvbpsi_DeletePSISections(section);
    }
    static void describe(void* self, dvbpsi_pmt_t* pmt)
    {
        auto* reader = static_cast<PmtReader*>(self);
        if (!reader->described)
            describeStreams(*pmt, reader->service);
        reader->described = true;
        dvbpsi_pmt_delete(pmt);
    }

    Service& service;
    dvbpsi_t* handle;
    dvbpsi_callback_gather_t decode = nullptr;
    bool described = false;
};

}  // namespace

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
    std::vector<Service> services;
    for (const TransportStream::Program& program : stream.programs()) {
        Service service{program.number, program.pmtPid, "", "", {}, {}, {}, {}, {}, {}};
        auto name = stream.serviceNames().find(program.number);
        if (name != stream.serviceNames().end()) {
            service.name = name->second.name;
            service.provider = name->second.provider;
        }
        services.push_back(service);
    }
    std::vector<std::unique_ptr<PmtReader>> readers;
    for (Service& service : services)
        readers.push_back(std::make_unique<PmtReader>(service));
    stream.forEachPacket([&](uint8_t* packet, size_t) {
        for (const auto& reader : readers)
            reader->push(packet);
    });
    return services;
}
