#include "TsWriter.h"

#include <algorithm>

namespace {
const size_t PACKET = 188;
const size_t PAYLOAD = PACKET - 4;
}  // namespace

tesmo_test::Bytes TsWriter::header(uint16_t pid, bool start, size_t stuffing)
{
    tesmo_test::Bytes packet{0x47, uint8_t((start ? 0x40 : 0x00) | (pid >> 8)), uint8_t(pid),
                             uint8_t((stuffing ? 0x30 : 0x10) | (continuity[pid]++ & 0x0F))};
    if (stuffing) {
        packet.push_back(uint8_t(stuffing - 1));  // adaptation_field_length
        if (stuffing > 1)
            packet.push_back(0x00);  // no flags
        packet.resize(packet.size() + (stuffing > 2 ? stuffing - 2 : 0), 0xFF);
    }
    return packet;
}

void TsWriter::writeSection(uint16_t pid, const tesmo_test::Bytes& section)
{
    size_t offset = 0;
    bool first = true;
    while (offset < section.size()) {
        tesmo_test::Bytes packet = header(pid, first, 0);
        if (first)
            packet.push_back(0x00);  // pointer field: the section starts right away
        const size_t room = PACKET - packet.size();
        const size_t take = std::min(room, section.size() - offset);
        packet.insert(packet.end(), section.begin() + long(offset), section.begin() + long(offset + take));
        packet.resize(PACKET, 0xFF);
        stream.insert(stream.end(), packet.begin(), packet.end());
        offset += take;
        first = false;
    }
}

void TsWriter::writePes(uint16_t pid, const tesmo_test::Bytes& pes)
{
    for (size_t offset = 0; offset < pes.size();) {
        const size_t take = std::min(PAYLOAD, pes.size() - offset);
        const tesmo_test::Bytes packet = header(pid, offset == 0, PAYLOAD - take);
        stream.insert(stream.end(), packet.begin(), packet.end());
        stream.insert(stream.end(), pes.begin() + long(offset), pes.begin() + long(offset + take));
        offset += take;
    }
}

void TsWriter::writePacket(const tesmo_test::Bytes& packet)
{
    stream.insert(stream.end(), packet.begin(), packet.end());
}
