#ifndef TESMO_HBBTV_SHA256_H
#define TESMO_HBBTV_SHA256_H

// Incremental SHA-256 (FIPS 180-4).
//
// result() and getResultString() pad the message on every call, on top of the state the
// previous call left: only the first call after the last input gives the digest of the
// data. Keep the string of the first call, or reset() and feed the data again.

#include <string>

#include "export.h"

class TESMO_HBBTV_API SHA256 {
public:
    SHA256();

    void reset();
    void input(const char* data, unsigned length);
    void input(char c);
    SHA256& operator<<(const char* text);

    void digest();
    void pad();
    void result(unsigned* out);
    std::string getResultString();

    unsigned rotateRight(unsigned value, int bits) const;

private:
    unsigned lengthHigh;
    unsigned lengthLow;
    unsigned H[8];
    int byteCount;
    unsigned char block[64];
    bool computed;
};

#endif
