#ifndef TESMO_HBBTV_SI_APPLICATIONDESCRIPTOR_H
#define TESMO_HBBTV_SI_APPLICATIONDESCRIPTOR_H

#include <cstdint>

#include "si/PlatformProfile.h"
#include "si/SectionReader.h"
#include "support/SmallVector.h"

namespace TesmoHbbTV {

// The application descriptor (tag 0x00) of one application entry.
class ApplicationDescriptor {
public:
    enum Visibility : uint32_t { NOT_VISIBLE_ALL = 0, NOT_VISIBLE_USERS = 1, VISIBLE_ALL = 3 };

    ApplicationDescriptor() = default;
    // descriptor starts at the tag byte.
    explicit ApplicationDescriptor(SectionReader descriptor);

    SmallVector<PlatformProfile, 2> profiles;
    SmallVector<uint8_t, 4> transportProtocolLabels;
    bool serviceBound = false;
    uint8_t priority = 0;
    uint32_t visibility = NOT_VISIBLE_ALL;
};

}  // namespace TesmoHbbTV

#endif
