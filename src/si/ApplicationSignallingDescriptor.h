#ifndef TESMO_HBBTV_SI_APPLICATIONSIGNALLINGDESCRIPTOR_H
#define TESMO_HBBTV_SI_APPLICATIONSIGNALLINGDESCRIPTOR_H

#include "si/Descriptor.h"

namespace TesmoHbbTV {

// Kept for its presence only.
struct ApplicationSignallingDescriptor : Descriptor {
    static const uint8_t TAG = 0x6F;
    ApplicationSignallingDescriptor() : Descriptor(TAG) {}
};

}  // namespace TesmoHbbTV

#endif
