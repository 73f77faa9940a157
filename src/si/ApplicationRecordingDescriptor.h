#ifndef TESMO_HBBTV_SI_APPLICATIONRECORDINGDESCRIPTOR_H
#define TESMO_HBBTV_SI_APPLICATIONRECORDINGDESCRIPTOR_H

#include <cstdint>
#include <vector>

#include "si/SectionReader.h"

namespace TesmoHbbTV {

// The application recording descriptor (tag 0x06). An over-long part stops the reading;
// the flags stay.
class ApplicationRecordingDescriptor {
public:
    ApplicationRecordingDescriptor() = default;
    // descriptor starts at the tag byte.
    explicit ApplicationRecordingDescriptor(SectionReader descriptor);

    bool scheduledRecording = false;
    bool trickModeAware = false;
    bool timeShift = false;
    bool dynamic = false;
    bool avSynced = false;
    bool initiatingReplay = false;
    std::vector<uint8_t> componentTags;
};

}  // namespace TesmoHbbTV

#endif
