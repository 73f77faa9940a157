#ifndef TESMO_HBBTV_SI_DESCRIPTOR_H
#define TESMO_HBBTV_SI_DESCRIPTOR_H

#include <cstdint>

namespace TesmoHbbTV {

// Base of the PMT descriptors the library keeps.
struct Descriptor {
    explicit Descriptor(uint8_t tag) : tag(tag) {}
    uint8_t tag;
};

}  // namespace TesmoHbbTV

#endif
