#ifndef TESMO_HBBTV_TESTS_PLATFORMFIXTURE_H
#define TESMO_HBBTV_TESTS_PLATFORMFIXTURE_H

#include <string>
#include <vector>

#include "LibraryFixture.h"
#include "PlatformListener.h"

namespace tesmo_test {

// An initialised library with one broadcast window and a platform listener that grants
// browser windows.
class PlatformTest : public LibraryTest {
protected:
    static DAXO_Tesmo* core() { return reinterpret_cast<DAXO_Tesmo*>(0xC0DE); }

    void SetUp() override
    {
        LibraryTest::SetUp();
        platform().reset();
        tesmo_hbbtv_init(core());
        platform().install();
        window = tesmo_hbbtv_create_window();
        tesmo_hbbtv_set_broadcast_window(window);
    }
    void TearDown() override
    {
        LibraryTest::TearDown();
        platform().reset();
    }

    static PlatformListener& platform() { return PlatformListener::get(); }

    // Runs every queued event, including those queued while running.
    static void tickAll()
    {
        for (int i = 0; i < 1000; ++i)
            tesmo_hbbtv_tick();
    }

    // The pages the browser core was asked to open, in order.
    static std::vector<std::string> openedUrls()
    {
        std::vector<std::string> urls;
        for (const Call& call : FakeWorld::get().callsTo("tm_open_url"))
            urls.push_back(call.args[1]);
        return urls;
    }

    HBBTV_Window* window = nullptr;
};

}  // namespace tesmo_test

#endif
