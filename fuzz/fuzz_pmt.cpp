// One program map section in a buffer of exactly 3 + section_length bytes.

#include <cstdint>
#include <cstring>
#include <list>
#include <memory>

#include "si/PMT.h"

using namespace TesmoHbbTV;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 3 || size > 3 + 0xFFF)
        return 0;
    std::unique_ptr<unsigned char[]> section(new unsigned char[size]);
    std::memcpy(section.get(), data, size);
    section[1] = uint8_t((section[1] & 0xF0) | (((size - 3) >> 8) & 0x0F));
    section[2] = uint8_t(size - 3);

    PMT pmt(section.get());
    std::list<ElementaryStream*> streams;
    pmt.getElementaryStreams(data[0], streams);
    pmt.getElementaryStream(data[0]);
    pmt.getElementaryStreamByStreamType(0x05);
    return 0;
}
