#ifndef TESMO_HBBTV_SI_SITEXT_H
#define TESMO_HBBTV_SI_SITEXT_H

#include <sys/time.h>

#include <string>

namespace TesmoHbbTV {

// Non-empty and nothing but the characters 0-9, a-f, A-F (no "0x", no sign).
bool isHexadecimalNumberString(const std::string& text);

// Adds microseconds with carry, by signed division: a negative sum leaves negative
// microseconds, as callers expect.
void usec_increase(timeval& tv, int usec);

}  // namespace TesmoHbbTV

#endif
