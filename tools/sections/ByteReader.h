#ifndef TESMO_HBBTV_TOOLS_BYTEREADER_H
#define TESMO_HBBTV_TOOLS_BYTEREADER_H

// Reads big-endian fields from broadcast bytes, whose length fields may lie. A read that
// does not fit yields zeros (or an empty text), consumes the rest and fails the reader for
// good, so a parser reads on and asks good() where the answer matters.

#include <cstddef>
#include <cstdint>
#include <string>

class ByteReader {
public:
    ByteReader(const uint8_t* data, size_t size) : next(data), count(size) {}

    bool good() const { return !failed; }
    size_t left() const { return count; }

    uint8_t u8() { return uint8_t(number(1)); }
    uint16_t u16() { return uint16_t(number(2)); }
    uint32_t u32() { return number(4); }
    void skip(size_t n) { take(n); }
    std::string text(size_t n)
    {
        const uint8_t* bytes = take(n);
        return bytes ? std::string(reinterpret_cast<const char*>(bytes), n) : std::string();
    }

    // The next n bytes as a reader of their own, which this one moves past. A length beyond
    // the end gives the bytes that are there, and fails this reader but not the part.
    ByteReader part(size_t n)
    {
        ByteReader piece = *this;
        if (n <= count)
            piece.count = n;
        take(n);
        return piece;
    }

private:
    // The next n bytes, consumed; null when fewer are left.
    const uint8_t* take(size_t n)
    {
        if (n > count) {
            failed = true;
            count = 0;
            return nullptr;
        }
        const uint8_t* bytes = next;
        next += n;
        count -= n;
        return bytes;
    }
    uint32_t number(size_t n)
    {
        const uint8_t* bytes = take(n);
        uint32_t value = 0;
        for (size_t i = 0; bytes && i < n; ++i)
            value = value << 8 | bytes[i];
        return value;
    }

    const uint8_t* next;
    size_t count;
    bool failed = false;
};

#endif
