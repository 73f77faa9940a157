#ifndef TESMO_HBBTV_SI_DEFERREDASSOCIATIONTAGSDESCRIPTOR_H
#define TESMO_HBBTV_SI_DEFERREDASSOCIATIONTAGSDESCRIPTOR_H

#include "si/Descriptor.h"

namespace TesmoHbbTV {

// Kept for its presence only.
struct DeferredAssociationTagsDescriptor : Descriptor {
    static const uint8_t TAG = 0x15;
    DeferredAssociationTagsDescriptor() : Descriptor(TAG) {}
};

}  // namespace TesmoHbbTV

#endif
