#include "si/ApplicationRecordingDescriptor.h"

namespace TesmoHbbTV {

ApplicationRecordingDescriptor::ApplicationRecordingDescriptor(SectionReader descriptor)
{
    const size_t end = 2 + size_t(descriptor.peek(1));
    size_t position = 2;  // of the next byte, counted from the tag byte
    SectionReader in = descriptor.at(position);

    const uint8_t flags = in.u8();
    if (!in.ok())
        return;
    scheduledRecording = flags & 0x80;
    trickModeAware = flags & 0x40;
    timeShift = flags & 0x20;
    dynamic = flags & 0x10;
    avSynced = flags & 0x08;
    initiatingReplay = flags & 0x04;

    const size_t labelCount = in.u8();
    position += 2;
    for (size_t i = 0; i < labelCount; ++i) {
        const size_t length = in.u8();
        ++position;
        if (!in.ok() || (length != 0 && position + length >= end))
            return;
        in.skip(length + 1);  // the label and its storage_properties byte
        position += length + 1;
    }

    const size_t tagCount = in.u8();
    ++position;
    if (!in.ok() || (tagCount != 0 && position + tagCount >= end))
        return;
    for (size_t i = 0; i < tagCount; ++i)
        componentTags.push_back(in.u8());
}

}  // namespace TesmoHbbTV
