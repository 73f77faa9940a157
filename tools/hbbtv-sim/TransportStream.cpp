#include "TransportStream.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>

extern "C" {
#include <dvbpsi/dvbpsi.h>
#include <dvbpsi/psi.h>
#include <dvbpsi/demux.h>
#include <dvbpsi/descriptor.h>
#include <dvbpsi/pat.h>
#include <dvbpsi/sdt.h>
#include <dvbpsi/nit.h>
#include <dvbpsi/dr_48.h>
}

#include "DvbText.h"

namespace {

const uint8_t SYNC = 0x47;
const uint16_t PAT_PID = 0x0000;
const uint16_t NIT_PID = 0x0010;
const uint16_t SDT_PID = 0x0011;
const int MAX_SECTION = 4096;

uint16_t pidOf(const uint8_t* packet)
{
    return uint16_t((packet[1] & 0x1F) << 8 | packet[2]);
}

// Where the sync bytes of consecutive packets of that size start, if they do.
bool findSync(const Bytes& data, size_t size, size_t syncOffset, size_t& start)
{
    const size_t needed = std::min<size_t>(5, data.size() / size);
    if (needed == 0)
        return false;
    for (start = syncOffset; start < size + syncOffset && start < data.size(); ++start) {
        bool all = true;
        for (size_t i = 0; i < needed && all; ++i)
            all = start + i * size < data.size() && data[start + i * size] == SYNC;
        if (all)
            return true;
    }
    return false;
}

struct HandleDeleter {
    void operator()(dvbpsi_t* handle) const { dvbpsi_delete(handle); }
};
using Handle = std::unique_ptr<dvbpsi_t, HandleDeleter>;

Handle newHandle()
{
    return Handle(dvbpsi_new(nullptr, DVBPSI_MSG_NONE));
}

struct RawCollector {
    std::vector<TimedSection>* sections;
    size_t packet;
};

void gatherRaw(dvbpsi_t* handle, dvbpsi_psi_section_t* section)
{
    auto* collector = static_cast<RawCollector*>(handle->p_sys);
    for (dvbpsi_psi_section_t* s = section; s; s = s->p_next)
        collector->sections->push_back({collector->packet, Bytes(s->p_data, s->p_data + 3 + s->i_length)});
    dvbpsi_DeletePSISections(section);
}

std::string descriptorText(const uint8_t* text, uint8_t length)
{
    return dvbTextToUtf8(std::string(reinterpret_cast<const char*>(text), length));
}

} // namespace

bool TransportStream::open(const std::string& path, std::string& error)
{
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        error = "cannot read " + path + ": " + std::strerror(errno);
        return false;
    }
    data.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    // Each size with the offset of the sync byte inside its packet.
    const std::pair<size_t, size_t> layouts[] = {{188, 0}, {192, 4}, {204, 0}};
    size_t start = 0;
    for (const auto& layout : layouts) {
        if (findSync(data, layout.first, layout.second, start)) {
            size = layout.first;
            break;
        }
    }
    if (size == 0) {
        error = path + " is not an MPEG-2 transport stream (no 188, 192 or 204-byte packets)";
        return false;
    }
    for (size_t at = start; at + 188 <= data.size(); at += size)
        if (data[at] == SYNC)
            packets.push_back(&data[at]);
    readPat();
    readSdt();
    readNit();
    return true;
}

std::vector<TimedSection> TransportStream::sectionsOnPid(uint16_t pid) const
{
    std::vector<TimedSection> sections;
    RawCollector collector{&sections, 0};
    Handle handle = newHandle();
    handle->p_sys = &collector;
    handle->p_decoder =
        static_cast<dvbpsi_decoder_t*>(dvbpsi_decoder_new(gatherRaw, MAX_SECTION, true, sizeof(dvbpsi_decoder_t)));
    for (size_t i = 0; i < packets.size(); ++i) {
        if (pidOf(packets[i]) != pid)
            continue;
        collector.packet = i;
        dvbpsi_packet_push(handle.get(), const_cast<uint8_t*>(packets[i]));
    }
    dvbpsi_decoder_delete(handle->p_decoder);
    handle->p_decoder = nullptr;
    return sections;
}

void TransportStream::pushPackets(dvbpsi_t* handle, uint16_t pid) const
{
    for (const uint8_t* packet : packets)
        if (pidOf(packet) == pid)
            dvbpsi_packet_push(handle, const_cast<uint8_t*>(packet));
}

void TransportStream::readPat()
{
    Handle handle = newHandle();
    dvbpsi_pat_attach(
        handle.get(),
        [](void* self, dvbpsi_pat_t* pat) {
            auto* stream = static_cast<TransportStream*>(self);
            if (stream->patPrograms.empty()) {
                stream->tsid = pat->i_ts_id;
                for (dvbpsi_pat_program_t* p = pat->p_first_program; p; p = p->p_next)
                    if (p->i_number != 0)
                        stream->patPrograms.push_back({p->i_number, p->i_pid});
            }
            dvbpsi_pat_delete(pat);
        },
        this);
    pushPackets(handle.get(), PAT_PID);
    dvbpsi_pat_detach(handle.get());
}

void TransportStream::readSdt()
{
    Handle handle = newHandle();
    dvbpsi_AttachDemux(
        handle.get(),
        [](dvbpsi_t* h, uint8_t tableId, uint16_t extension, void* self) {
            if (tableId != 0x42)  // the SDT of this transport stream
                return;
            dvbpsi_sdt_attach(
                h, tableId, extension,
                [](void* me, dvbpsi_sdt_t* sdt) {
                    auto* stream = static_cast<TransportStream*>(me);
                    stream->onid = sdt->i_network_id;
                    for (dvbpsi_sdt_service_t* s = sdt->p_first_service; s; s = s->p_next)
                        for (dvbpsi_descriptor_t* d = s->p_first_descriptor; d; d = d->p_next)
                            if (d->i_tag == 0x48)
                                if (dvbpsi_service_dr_t* service = dvbpsi_DecodeServiceDr(d))
                                    stream->names[s->i_service_id] = {
                                        descriptorText(service->i_service_provider_name, service->i_service_provider_name_length),
                                        descriptorText(service->i_service_name, service->i_service_name_length)};
                    dvbpsi_sdt_delete(sdt);
                },
                self);
        },
        this);
    pushPackets(handle.get(), SDT_PID);
    dvbpsi_DetachDemux(handle.get());
}

void TransportStream::readNit()
{
    if (onid != 0)
        return;
    Handle handle = newHandle();
    dvbpsi_AttachDemux(
        handle.get(),
        [](dvbpsi_t* h, uint8_t tableId, uint16_t extension, void* self) {
            if (tableId != 0x40)  // the NIT of this network
                return;
            dvbpsi_nit_attach(
                h, tableId, extension,
                [](void* me, dvbpsi_nit_t* nit) {
                    auto* stream = static_cast<TransportStream*>(me);
                    for (dvbpsi_nit_ts_t* ts = nit->p_first_ts; ts; ts = ts->p_next)
                        if (ts->i_ts_id == stream->tsid)
                            stream->onid = ts->i_orig_network_id;
                    dvbpsi_nit_delete(nit);
                },
                self);
        },
        this);
    pushPackets(handle.get(), NIT_PID);
    dvbpsi_DetachDemux(handle.get());
}
