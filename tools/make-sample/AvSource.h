#ifndef TESMO_HBBTV_MAKESAMPLE_AVSOURCE_H
#define TESMO_HBBTV_MAKESAMPLE_AVSOURCE_H

#include <cstdint>
#include <string>
#include <vector>

#include "SectionBuilder.h"

// The video and audio of a transport stream file (as GStreamer's muxer writes one) for a
// service of the sample: the elementary streams of its first program, moved to PIDs from
// firstPid on in their order with the languages its PMT gives them (their ISO 639 language
// descriptors), their packets as they come, the PCR on its stream's new PID.
struct AvSource {
    std::vector<tesmo_test::Stream> streams;  // for the service's PMT
    uint16_t pcrPid = 0x1FFF;
    uint64_t clockStart = 0;  // the first PCR's 90 kHz base; 0 without one
    std::vector<tesmo_test::Bytes> packets;  // 188 bytes each

    // False with the reason: not a readable 188-byte stream, no program, no audio or video,
    // a PID past the last, or more than maxBytes.
    bool read(const std::string& path, uint16_t firstPid, size_t maxBytes, std::string& error);
};

#endif
