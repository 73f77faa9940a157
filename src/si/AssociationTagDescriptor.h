#ifndef TESMO_HBBTV_SI_ASSOCIATIONTAGDESCRIPTOR_H
#define TESMO_HBBTV_SI_ASSOCIATIONTAGDESCRIPTOR_H

#include "si/Descriptor.h"

namespace TesmoHbbTV {

// Kept for its presence only.
struct AssociationTagDescriptor : Descriptor {
    static const uint8_t TAG = 0x14;
    AssociationTagDescriptor() : Descriptor(TAG) {}
};

}  // namespace TesmoHbbTV

#endif
