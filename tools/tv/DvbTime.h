#ifndef TESMO_TV_DVBTIME_H
#define TESMO_TV_DVBTIME_H

#include <cstdint>
#include <string>

// The times of DVB's event tables, as libdvbpsi hands them over undecoded.
namespace dvbTime {

// An event's 40-bit start_time: the Modified Julian Date in 16 bits, then hours, minutes and
// seconds in BCD, as seconds since 1970 (UTC). False for a digit that is not BCD or a time of
// day past 23:59:59 (as in the all-ones "undefined" start).
bool startTime(uint64_t field, int64_t& seconds);
// A 24-bit duration: hours (up to 99), minutes and seconds in BCD. False as for startTime.
bool duration(uint32_t field, uint32_t& seconds);
// "HH:MM" of a time in seconds since 1970, UTC.
std::string clock(int64_t seconds);

}  // namespace dvbTime

#endif
