#ifndef TESMO_HBBTV_BINDINGS_KEYSET_H
#define TESMO_HBBTV_BINDINGS_KEYSET_H

#include <cstdint>

#include "tesmo_hbbtv/browser_core.h"

namespace TesmoHbbTV {

// The keys an application wants, as the HbbTV key-set bits.
class KeySet {
public:
    enum : int32_t {
        RED = 0x1,
        GREEN = 0x2,
        YELLOW = 0x4,
        BLUE = 0x8,
        NAVIGATION = 0x10,
        VCR = 0x20,
        SCROLL = 0x40,
        INFO = 0x80,
        NUMERIC = 0x100,
        ALPHA = 0x200
    };

    explicit KeySet(int value) : value(value) {}

    int getValue() const { return value; }
    // Keeps only what the platform supports; returns what was stored.
    int setValue(int newValue);
    bool matchesKey(DAXO_KEY_SYM key) const;

private:
    int32_t value;
};

}  // namespace TesmoHbbTV

#endif
