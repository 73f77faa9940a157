#include "TsSections.h"

#include <cstdio>
#include <memory>

extern "C" {
#include <dvbpsi/dvbpsi.h>
#include <dvbpsi/psi.h>
}

namespace tesmo_test {

namespace {

const size_t PACKET_SIZE = 188;
const int MAX_SECTION_SIZE = 4096;

void gatherSection(dvbpsi_t* handle, dvbpsi_psi_section_t* section)
{
    auto* sections = static_cast<std::vector<Bytes>*>(handle->p_sys);
    for (dvbpsi_psi_section_t* s = section; s; s = s->p_next)
        sections->emplace_back(s->p_data, s->p_data + 3 + s->i_length);
    dvbpsi_DeletePSISections(section);
}

struct HandleDeleter {
    void operator()(dvbpsi_t* handle) const
    {
        dvbpsi_decoder_delete(handle->p_decoder);
        handle->p_decoder = nullptr;
        dvbpsi_delete(handle);
    }
};

}  // namespace

std::vector<Bytes> sectionsOnPid(const std::string& path, uint16_t pid)
{
    std::vector<Bytes> sections;
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
    if (!file)
        return sections;
    std::unique_ptr<dvbpsi_t, HandleDeleter> handle(dvbpsi_new(nullptr, DVBPSI_MSG_NONE));
    handle->p_sys = &sections;
    handle->p_decoder = static_cast<dvbpsi_decoder_t*>(
        dvbpsi_decoder_new(gatherSection, MAX_SECTION_SIZE, true, sizeof(dvbpsi_decoder_t)));

    uint8_t packet[PACKET_SIZE];
    while (std::fread(packet, 1, PACKET_SIZE, file.get()) == PACKET_SIZE) {
        const uint16_t packetPid = uint16_t((packet[1] & 0x1F) << 8 | packet[2]);
        if (packet[0] == 0x47 && packetPid == pid)
            dvbpsi_packet_push(handle.get(), packet);
    }
    return sections;
}

}  // namespace tesmo_test
