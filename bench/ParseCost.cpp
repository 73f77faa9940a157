// The cost of parsing one AIT section beside the cost of its bytes, for callgrind, whose
// instruction counts no other load on the machine can blur.
//
//   parse_cost                  lists the cases: application entries, allocations per parse,
//                               bytes (built with the counting operator new)
//   parse_cost CASE parse|walk  runs measuredParse or measuredWalk once on that case, after a
//                               warm-up; bench/parse_cost.sh counts their instructions

#include <cstdio>
#include <algorithm>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "HeapCounter.h"
#include "SectionBuilder.h"
#include "SharedData.h"
#include "TsSections.h"
#include "si/AIT.h"

using namespace TesmoHbbTV;
using namespace tesmo_test;

namespace {

struct Case {
    std::string name;
    Bytes section;
};

Bytes syntheticSection(int applications)
{
    AITSection section;
    section.version(3);
    for (int i = 0; i < applications; ++i) {
        ApplicationDescriptorFields fields;
        fields.priority = uint8_t(i);
        fields.labels = {1};
        section.application(App(0x141, uint16_t(i + 1), i == 0 ? 1 : 2)
                                .with(applicationDescriptor(fields))
                                .with(nameDescriptor("Application " + std::to_string(i)))
                                .with(httpTransport(1, "http://apps.example/" + std::to_string(i) + "/"))
                                .with(locationDescriptor("index.html")));
    }
    return section.bytes();
}

std::vector<Case> cases()
{
    std::vector<Case> all;
    const std::string shared = sharedDataDir();
    if (!shared.empty()) {
        all.push_back({"abc", sectionsOnPid(shared + "/captures/abc-au-hbbtv.ts", 0x157C).at(0)});
        all.push_back({"rai", sectionsOnPid(shared + "/captures/rai-dtt-hbbtv.ts", 0x07D2).at(0)});
        for (const char* file : {"ait_typical", "ait_no_url_base", "ait_no_url_path"})
            all.push_back({file, readFileBytes(shared + "/sections/" + file + ".bin")});
    }
    all.push_back({"synthetic-12", syntheticSection(12)});
    all.push_back({"synthetic-20", syntheticSection(20)});
    return all;
}

// What any parser must do at least: every loop and descriptor found through its length,
// each length checked against the end of its loop, every byte read once (into a running
// hash, which no compiler turns into wider reads). Counts the application entries.
unsigned walk(const unsigned char* s, size_t size, unsigned& entries)
{
    auto u16 = [s](size_t at) { return size_t(s[at] << 8 | s[at + 1]); };
    unsigned hash = 0;
    auto descriptors = [&](size_t at, size_t end) {
        while (at + 2 <= end) {
            const size_t length = s[at + 1];
            if (at + 2 + length > end)
                return false;
            for (size_t i = 0; i < 2 + length; ++i)
                hash = hash * 31 + s[at + i];
            at += 2 + length;
        }
        return at == end;
    };
    if (size < 12)
        return 0;
    const size_t end = std::min(size, 3 + (u16(1) & 0xFFF)) - 4;
    size_t at = 10;
    const size_t common = u16(8) & 0xFFF;
    if (at + common > end || !descriptors(at, at + common))
        return 0;
    at += common;
    if (at + 2 > end)
        return 0;
    const size_t loopEnd = at + 2 + (u16(at) & 0xFFF);
    for (at += 2; at + 9 <= loopEnd && loopEnd <= end;) {
        const size_t length = u16(at + 7) & 0xFFF;
        if (at + 9 + length > loopEnd || !descriptors(at + 9, at + 9 + length))
            return 0;
        for (size_t i = 0; i < 9; ++i)
            hash = hash * 31 + s[at + i];
        at += 9 + length;
        ++entries;
    }
    return hash;
}

bool parse(const unsigned char* section)
{
    ref_ptr<AIT> ait(new AIT(1, 2, 3, nullptr));
    return ait->parse(section);
}

__attribute__((noinline)) unsigned measuredWalk(const Bytes& s)
{
    unsigned entries = 0;
    return walk(s.data(), s.size(), entries) + entries;
}
__attribute__((noinline)) bool measuredParse(const Bytes& s)
{
    return parse(s.data());
}

}  // namespace

int main(int argc, char** argv)
{
    const std::vector<Case> all = cases();
    if (argc == 1) {
        for (const Case& c : all) {
            unsigned entries = 0;
            walk(c.section.data(), c.section.size(), entries);
            const size_t before = heap_counter::allocations();
            const bool ok = parse(c.section.data());
            const size_t allocations = heap_counter::allocations() - before;
            std::printf("%s %u %zu %zu %s\n", c.name.c_str(), entries, allocations, c.section.size(),
                        ok ? "ok" : "refused");
        }
        return 0;
    }
    for (const Case& c : all) {
        if (c.name != argv[1])
            continue;
        const bool walkOnly = argc > 2 && std::strcmp(argv[2], "walk") == 0;
        // Warm-up outside the measured function: first-use costs are no part of a parse.
        unsigned entries = 0;
        parse(c.section.data());
        walk(c.section.data(), c.section.size(), entries);
        volatile unsigned result = walkOnly ? measuredWalk(c.section) : measuredParse(c.section);
        (void)result;
        return 0;
    }
    std::fprintf(stderr, "no case %s\n", argv[1]);
    return 2;
}
