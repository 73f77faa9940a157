// The hosts' object-carousel client on any input. The first byte chooses: odd, the rest is
// one module's BIOP messages; even, the rest is a sequence of sections (each behind a 16-bit
// length) fed into one carousel, whose tree, files and modules are then read in full. With
// bit 1 set, each section's length field and CRC are made good first, so that the fuzzer's
// changes reach the messages instead of stopping at the CRC. With bit 2 set, every file is
// also extracted into a directory two levels down in a scratch directory, and nothing may
// appear anywhere else in the scratch directory.

#include <ftw.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "BiopObject.h"
#include "CarouselExtraction.h"
#include "ObjectCarousel.h"
#include "SectionBuilder.h"

namespace {

int removeEntry(const char* path, const struct stat*, int, FTW*)
{
    return remove(path);
}

void removeScratch();

const char* const TARGET = "/a/b/out";

// A directory of this process's own, holding the extraction's target; gone at exit.
const std::string& scratch()
{
    static const std::string directory = [] {
        char pattern[] = "/tmp/fuzz-carousel-XXXXXX";
        return std::string(mkdtemp(pattern));
    }();
    static const bool removedAtExit = std::atexit(removeScratch) == 0;
    (void)removedAtExit;
    return directory;
}

void removeScratch()
{
    nftw(scratch().c_str(), removeEntry, 16, FTW_DEPTH | FTW_PHYS);
}

// Every path in the scratch directory lies on the way to the target or below it.
int checkEntry(const char* path, const struct stat*, int, FTW*)
{
    const std::string relative = std::string(path).substr(scratch().size());
    const std::string target = TARGET;
    const bool onTheWay = target.compare(0, relative.size(), relative) == 0 &&
                          (relative.size() == target.size() || target[relative.size()] == '/');
    const bool below = relative.compare(0, target.size() + 1, target + "/") == 0;
    if (!onTheWay && !below)
        std::abort();  // written outside the extraction's directory
    return 0;
}

// Extracts what is listed, checks the whole scratch directory, then empties the target.
void extractAll(const carousel::ObjectCarousel& oc, const std::vector<carousel::ObjectCarousel::Entry>& entries)
{
    const std::string out = scratch() + TARGET;
    for (const carousel::ObjectCarousel::Entry& entry : entries) {
        std::string content;
        if (entry.kind == "file" && entry.problem.empty() &&
            oc.file(entry.path.substr(1), content) == carousel::ObjectCarousel::Lookup::FOUND)
            carousel::extractFile(out, entry.path, content);
    }
    nftw(scratch().c_str(), checkEntry, 16, FTW_PHYS);
    nftw(out.c_str(), removeEntry, 16, FTW_DEPTH | FTW_PHYS);
}

void makeGood(std::vector<uint8_t>& section)
{
    if (section.size() < 12)
        return;
    const size_t length = section.size() - 3;
    section[1] = uint8_t((section[1] & 0xF0) | ((length >> 8) & 0x0F));
    section[2] = uint8_t(length);
    const uint32_t crc = tesmo_test::crc32Mpeg(section.data(), section.size() - 4);
    for (size_t i = 0; i < 4; ++i)
        section[section.size() - 4 + i] = uint8_t(crc >> (24 - 8 * i));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0)
        return 0;
    if (data[0] & 1) {
        std::vector<carousel::BiopObject> objects;
        std::string error;
        carousel::parseBiopModule(std::string(reinterpret_cast<const char*>(data + 1), size - 1), objects, error);
        return 0;
    }
    carousel::ObjectCarousel oc;
    for (size_t at = 1; at + 2 <= size;) {
        const size_t length = size_t(data[at]) << 8 | data[at + 1];
        at += 2;
        const size_t n = length < size - at ? length : size - at;
        // Each section in a buffer of its own size, so that a read past it is caught.
        std::vector<uint8_t> section(data + at, data + at + n);
        if (data[0] & 2)
            makeGood(section);
        oc.addSection(section.data(), section.size());
        at += n;
    }
    const std::vector<carousel::ObjectCarousel::Entry> entries = oc.list();
    for (const carousel::ObjectCarousel::Entry& entry : entries) {
        std::string content;
        oc.file(entry.path.substr(1), content);
    }
    oc.moduleStatus();
    if (data[0] & 4)
        extractAll(oc, entries);
    return 0;
}
