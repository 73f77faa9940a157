// The way from EIT present/following bytes to the programmes a host shows: the guide's
// decoding (libdvbpsi's behind the platform's checks of the loops), then the timeline's words
// and JSON. The input goes in as it is, then as a whole section (its length and CRC made
// right, which a fuzzer would hardly find) and as the other section of its table, so that
// tables complete.

#include <cstdint>
#include <cstdio>
#include <string>

#include "ProgrammeFeed.h"
#include "SectionBuilder.h"

namespace {

const size_t HEADER = 8;  // up to last_section_number
const size_t MAX_SECTION = 4096;

tesmo_test::Bytes withCrc(tesmo_test::Bytes section)
{
    tesmo_test::setSectionLength(section);
    const uint32_t crc = tesmo_test::crc32Mpeg(section.data(), section.size() - 4);
    for (size_t i = 0; i < 4; ++i)
        section[section.size() - 4 + i] = uint8_t(crc >> (24 - 8 * i));
    return section;
}

Timeline& timeline()
{
    static Timeline json(std::fopen("/dev/null", "w"), true);
    return json;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const tesmo_test::Bytes raw(data, data + size);
    std::vector<TimedSection> sections{{0, raw}};
    if (size >= HEADER + 4 && size <= MAX_SECTION) {
        const tesmo_test::Bytes whole = withCrc(raw);
        tesmo_test::Bytes other = whole;
        other[6] ^= 0x01;
        sections.push_back({1, whole});
        sections.push_back({2, withCrc(other)});
        sections.push_back({3, whole});
    }
    const uint16_t service = size >= 5 ? uint16_t(data[3] << 8 | data[4]) : 0;
    ProgrammeFeed feed(timeline());
    feed.start(sections, service, 0);
    if (feed.step(0))
        ProgrammeFeed::describe(feed.current());
    return 0;
}
