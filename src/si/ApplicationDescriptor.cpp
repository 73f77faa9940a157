#include "si/ApplicationDescriptor.h"

namespace TesmoHbbTV {

ApplicationDescriptor::ApplicationDescriptor(SectionReader descriptor)
{
    const size_t end = 2 + size_t(descriptor.peek(1));
    const size_t profilesLength = descriptor.peek(2);
    size_t position = 3;
    if (position + profilesLength > end)
        return;

    const size_t profilesEnd = position + profilesLength;
    for (; position + 5 <= profilesEnd; position += 5) {
        SectionReader in = descriptor.at(position);
        PlatformProfile profile;
        profile.applicationProfile = in.u16();
        profile.major = in.u8();
        profile.minor = in.u8();
        profile.micro = in.u8();
        profiles.push_back(profile);
    }

    // A remainder of the profiles that is not a whole entry is not skipped: the flags are
    // read from where the last whole entry ended, as receivers in the field do.
    SectionReader in = descriptor.at(position);
    const uint8_t flags = in.u8();
    const uint8_t signalledPriority = in.u8();
    if (!in.ok())
        return;
    serviceBound = (flags & 0x80) != 0;
    visibility = (flags >> 5) & 0x3;
    priority = signalledPriority;
    for (position += 2; position < end; ++position)
        transportProtocolLabels.push_back(descriptor.peek(position));
}

}  // namespace TesmoHbbTV
