#include "TsWriter.h"

#include <algorithm>

namespace {
const size_t PACKET = 188;
}

void TsWriter::writeSection(uint16_t pid, const tesmo_test::Bytes& section)
{
    size_t offset = 0;
    bool first = true;
    while (offset < section.size()) {
        tesmo_test::Bytes packet{0x47, uint8_t((first ? 0x40 : 0x00) | (pid >> 8)), uint8_t(pid),
                                 uint8_t(0x10 | (continuity[pid]++ & 0x0F))};
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

void TsWriter::writePacket(const tesmo_test::Bytes& packet)
{
    stream.insert(stream.end(), packet.begin(), packet.end());
}
