#include "tesmo_hbbtv/sha256.h"

#include <cstdio>

namespace {

const unsigned K[64] = {0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
                        0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
                        0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
                        0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
                        0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
                        0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
                        0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
                        0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

const unsigned INITIAL_HASH[8] = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                                  0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};

}  // namespace

SHA256::SHA256()
{
    reset();
}

void SHA256::reset()
{
    for (int i = 0; i < 8; ++i)
        H[i] = INITIAL_HASH[i];
    lengthHigh = 0;
    lengthLow = 0;
    byteCount = 0;
    computed = false;
}

void SHA256::input(const char* data, unsigned length)
{
    for (unsigned i = 0; data && i < length; ++i)
        input(data[i]);
}

void SHA256::input(char c)
{
    block[byteCount++] = static_cast<unsigned char>(c);
    lengthLow += 8;
    if (lengthLow == 0)
        ++lengthHigh;
    if (byteCount == 64)
        digest();
}

SHA256& SHA256::operator<<(const char* text)
{
    for (; text && *text; ++text)
        input(*text);
    return *this;
}

// Any count, taken modulo 32: shifting a 32-bit value by 32 or more is undefined.
unsigned SHA256::rotateRight(unsigned value, int bits) const
{
    const unsigned n = static_cast<unsigned>(bits) & 31u;
    return n == 0 ? value : (value >> n) | (value << (32 - n));
}

void SHA256::digest()
{
    unsigned w[64];
    for (int t = 0; t < 16; ++t)
        w[t] = unsigned(block[4 * t]) << 24 | unsigned(block[4 * t + 1]) << 16 | unsigned(block[4 * t + 2]) << 8 |
               unsigned(block[4 * t + 3]);
    for (int t = 16; t < 64; ++t) {
        unsigned s0 = rotateRight(w[t - 15], 7) ^ rotateRight(w[t - 15], 18) ^ (w[t - 15] >> 3);
        unsigned s1 = rotateRight(w[t - 2], 17) ^ rotateRight(w[t - 2], 19) ^ (w[t - 2] >> 10);
        w[t] = w[t - 16] + s0 + w[t - 7] + s1;
    }

    unsigned a = H[0], b = H[1], c = H[2], d = H[3], e = H[4], f = H[5], g = H[6], h = H[7];
    for (int t = 0; t < 64; ++t) {
        unsigned s1 = rotateRight(e, 6) ^ rotateRight(e, 11) ^ rotateRight(e, 25);
        unsigned choose = (e & f) ^ (~e & g);
        unsigned t1 = h + s1 + choose + K[t] + w[t];
        unsigned s0 = rotateRight(a, 2) ^ rotateRight(a, 13) ^ rotateRight(a, 22);
        unsigned majority = (a & b) ^ (a & c) ^ (b & c);
        unsigned t2 = s0 + majority;
        h = g;
        g = f;
        f = e;
        e = d + t1;
        d = c;
        c = b;
        b = a;
        a = t1 + t2;
    }
    H[0] += a;
    H[1] += b;
    H[2] += c;
    H[3] += d;
    H[4] += e;
    H[5] += f;
    H[6] += g;
    H[7] += h;
    byteCount = 0;
}

void SHA256::pad()
{
    block[byteCount++] = 0x80;
    if (byteCount >= 57) {
        while (byteCount < 64)
            block[byteCount++] = 0;
        digest();
    }
    while (byteCount < 56)
        block[byteCount++] = 0;
    const unsigned words[2] = {lengthHigh, lengthLow};
    for (int i = 0; i < 8; ++i)
        block[56 + i] = static_cast<unsigned char>(words[i / 4] >> (24 - 8 * (i % 4)));
    digest();
}

void SHA256::result(unsigned* out)
{
    // computed is never set, so every call pads again: callers depend on that.
    if (!computed)
        pad();
    for (int i = 0; i < 8; ++i)
        out[i] = H[i];
}

std::string SHA256::getResultString()
{
    unsigned words[8];
    result(words);
    std::string text;
    char hex[9];
    for (unsigned word : words) {
        std::snprintf(hex, sizeof hex, "%08x", word);
        text += hex;
    }
    return text;
}
