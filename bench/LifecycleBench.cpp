// Memory held by running applications and tables, and the cost of an activation that
// keeps the running application.

#include <benchmark/benchmark.h>

#include <memory>

#include "ExactBuffer.h"
#include "FakeWorld.h"
#include "HeapCounter.h"
#include "PlatformListener.h"
#include "SectionBuilder.h"
#include "lifecycle/Application.h"
#include "lifecycle/Window.h"
#include "si/AIT.h"
#include "tesmo_hbbtv/tesmo_hbbtv.h"

using namespace TesmoHbbTV;
using namespace tesmo_test;

namespace {

App entry(uint16_t id, uint8_t controlCode)
{
    ApplicationDescriptorFields fields;
    fields.labels = {1, 2};
    return App(0x10, id, controlCode)
        .with(applicationDescriptor(fields))
        .with(nameDescriptor("Application " + std::to_string(id)))
        .with(httpTransport(1, "http://apps.example.tv/" + std::to_string(id) + "/"))
        .with(carouselTransport(2, 5))
        .with(locationDescriptor("index.html"))
        .with(boundaryDescriptor({"http://apps.example.tv/"}));
}

ref_ptr<AIT> table(int applications, uint8_t version, uint8_t firstControlCode)
{
    AITSection section;
    section.version(version);
    for (int i = 0; i < applications; ++i)
        section.application(entry(uint16_t(i + 1), i == 0 ? firstControlCode : 2));
    ref_ptr<AIT> ait(new AIT(1, 2, 3, nullptr));
    ExactBuffer bytes(section.bytes());
    ait->parse(bytes.get());
    return ait;
}

// An initialised library with a window whose platform grants browser windows.
struct Library {
    Library()
    {
        PlatformListener::get().reset();
        tesmo_hbbtv_init(nullptr);
        PlatformListener::get().install();
        window = tesmo_hbbtv_create_window();
    }
    ~Library()
    {
        tesmo_hbbtv_shutdown();
        FakeWorld::get().reset();
        PlatformListener::get().reset();
    }
    void runAutostart(const ref_ptr<AIT>& ait)
    {
        window->setAIT(ait);
        window->activateAIT();
        for (int i = 0; i < 10; ++i)
            tesmo_hbbtv_tick();
        window->reportLoadSuccess(window->getRunningApplication()->getDaxoWindow());
    }
    Window* window;
};

void BM_HeapHeldPerAITOfNApplications(benchmark::State& state)
{
    long long held = 0;
    for (auto _ : state) {
        const long long before = heap_counter::held();
        ref_ptr<AIT> ait = table(int(state.range(0)), 1, 1);
        held = heap_counter::held() - before;
        benchmark::DoNotOptimize(ait.get());
    }
    state.counters["bytes/table"] = double(held);
    state.counters["bytes/application"] = double(held) / double(state.range(0));
}
BENCHMARK(BM_HeapHeldPerAITOfNApplications)->Arg(1)->Arg(10)->Arg(30);

void BM_HeapHeldPerRunningApplication(benchmark::State& state)
{
    Library library;
    ref_ptr<AIT> ait = table(1, 1, 1);
    long long held = 0;
    for (auto _ : state) {
        const long long before = heap_counter::held();
        library.runAutostart(ait);
        held = heap_counter::held() - before;
        state.PauseTiming();
        library.window->shutdownApplication(library.window->getRunningApplication(), true, false);
        PlatformListener::get().notices.clear();
        FakeWorld::get().reset();
        state.ResumeTiming();
    }
    state.counters["bytes/application"] = double(held);
}
BENCHMARK(BM_HeapHeldPerRunningApplication);

// Alternating versions of a table that still signals the running application.
void BM_ActivationKeepingTheRunningApplication(benchmark::State& state)
{
    Library library;
    const ref_ptr<AIT> versions[2] = {table(int(state.range(0)), 1, 1), table(int(state.range(0)), 2, 2)};
    library.runAutostart(versions[0]);
    Application* running = library.window->getRunningApplication();
    const size_t allocationsBefore = heap_counter::allocations();
    int next = 1;
    for (auto _ : state) {
        library.window->setAIT(versions[next]);
        benchmark::DoNotOptimize(library.window->activateAIT());
        next ^= 1;
    }
    if (library.window->getRunningApplication() != running)
        state.SkipWithError("the running application did not continue");
    state.counters["allocs/activation"] =
        double(heap_counter::allocations() - allocationsBefore) / double(state.iterations());
}
BENCHMARK(BM_ActivationKeepingTheRunningApplication)->Arg(1)->Arg(30);

}  // namespace
