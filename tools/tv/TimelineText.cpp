#include "TimelineText.h"

#include <cstdio>

namespace timelineText {

std::string hex(unsigned long long value, int width)
{
    char text[32];
    std::snprintf(text, sizeof text, "0x%0*llX", width, value);
    return text;
}

std::string applicationName(uint32_t organisationId, uint16_t applicationId)
{
    return hex(organisationId) + "." + hex(applicationId);
}

}  // namespace timelineText
