#include "DvbTime.h"

#include <cstdio>

namespace {

const int64_t SECONDS_A_DAY = 86400;
const int64_t MJD_OF_1970 = 40587;

// A BCD byte's value, if both digits are decimal and it is at most limit.
bool bcd(uint32_t byte, unsigned limit, unsigned& value)
{
    const unsigned high = byte >> 4 & 0x0F, low = byte & 0x0F;
    value = high * 10 + low;
    return high <= 9 && low <= 9 && value <= limit;
}

// Hours, minutes and seconds in the low 24 bits.
bool bcdTime(uint32_t field, unsigned maxHours, uint32_t& seconds)
{
    unsigned hours = 0, minutes = 0, secs = 0;
    if (!bcd(field >> 16, maxHours, hours) || !bcd(field >> 8, 59, minutes) || !bcd(field, 59, secs))
        return false;
    seconds = hours * 3600 + minutes * 60 + secs;
    return true;
}

}  // namespace

namespace dvbTime {

bool startTime(uint64_t field, int64_t& seconds)
{
    uint32_t time = 0;
    if (!bcdTime(uint32_t(field), 23, time))
        return false;
    seconds = (int64_t(field >> 24 & 0xFFFF) - MJD_OF_1970) * SECONDS_A_DAY + time;
    return true;
}

bool duration(uint32_t field, uint32_t& seconds)
{
    return bcdTime(field, 99, seconds);
}

std::string clock(int64_t seconds)
{
    const int64_t ofDay = (seconds % SECONDS_A_DAY + SECONDS_A_DAY) % SECONDS_A_DAY;
    char text[8];
    std::snprintf(text, sizeof text, "%02d:%02d", int(ofDay / 3600), int(ofDay / 60 % 60));
    return text;
}

}  // namespace dvbTime
