#ifndef TESMO_HBBTV_SI_BITREADERS_H
#define TESMO_HBBTV_SI_BITREADERS_H

#include <cstdint>

namespace TesmoHbbTV {

// Big-endian readers of raw section bytes. Bits are numbered from the most significant bit
// (bit 0); both ends of a range are inclusive. They check no bounds: callers read through
// SectionReader, which does.
uint8_t U8GetByte(const unsigned char* p);
uint16_t U16GetShort(const unsigned char* p);
uint32_t U32GetLong(const unsigned char* p);
uint8_t U8GetBits(const unsigned char* p, int first, int last);
uint16_t U16GetBits(const unsigned char* p, int first, int last);
uint32_t U32GetBits(const unsigned char* p, int first, int last);

} // namespace TesmoHbbTV

#endif
