#include "si/BitReaders.h"

namespace TesmoHbbTV {

uint8_t U8GetByte(const unsigned char* p)
{
    return p[0];
}

uint16_t U16GetShort(const unsigned char* p)
{
    return static_cast<uint16_t>(p[0] << 8 | p[1]);
}

uint32_t U32GetLong(const unsigned char* p)
{
    return uint32_t(p[0]) << 24 | uint32_t(p[1]) << 16 | uint32_t(p[2]) << 8 | uint32_t(p[3]);
}

uint8_t U8GetBits(const unsigned char* p, int first, int last)
{
    return static_cast<uint8_t>(((p[0] << first) & 0xFF) >> (7 - (last - first)));
}

uint16_t U16GetBits(const unsigned char* p, int first, int last)
{
    return static_cast<uint16_t>(((uint32_t(U16GetShort(p)) << first) & 0xFFFF) >> (15 - (last - first)));
}

uint32_t U32GetBits(const unsigned char* p, int first, int last)
{
    return (U32GetLong(p) << first) >> (31 - (last - first));
}

} // namespace TesmoHbbTV
