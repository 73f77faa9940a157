// Platform threads post events while the browser thread ticks and handles the browser
// core's notifications: the queue is the only place where they meet.

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "BroadcastFixture.h"
#include "tesmo_hbbtv/bindings.h"

using namespace tesmo_test;

namespace {

using ThreadedEventsTest = BroadcastTest;

TEST_F(ThreadedEventsTest, FourPlatformThreadsAgainstTheBrowserThread)
{
    postSection(autostartSection());
    tickAll();
    DAXO_TesmoWindow* browser = appWindow();
    ASSERT_NE(browser, nullptr);

    const int threads = 4;
    const int perThread = 2000;
    std::atomic<int> finished{0};
    std::vector<std::thread> platformThreads;
    for (int t = 0; t < threads; ++t)
        platformThreads.emplace_back([t, &finished] {
            for (int i = 0; i < perThread; ++i) {
                HBBTV_EventData* data = platformEvent();
                switch (i % 4) {
                case 0:
                    data->terminal_identity.version = uint16_t(t);
                    data->terminal_identity.strings[0] = platformString("thread");
                    tesmo_hbbtv_send_event(HBBTV_EVENT_TERMINAL_IDENTITY, data);
                    break;
                case 1:
                    tesmo_hbbtv_send_event(i % 8 == 1 ? HBBTV_EVENT_BROADBAND_DOWN : HBBTV_EVENT_BROADBAND_UP, data);
                    break;
                case 2:
                    data->platform_profiles.profiles = uint16_t(i);
                    tesmo_hbbtv_send_event(HBBTV_EVENT_PLATFORM_PROFILES, data);
                    break;
                default:
                    tesmo_hbbtv_send_event(HBBTV_EVENT_LOW_MEMORY, data);
                    break;
                }
            }
            ++finished;
        });

    // The browser thread: ticks, and answers the core's script requests meanwhile.
    int requests = 0;
    for (;;) {
        const bool done = finished.load() == threads;
        for (int i = 0; i < 64; ++i)
            tesmo_hbbtv_tick();
        DAXO_RequestRecord request{"http://app1.tv/", "http://app1.tv/x", 0};
        int result = 0;
        tesmo_hbbtv_handle_notification(nullptr, browser, DAXO_TESMO_EVT_XHR_REQUEST, &request, &result);
        ++requests;
        if (done)
            break;
    }
    for (auto& t : platformThreads)
        t.join();
    for (int i = 0; i < threads * perThread; ++i)  // one tick per event is always enough
        tesmo_hbbtv_tick();
    EXPECT_EQ(world().callsTo("tm_set_uastring_extension").size(), size_t(threads * perThread / 4));
    EXPECT_GT(requests, 0);
}

std::atomic<int> lowMemoryReports{0};

// Senders do not know whether the library is running: before init, during a run, across
// shutdown and across a second init, an event is either queued and run or not taken.
TEST(ThreadedLifecycleTest, SendersAcrossShutdownAndASecondInit)
{
    FakeWorld::get().reset();
    native_ApplicationManagerSetListener([](uint32_t, uint32_t) { ++lowMemoryReports; });
    std::atomic<bool> stop{false};
    std::vector<std::thread> senders;
    for (int t = 0; t < 3; ++t)
        senders.emplace_back([&stop] {
            while (!stop.load())
                tesmo_hbbtv_send_event(HBBTV_EVENT_LOW_MEMORY, nullptr);  // a record-less event
        });
    auto run = [](int ticks) {
        for (int i = 0; i < ticks; ++i)
            tesmo_hbbtv_tick();
    };
    run(200);  // not initialised yet
    for (int cycle = 0; cycle < 2; ++cycle) {
        const int before = lowMemoryReports.load();
        tesmo_hbbtv_init(reinterpret_cast<DAXO_Tesmo*>(0xC0DE));
        tesmo_hbbtv_create_window();
        // Until an event of this run has arrived, however slowly the senders are scheduled.
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (lowMemoryReports.load() == before && std::chrono::steady_clock::now() < deadline)
            run(100);
        run(500);
        tesmo_hbbtv_shutdown();  // with events still queued
        EXPECT_GT(lowMemoryReports.load(), before);
        run(200);
    }
    stop = true;
    for (auto& t : senders)
        t.join();
    native_ApplicationManagerSetListener(nullptr);
}

}  // namespace
