#ifndef TESMO_HBBTV_MAKESAMPLE_SAMPLEWRITER_H
#define TESMO_HBBTV_MAKESAMPLE_SAMPLEWRITER_H

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "SampleDescription.h"

// One section of the sample on its PID, in playout order.
using PlayedSection = std::pair<uint16_t, tesmo_test::Bytes>;

struct SampleStream {
    std::vector<PlayedSection> sections;
    std::vector<tesmo_test::Bytes> avPackets;  // the services' audio and video, after the first round
};

// The sections of a described sample: PAT, PMTs and SDT, each service's AIT, object carousel
// (its files read from the description's directory) and stream descriptors, as many times
// as the description repeats them, and the audio and video a service takes from a file.
// False, with the reason, for anything a stream cannot carry: a section over its size, a
// carousel file that is not a readable regular file or that its module cannot hold, a file
// named twice, audio and video that cannot be read or whose PIDs are taken.
bool writeSample(const SampleDescription& sample, SampleStream& stream, std::string& error);

#endif
