#ifndef TESMO_TV_TIMELINETEXT_H
#define TESMO_TV_TIMELINETEXT_H

#include <cstdint>
#include <string>

// How the timeline writes numbers and applications.
namespace timelineText {

// "0x" and upper-case hexadecimal digits, at least width of them.
std::string hex(unsigned long long value, int width = 0);
// "0xORGANISATION.0xAPPLICATION".
std::string applicationName(uint32_t organisationId, uint16_t applicationId);

}  // namespace timelineText

#endif
