#ifndef TESMO_HBBTV_MAKESAMPLE_TSWRITER_H
#define TESMO_HBBTV_MAKESAMPLE_TSWRITER_H

#include <cstdint>
#include <map>

#include "SectionBuilder.h"

// Cuts sections into 188-byte transport stream packets, one section per packet run, with
// a pointer field and the continuity counter of each PID.
class TsWriter {
public:
    void writeSection(uint16_t pid, const tesmo_test::Bytes& section);
    // A packet as it is (188 bytes, its own continuity).
    void writePacket(const tesmo_test::Bytes& packet);
    const tesmo_test::Bytes& bytes() const { return stream; }

private:
    tesmo_test::Bytes stream;
    std::map<uint16_t, uint8_t> continuity;
};

#endif
