#ifndef TESMO_HBBTV_SI_STREAMIDENTIFIERDESCRIPTOR_H
#define TESMO_HBBTV_SI_STREAMIDENTIFIERDESCRIPTOR_H

#include "si/Descriptor.h"

namespace TesmoHbbTV {

struct StreamIdentifierDescriptor : Descriptor {
    static const uint8_t TAG = 0x52;
    explicit StreamIdentifierDescriptor(uint8_t componentTag) : Descriptor(TAG), component_tag(componentTag) {}
    uint8_t getComponentTag() const { return component_tag; }
    uint8_t component_tag;
};

}  // namespace TesmoHbbTV

#endif
