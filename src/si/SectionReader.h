#ifndef TESMO_HBBTV_SI_SECTIONREADER_H
#define TESMO_HBBTV_SI_SECTIONREADER_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "si/BitReaders.h"
#include "support/TailText.h"

namespace TesmoHbbTV {

// A cursor over broadcast bytes that knows where they end. Every read checks the bytes
// left; after the first read that does not fit, every further read fails too (the error is
// sticky) and yields 0, so a parser cannot wander past its buffer whatever a length field
// claims. Copies are cheap: a parser looks ahead with at() and narrows with limit().
class SectionReader {
public:
    SectionReader() = default;
    SectionReader(const unsigned char* data, size_t size) : cursor(data), end(data + size) {}

    bool ok() const { return !failed; }
    size_t remaining() const { return failed ? 0 : static_cast<size_t>(end - cursor); }
    bool canRead(size_t n) const { return n <= remaining(); }

    uint8_t u8() { return take(1) ? U8GetByte(advance(1)) : 0; }
    uint16_t u16() { return take(2) ? U16GetShort(advance(2)) : 0; }
    uint32_t u32() { return take(4) ? U32GetLong(advance(4)) : 0; }
    // Bits first..last of the next one or two bytes, which are consumed.
    uint8_t bits8(int first, int last) { return take(1) ? U8GetBits(advance(1), first, last) : 0; }
    uint16_t bits16(int first, int last) { return take(2) ? U16GetBits(advance(2), first, last) : 0; }
    void skip(size_t n)
    {
        if (take(n))
            cursor += n;
    }
    void appendTo(std::string& out, size_t n);
    void appendTo(TailText& out, size_t n);

    // The byte n places ahead, without moving; 0 and a failed copy when it is not there.
    uint8_t peek(size_t n) const { return canRead(n + 1) ? cursor[n] : 0; }
    // A copy moved n bytes ahead.
    SectionReader at(size_t n) const
    {
        SectionReader copy = *this;
        copy.skip(n);
        return copy;
    }
    // A copy that ends n bytes from here (or where this one ends, if that is sooner).
    SectionReader limit(size_t n) const
    {
        SectionReader copy = *this;
        if (canRead(n))
            copy.end = cursor + n;
        return copy;
    }

private:
    // Inline, as every read goes through them.
    bool take(size_t n)
    {
        if (canRead(n))
            return true;
        failed = true;
        return false;
    }
    // The bytes at the cursor, which moves n on.
    const unsigned char* advance(size_t n)
    {
        const unsigned char* here = cursor;
        cursor += n;
        return here;
    }

    const unsigned char* cursor = nullptr;
    const unsigned char* end = nullptr;
    bool failed = false;
};

}  // namespace TesmoHbbTV

#endif
