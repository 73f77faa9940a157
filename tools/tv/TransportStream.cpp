#include "TransportStream.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <memory>

extern "C" {
#include <dvbpsi/dvbpsi.h>
#include <dvbpsi/psi.h>
#include <dvbpsi/demux.h>
#include <dvbpsi/descriptor.h>
#include <dvbpsi/pat.h>
#include <dvbpsi/sdt.h>
#include <dvbpsi/nit.h>
#include <dvbpsi/dr_40.h>
#include <dvbpsi/dr_48.h>
}

#include "DvbText.h"
#include "SectionLoops.h"

namespace {

const uint8_t SYNC = 0x47;
const uint16_t PAT_PID = 0x0000;
const uint16_t NIT_PID = 0x0010;
const uint16_t SDT_PID = 0x0011;
const uint8_t NIT_ACTUAL = 0x40;
const uint8_t NETWORK_NAME_TAG = 0x40;
const int MAX_SECTION = 4096;
const size_t PROBE_SIZE = 64 * 1024;  // enough to find the packet size
const size_t PACKETS_PER_READ = 4096;

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

}  // namespace

bool TransportStream::open(const std::string& file, std::string& error)
{
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        error = "cannot read " + file + ": " + std::strerror(errno);
        return false;
    }
    Bytes head(PROBE_SIZE);
    in.read(reinterpret_cast<char*>(head.data()), std::streamsize(head.size()));
    head.resize(size_t(in.gcount()));
    // Each size with the offset of the sync byte inside its packet.
    const std::pair<size_t, size_t> layouts[] = {{188, 0}, {192, 4}, {204, 0}};
    for (const auto& layout : layouts) {
        if (findSync(head, layout.first, layout.second, start)) {
            size = layout.first;
            break;
        }
    }
    if (size == 0) {
        error = file + " is not an MPEG-2 transport stream (no 188, 192 or 204-byte packets)";
        return false;
    }
    path = file;
    readServiceInformation();
    return true;
}

void TransportStream::forEachPacket(const std::function<void(uint8_t* packet, size_t index)>& visit) const
{
    std::ifstream in(path, std::ios::binary);
    in.seekg(std::streamoff(start));
    Bytes chunk(size * PACKETS_PER_READ);  // whole packets, so that none straddles two reads
    size_t index = 0;
    while (in) {
        in.read(reinterpret_cast<char*>(chunk.data()), std::streamsize(chunk.size()));
        const size_t got = size_t(in.gcount());
        for (size_t at = 0; at + 188 <= got; at += size)
            if (chunk[at] == SYNC)
                visit(&chunk[at], index++);
    }
}

std::vector<TimedSection> TransportStream::sectionsOnPid(uint16_t pid) const
{
    return sectionsOnPids({pid})[pid];
}

std::map<uint16_t, std::vector<TimedSection>> TransportStream::sectionsOnPids(const std::set<uint16_t>& pids) const
{
    std::map<uint16_t, std::vector<TimedSection>> sections;
    std::map<uint16_t, RawCollector> collectors;
    std::map<uint16_t, Handle> handles;
    for (uint16_t pid : pids) {
        collectors[pid] = RawCollector{&sections[pid], 0};
        Handle handle = newHandle();
        handle->p_sys = &collectors[pid];
        handle->p_decoder =
            static_cast<dvbpsi_decoder_t*>(dvbpsi_decoder_new(gatherRaw, MAX_SECTION, true, sizeof(dvbpsi_decoder_t)));
        handles[pid] = std::move(handle);
    }
    forEachPacket([&](uint8_t* packet, size_t index) {
        auto found = handles.find(pidOf(packet));
        if (found == handles.end())
            return;
        collectors[found->first].packet = index;
        dvbpsi_packet_push(found->second.get(), packet);
    });
    for (auto& entry : handles) {
        dvbpsi_decoder_delete(entry.second->p_decoder);
        entry.second->p_decoder = nullptr;
    }
    return sections;
}

void TransportStream::attachPat(dvbpsi_s* handle)
{
    dvbpsi_pat_attach(
        handle,
        [](void* self, dvbpsi_pat_t* table) {
            auto* stream = static_cast<TransportStream*>(self);
            if (stream->patPrograms.empty()) {
                stream->tsid = table->i_ts_id;
                for (dvbpsi_pat_program_t* p = table->p_first_program; p; p = p->p_next)
                    if (p->i_number != 0)
                        stream->patPrograms.push_back({p->i_number, p->i_pid});
            }
            dvbpsi_pat_delete(table);
        },
        this);
}

