#ifndef TESMO_HBBTV_MAKESAMPLE_TSWRITER_H
#define TESMO_HBBTV_MAKESAMPLE_TSWRITER_H

#include <cstdint>
#include <map>

#include "SectionBuilder.h"

// Cuts sections and PES packets into 188-byte transport stream packets, each in a packet run
// of its own that starts with the payload unit start indicator, with the continuity counter
// of each PID. A section is behind a pointer field and its last packet padded with 0xFF; a
// PES packet's last packet is padded in its adaptation field.
class TsWriter {
public:
    void writeSection(uint16_t pid, const tesmo_test::Bytes& section);
    void writePes(uint16_t pid, const tesmo_test::Bytes& pes);
    // A packet as it is (188 bytes, its own continuity).
    void writePacket(const tesmo_test::Bytes& packet);
    const tesmo_test::Bytes& bytes() const { return stream; }

private:
    // The packet header: payload only, or with an adaptation field when it has stuffing.
    tesmo_test::Bytes header(uint16_t pid, bool start, size_t stuffing);

    tesmo_test::Bytes stream;
    std::map<uint16_t, uint8_t> continuity;
};

#endif
