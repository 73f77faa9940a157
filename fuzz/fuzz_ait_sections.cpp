// A sequence of sections fed into one table, each in a buffer of exactly
// 3 + section_length bytes; the last one is cut to the bytes that remain.

#include <cstdint>
#include <cstring>
#include <vector>

#include "si/AIT.h"

using namespace TesmoHbbTV;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    ref_ptr<AIT> ait(new AIT(0x1, 0x2, 0x3, nullptr));
    while (size >= 3) {
        size_t length = 3 + ((size_t(data[1]) & 0x0F) << 8 | data[2]);
        std::vector<uint8_t> section(data, data + (length < size ? length : size));
        if (length > size) {
            length = size;
            section[1] = uint8_t((section[1] & 0xF0) | (((length - 3) >> 8) & 0x0F));
            section[2] = uint8_t(length - 3);
        }
        std::unique_ptr<unsigned char[]> exact(new unsigned char[length]);
        std::memcpy(exact.get(), section.data(), length);
        ait->parse(exact.get());
        data += length;
        size -= length;
    }
    for (unsigned i = 0; i < ait->getNumApplications(); ++i) {
        const AITApplication* app = ait->getAITApplication(i);
        for (const auto& transport : app->getTransports())
            transport->getURL(app->getApplicationLocation());
        app->isPlatformProfileSupported();
        app->getApplicationDomain()->isWithinBoundaries("http://example.tv/");
    }
    ait->getAITApplication(AITApplication::AUTOSTART, true);
    return 0;
}