void TransportStream::attachSdt(dvbpsi_s* handle)
{
    dvbpsi_AttachDemux(
        handle,
        [](dvbpsi_t* h, uint8_t tableId, uint16_t extension, void* self) {
            if (tableId != 0x42)  // the SDT of this transport stream
                return;
            dvbpsi_sdt_attach(
                h, tableId, extension,
                [](void* me, dvbpsi_sdt_t* table) {
                    auto* stream = static_cast<TransportStream*>(me);
                    stream->onid = table->i_network_id;
                    for (dvbpsi_sdt_service_t* s = table->p_first_service; s; s = s->p_next)
                        for (dvbpsi_descriptor_t* d = s->p_first_descriptor; d; d = d->p_next)
                            if (d->i_tag == 0x48)
                                if (dvbpsi_service_dr_t* service = dvbpsi_DecodeServiceDr(d))
                                    stream->names[s->i_service_id] = {
                                        descriptorText(service->i_service_provider_name,
                                                       service->i_service_provider_name_length),
                                        descriptorText(service->i_service_name, service->i_service_name_length)};
                    dvbpsi_sdt_delete(table);
                },
                self);
        },
        this);
}

namespace {

// What the NIT actual tells: its network, and the original network of each transport stream.
struct NetworkReading {
    bool read = false;
    uint16_t networkId = 0;
    std::string name;
    std::map<uint16_t, uint16_t> networkOfStream;
};

void readNit(NetworkReading& reading, const dvbpsi_nit_t& table)
{
    for (dvbpsi_descriptor_t* d = table.p_first_descriptor; d && !reading.read; d = d->p_next)
        if (d->i_tag == NETWORK_NAME_TAG)
            if (const dvbpsi_network_name_dr_t* name = dvbpsi_DecodeNetworkNameDr(d))
                reading.name = descriptorText(name->i_name_byte, name->i_name_length);
    if (!reading.read)
        reading.networkId = table.i_network_id;
    reading.read = true;
    for (const dvbpsi_nit_ts_t* ts = table.p_first_ts; ts; ts = ts->p_next)
        reading.networkOfStream[ts->i_ts_id] = ts->i_orig_network_id;
}

// The NIT decoder takes the loops' lengths on trust, and reads past the section where they
// run beyond: such a section goes no further.
void gatherSoundNit(dvbpsi_t* handle, dvbpsi_psi_section_t* section)
{
    if (section->i_table_id == NIT_ACTUAL && sectionLoops::nitFits(section->p_data, 3 + size_t(section->i_length)))
        dvbpsi_Demux(handle, section);
    else
        dvbpsi_DeletePSISections(section);
}

void attachNit(dvbpsi_t* handle, NetworkReading& reading)
{
    dvbpsi_AttachDemux(
        handle,
        [](dvbpsi_t* h, uint8_t tableId, uint16_t extension, void* self) {
            if (tableId != NIT_ACTUAL)
                return;
            dvbpsi_nit_attach(
                h, tableId, extension,
                [](void* me, dvbpsi_nit_t* table) {
                    readNit(*static_cast<NetworkReading*>(me), *table);
                    dvbpsi_nit_delete(table);
                },
                self);
        },
        &reading);
    handle->p_decoder->pf_gather = gatherSoundNit;
}

}  // namespace

// PAT, SDT and NIT in one reading, which also counts the packets. The NIT names the network,
// and the original network when no SDT does; which of its entries is ours is known once the
// PAT is.
void TransportStream::readServiceInformation()
{
    Handle pat = newHandle();
    attachPat(pat.get());
    Handle sdt = newHandle();
    attachSdt(sdt.get());
    NetworkReading nitReading;
    Handle nit = newHandle();
    attachNit(nit.get(), nitReading);
    forEachPacket([&](uint8_t* packet, size_t index) {
        count = index + 1;
        switch (pidOf(packet)) {
        case PAT_PID:
            dvbpsi_packet_push(pat.get(), packet);
            break;
        case SDT_PID:
            dvbpsi_packet_push(sdt.get(), packet);
            break;
        case NIT_PID:
            dvbpsi_packet_push(nit.get(), packet);
            break;
        default:
            break;
        }
    });
    dvbpsi_pat_detach(pat.get());
    dvbpsi_DetachDemux(sdt.get());
    dvbpsi_DetachDemux(nit.get());
    if (onid == 0 && nitReading.networkOfStream.count(tsid))
        onid = nitReading.networkOfStream[tsid];
    nid = nitReading.networkId;
    network = nitReading.name;
}
