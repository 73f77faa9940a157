#ifndef TESMO_HBBTV_SI_CAROUSELIDENTIFIERDESCRIPTOR_H
#define TESMO_HBBTV_SI_CAROUSELIDENTIFIERDESCRIPTOR_H

#include "si/Descriptor.h"

namespace TesmoHbbTV {

struct CarouselIdentifierDescriptor : Descriptor {
    static const uint8_t TAG = 0x13;
    explicit CarouselIdentifierDescriptor(uint32_t carouselId) : Descriptor(TAG), carousel_id(carouselId) {}
    bool equals(const CarouselIdentifierDescriptor* other) const { return other && other->carousel_id == carousel_id; }
    uint32_t carousel_id;
};

}  // namespace TesmoHbbTV

#endif
