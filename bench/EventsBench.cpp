// The paths a receiver takes all the time: a platform event through the queue, a key
// press, and an AIT section all the way to the page being opened.

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>

#include "FakeWorld.h"
#include "PlatformListener.h"
#include "SectionBuilder.h"
#include "tesmo_hbbtv/tesmo_hbbtv.h"

using namespace tesmo_test;

namespace {

struct Library {
    Library()
    {
        FakeWorld::get().reset();
        FakeWorld::get().supportedKeys = 0x3FF;
        PlatformListener::get().reset();
        tesmo_hbbtv_init(nullptr);
        PlatformListener::get().install();
        window = tesmo_hbbtv_create_window();
        tesmo_hbbtv_set_broadcast_window(window);
    }
    ~Library()
    {
        tesmo_hbbtv_shutdown();
        FakeWorld::get().reset();
        PlatformListener::get().reset();
    }
    HBBTV_Window* window;
};

HBBTV_EventData* platformEvent()
{
    return static_cast<HBBTV_EventData*>(calloc(1, sizeof(HBBTV_EventData)));
}

void postSection(const Bytes& section, uint16_t serviceId)
{
    HBBTV_EventData* data = platformEvent();
    data->ait_section.section = static_cast<unsigned char*>(malloc(section.size()));
    std::memcpy(data->ait_section.section, section.data(), section.size());
    data->ait_section.service_id = serviceId;
    data->ait_section.ait_present = 1;
    tesmo_hbbtv_send_event(HBBTV_EVENT_AIT_SECTION, data);
}

void BM_SendEventThenTick(benchmark::State& state)
{
    Library library;
    for (auto _ : state) {
        HBBTV_EventData* data = platformEvent();
        data->platform_profiles.profiles = 1;
        tesmo_hbbtv_send_event(HBBTV_EVENT_PLATFORM_PROFILES, data);
        tesmo_hbbtv_tick();
    }
}
BENCHMARK(BM_SendEventThenTick);

void BM_KeyInput(benchmark::State& state)
{
    Library library;
    HBBTV_EventData* start = platformEvent();
    start->start_broadcast_independent.window = library.window;
    start->start_broadcast_independent.url = strdup("http://portal.tv/");
    tesmo_hbbtv_send_event(HBBTV_EVENT_START_BROADCAST_INDEPENDENT, start);
    for (int i = 0; i < 4; ++i)
        tesmo_hbbtv_tick();
    DAXO_TesmoWindow* browser = PlatformListener::get().lastGrantedWindow();
    const bool query = state.range(0) != 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(tesmo_hbbtv_key_input(browser, query, 406, 0));
        if (!query)
            FakeWorld::get().reset();
    }
    state.SetLabel(query ? "query only" : "delivered");
}
BENCHMARK(BM_KeyInput)->Arg(1)->Arg(0);

// From the section reaching the library to the browser core asked to open the page. Between
// iterations, outside the timing, the application is ended and the service left.
void BM_SectionToOpenUrl(benchmark::State& state)
{
    Library library;
    ApplicationDescriptorFields fields;
    fields.labels = {1, 2};
    const Bytes section = AITSection()
                              .application(App(0x10, 1, 1)
                                               .with(applicationDescriptor(fields))
                                               .with(nameDescriptor("Bench"))
                                               .with(httpTransport(1, "http://app.tv/"))
                                               .with(carouselTransport(2, 5))
                                               .with(locationDescriptor("index.html")))
                              .bytes();
    int64_t ticks = 0;
    uint16_t service = 0;
    for (auto _ : state) {
        state.PauseTiming();
        HBBTV_EventData* terminate = platformEvent();
        terminate->terminate_application.window = library.window;
        tesmo_hbbtv_send_event(HBBTV_EVENT_TERMINATE_APPLICATION, terminate);
        tesmo_hbbtv_send_event(HBBTV_EVENT_AIT_WITHDRAWN, platformEvent());
        for (int i = 0; i < 4; ++i)
            tesmo_hbbtv_tick();
        FakeWorld::get().reset();
        PlatformListener::get().notices.clear();
        state.ResumeTiming();
        postSection(section, ++service);
        for (int tick = 0; tick < 100 && FakeWorld::get().callsTo("tm_open_url").empty(); ++tick) {
            tesmo_hbbtv_tick();
            ++ticks;
        }
    }
    if (FakeWorld::get().callsTo("tm_open_url").empty())
        state.SkipWithError("no page was opened");
    state.counters["ticks"] = double(ticks) / double(state.iterations());
}
BENCHMARK(BM_SectionToOpenUrl);

}  // namespace
