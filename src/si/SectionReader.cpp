#include "si/SectionReader.h"

#include "si/BitReaders.h"

namespace TesmoHbbTV {

bool SectionReader::take(size_t n)
{
    if (!canRead(n)) {
        failed = true;
        return false;
    }
    return true;
}

uint8_t SectionReader::u8()
{
    if (!take(1))
        return 0;
    return U8GetByte(cursor++);
}

uint16_t SectionReader::u16()
{
    if (!take(2))
        return 0;
    uint16_t value = U16GetShort(cursor);
    cursor += 2;
    return value;
}

uint32_t SectionReader::u32()
{
    if (!take(4))
        return 0;
    uint32_t value = U32GetLong(cursor);
    cursor += 4;
    return value;
}

uint8_t SectionReader::bits8(int first, int last)
{
    if (!take(1))
        return 0;
    return U8GetBits(cursor++, first, last);
}

uint16_t SectionReader::bits16(int first, int last)
{
    if (!take(2))
        return 0;
    uint16_t value = U16GetBits(cursor, first, last);
    cursor += 2;
    return value;
}

void SectionReader::skip(size_t n)
{
    if (take(n))
        cursor += n;
}

void SectionReader::appendTo(std::string& out, size_t n)
{
    if (!take(n))
        return;
    out.append(reinterpret_cast<const char*>(cursor), n);
    cursor += n;
}

uint8_t SectionReader::peek(size_t n) const
{
    return canRead(n + 1) ? cursor[n] : 0;
}

SectionReader SectionReader::at(size_t n) const
{
    SectionReader copy = *this;
    copy.skip(n);
    return copy;
}

SectionReader SectionReader::limit(size_t n) const
{
    SectionReader copy = *this;
    if (canRead(n))
        copy.end = cursor + n;
    return copy;
}

} // namespace TesmoHbbTV
