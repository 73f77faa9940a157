#ifndef TESMO_HBBTV_SI_PLATFORMPROFILE_H
#define TESMO_HBBTV_SI_PLATFORMPROFILE_H

#include <cstdint>

namespace TesmoHbbTV {

// One entry of an application descriptor's application_profiles.
struct PlatformProfile {
    uint16_t applicationProfile = 0;
    uint8_t major = 0;
    uint8_t minor = 0;
    uint8_t micro = 0;

    // The profile needs no bit the terminal lacks, and its version is not above the terminal's.
    bool isCompatible(unsigned short supportedProfiles, unsigned char terminalMajor, unsigned char terminalMinor,
                      unsigned char terminalMicro) const;
};

}  // namespace TesmoHbbTV

#endif
