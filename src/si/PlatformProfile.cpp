#include "si/PlatformProfile.h"

namespace TesmoHbbTV {

bool PlatformProfile::isCompatible(unsigned short supportedProfiles, unsigned char terminalMajor,
                                   unsigned char terminalMinor, unsigned char terminalMicro) const
{
    if ((applicationProfile & supportedProfiles) != applicationProfile)
        return false;
    if (major != terminalMajor)
        return major < terminalMajor;
    if (minor != terminalMinor)
        return minor < terminalMinor;
    return micro <= terminalMicro;
}

}  // namespace TesmoHbbTV
