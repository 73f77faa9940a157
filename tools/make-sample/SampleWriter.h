#ifndef TESMO_HBBTV_MAKESAMPLE_SAMPLEWRITER_H
#define TESMO_HBBTV_MAKESAMPLE_SAMPLEWRITER_H

#include <cstdint>
#include <string>
#include <vector>

#include "SampleDescription.h"

// One section, or one PES packet, of the sample on its PID, in playout order.
struct PlayedUnit {
    uint16_t pid;
    tesmo_test::Bytes bytes;
    bool isPes = false;
};

struct SampleStream {
    std::vector<PlayedUnit> units;  // round after round, each round alike
    std::vector<tesmo_test::Bytes> avPackets;  // the services' audio and video, after the first round
};

// The sections of a described sample: PAT, PMTs and SDT, each service's AIT, object carousel
// (its files read from the description's directory), stream descriptors and subtitles, the
// NIT and the services' EIT present/following (the version of each round), as many times as
// the description repeats them, and the audio and video a service takes from a file.
// False, with the reason, for anything a stream cannot carry: a section over its size, a
// carousel file that is not a readable regular file or that its module cannot hold, a file
// named twice, audio and video that cannot be read or whose PIDs are taken, more component
// tags given than streams.
bool writeSample(const SampleDescription& sample, SampleStream& stream, std::string& error);

#endif
