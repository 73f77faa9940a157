#ifndef TESMO_HBBTV_SI_BITREADERS_H
#define TESMO_HBBTV_SI_BITREADERS_H

#include <cstdint>

namespace TesmoHbbTV {

// Big-endian readers of raw section bytes. Bits are numbered from the most significant bit
// (bit 0); both ends of a range are inclusive. They check no bounds: callers read through
// SectionReader, which does.
// Inline: the parsers call them for every field.
inline uint8_t U8GetByte(const unsigned char* p)
{
    return p[0];
}

inline uint16_t U16GetShort(const unsigned char* p)
{
    return static_cast<uint16_t>(p[0] << 8 | p[1]);
}

inline uint32_t U32GetLong(const unsigned char* p)
{
    return uint32_t(p[0]) << 24 | uint32_t(p[1]) << 16 | uint32_t(p[2]) << 8 | uint32_t(p[3]);
}

inline uint8_t U8GetBits(const unsigned char* p, int first, int last)
{
    return static_cast<uint8_t>(((p[0] << first) & 0xFF) >> (7 - (last - first)));
}

inline uint16_t U16GetBits(const unsigned char* p, int first, int last)
{
    return static_cast<uint16_t>(((uint32_t(U16GetShort(p)) << first) & 0xFFFF) >> (15 - (last - first)));
}

}  // namespace TesmoHbbTV

#endif
