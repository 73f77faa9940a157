#ifndef TESMO_HBBTV_TESTS_EXACTBUFFER_H
#define TESMO_HBBTV_TESTS_EXACTBUFFER_H

#include <cstring>
#include <memory>

#include "SectionBuilder.h"

namespace tesmo_test {

// The bytes in a heap block of exactly their size, so that AddressSanitizer reports any read
// past them (a vector may hold spare capacity).
class ExactBuffer {
public:
    explicit ExactBuffer(const Bytes& bytes)
        : size(bytes.size()), data(new unsigned char[bytes.size() ? bytes.size() : 1])
    {
        if (!bytes.empty())
            std::memcpy(data.get(), bytes.data(), bytes.size());
    }
    const unsigned char* get() const { return data.get(); }
    unsigned char* get() { return data.get(); }

    size_t size;

private:
    std::unique_ptr<unsigned char[]> data;
};

}  // namespace tesmo_test

#endif
