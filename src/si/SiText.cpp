#include "si/SiText.h"

namespace TesmoHbbTV {

bool isHexadecimalNumberString(const std::string& text)
{
    return !text.empty() && text.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
}

void usec_increase(timeval& tv, int usec)
{
    const long sum = static_cast<long>(tv.tv_usec) + usec;
    tv.tv_sec += sum / 1000000;
    tv.tv_usec = sum % 1000000;
}

}  // namespace TesmoHbbTV
