// A simple application boundary descriptor, the input's bytes exactly.

#include <cstdint>
#include <cstring>
#include <memory>

#include "si/ApplicationDomain.h"

using namespace TesmoHbbTV;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    std::unique_ptr<unsigned char[]> descriptor(new unsigned char[size ? size : 1]);
    if (size)
        std::memcpy(descriptor.get(), data, size);
    ApplicationDomain domain;
    domain.parseSimpleApplicationBoundaryExtensionDescriptor(SectionReader(descriptor.get(), size));
    ApplicationDomain other;
    other.addBoundaryExtension("http://example.tv/app");
    other.extendDomain(domain);
    for (const std::string& boundary : domain.getBoundaries())
        other.isWithinBoundaries(boundary + "/index.html");
    return 0;
}
