// Parsing cost of AIT sections: time per section and heap allocations per section.

#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>
#include <vector>

#include "HeapCounter.h"
#include "SectionBuilder.h"
#include "SharedData.h"
#include "TsSections.h"
#include "si/AIT.h"

using namespace TesmoHbbTV;
using namespace tesmo_test;

namespace {

std::vector<std::unique_ptr<unsigned char[]>> exactCopies(const std::vector<Bytes>& sections)
{
    std::vector<std::unique_ptr<unsigned char[]>> copies;
    for (const Bytes& s : sections) {
        copies.emplace_back(new unsigned char[s.size()]);
        std::memcpy(copies.back().get(), s.data(), s.size());
    }
    return copies;
}

// Parses the sections into a fresh table per iteration, as a receiver does for each new
// version; reports the figures per section.
void parseTable(benchmark::State& state, const std::vector<Bytes>& sections)
{
    if (sections.empty()) {
        state.SkipWithError("../shared/data is not beside this checkout");
        return;
    }
    const auto copies = exactCopies(sections);
    const size_t allocationsBefore = heap_counter::allocations();
    for (auto _ : state) {
        ref_ptr<AIT> ait(new AIT(1, 2, 3, nullptr));
        for (const auto& section : copies)
            benchmark::DoNotOptimize(ait->parse(section.get()));
    }
    const double sectionsParsed = double(state.iterations()) * double(copies.size());
    state.SetItemsProcessed(int64_t(sectionsParsed));
    state.counters["allocs/section"] = double(heap_counter::allocations() - allocationsBefore) / sectionsParsed;
    state.counters["ns/section"] =
        benchmark::Counter(sectionsParsed, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

std::vector<Bytes> capturedSections(const char* capture, uint16_t pid, size_t count)
{
    if (sharedDataDir().empty())
        return {};
    std::vector<Bytes> sections = sectionsOnPid(sharedDataDir() + "/captures/" + capture, pid);
    sections.resize(std::min(count, sections.size()));
    return sections;
}

std::vector<Bytes> thirtyApplicationsInThreeSections()
{
    std::vector<Bytes> sections;
    for (uint8_t s = 0; s < 3; ++s) {
        AITSection section;
        section.version(7).number(s, 2).common(httpTransport(9, "http://common.example/"));
        for (uint16_t i = 0; i < 10; ++i) {
            ApplicationDescriptorFields fields;
            fields.priority = uint8_t(i);
            fields.labels = {1, 9};
            section.application(App(0x141, uint16_t(s * 10 + i + 1), i == 0 ? 1 : 2)
                                    .with(applicationDescriptor(fields))
                                    .with(nameDescriptor("Application " + std::to_string(i)))
                                    .with(httpTransport(1, "http://apps.example/" + std::to_string(i) + "/"))
                                    .with(locationDescriptor("index.html"))
                                    .with(boundaryDescriptor({"http://apps.example/"})));
        }
        sections.push_back(section.bytes());
    }
    return sections;
}

void BM_ParseAbcSection(benchmark::State& state)
{
    static const std::vector<Bytes> sections = capturedSections("abc-au-hbbtv.ts", 0x157C, 1);
    parseTable(state, sections);
}

void BM_ParseRaiHbbTVSection(benchmark::State& state)
{
    static const std::vector<Bytes> sections = capturedSections("rai-dtt-hbbtv.ts", 0x07D2, 1);
    parseTable(state, sections);
}

void BM_ParseThirtyApplicationsInThreeSections(benchmark::State& state)
{
    static const std::vector<Bytes> sections = thirtyApplicationsInThreeSections();
    parseTable(state, sections);
}

BENCHMARK(BM_ParseAbcSection);
BENCHMARK(BM_ParseRaiHbbTVSection);
BENCHMARK(BM_ParseThirtyApplicationsInThreeSections);

}  // namespace
