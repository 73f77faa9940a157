// Platform events that name a window, still queued when the browser thread releases that
// window, must not reach a new window that the allocator places at the same address. This
// binary wraps operator new and delete at link time (every sanitizer's runtime defines its
// own, so they cannot be replaced) and hands a released window's block to the next
// allocation of its size, as a busy allocator may, so that the new window really stands
// where the old one stood.

#include <atomic>
#include <cstdint>
#include <thread>

#include "BroadcastFixture.h"
#include "lifecycle/Window.h"

using namespace tesmo_test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

std::atomic<void*> watchedBlock{nullptr};  // parked instead of freed when deleted
std::atomic<void*> parkedBlock{nullptr};  // the next window-sized allocation gets it

void* takeParked(std::size_t size)
{
    void* block = parkedBlock.load();
    if (block && size == sizeof(TesmoHbbTV::Window) && parkedBlock.compare_exchange_strong(block, nullptr))
        return block;
    return nullptr;
}

bool park(void* block)
{
    void* watched = block;
    if (!block || !watchedBlock.compare_exchange_strong(watched, nullptr))
        return false;
    parkedBlock.store(block);
    return true;
}

}  // namespace

// The mangled names of operator new(size_t), delete(void*) and delete(void*, size_t).
#if SIZE_MAX == UINT32_MAX
#define NEW_SYMBOL(prefix) prefix##_Znwj
#define SIZED_DELETE_SYMBOL(prefix) prefix##_ZdlPvj
#else
#define NEW_SYMBOL(prefix) prefix##_Znwm
#define SIZED_DELETE_SYMBOL(prefix) prefix##_ZdlPvm
#endif

extern "C" {
void* NEW_SYMBOL(__real_)(std::size_t size);
void __real__ZdlPv(void* block);
void SIZED_DELETE_SYMBOL(__real_)(void* block, std::size_t size);

void* NEW_SYMBOL(__wrap_)(std::size_t size)
{
    if (void* block = takeParked(size))
        return block;
    return NEW_SYMBOL(__real_)(size);
}

void __wrap__ZdlPv(void* block)
{
    if (!park(block))
        __real__ZdlPv(block);
}

void SIZED_DELETE_SYMBOL(__wrap_)(void* block, std::size_t size)
{
    if (!park(block))
        SIZED_DELETE_SYMBOL(__real_)(block, size);
}
}

namespace {

class ReleasedWindowEventsTest : public BroadcastTest {
protected:
    // Releases a window and creates the next one in its block.
    static HBBTV_Window* replaceWindow(HBBTV_Window* released)
    {
        watchedBlock.store(released);
        tesmo_hbbtv_release_window(released);
        return tesmo_hbbtv_create_window();
    }

    static void postStartUrl(HBBTV_Window* target, const char* url)
    {
        HBBTV_EventData* data = platformEvent();
        data->start_broadcast_independent.window = target;
        data->start_broadcast_independent.url = platformString(url);
        tesmo_hbbtv_send_event(HBBTV_EVENT_START_BROADCAST_INDEPENDENT, data);
    }

    static void postForWindow(HBBTV_EventType type, HBBTV_Window* target)
    {
        HBBTV_EventData* data = platformEvent();
        if (type == HBBTV_EVENT_START_APPLICATION) {
            data->start_application.window = target;
            data->start_application.organisation_id = 0x10;
            data->start_application.application_id = 1;
        } else {
            data->terminate_application.window = target;
        }
        tesmo_hbbtv_send_event(type, data);
    }

    static void postIdentity(const char* name)
    {
        HBBTV_EventData* data = platformEvent();
        data->terminal_identity.strings[0] = platformString(name);
        tesmo_hbbtv_send_event(HBBTV_EVENT_TERMINAL_IDENTITY, data);
    }
};

// The released window's termination, start and start by identifiers are dropped with their
// URL, and the new window at the same address sees none of them; the events that name no
// window keep their order, and the new window's own start runs.
TEST_F(ReleasedWindowEventsTest, QueuedEventsOfAReleasedWindowNeverReachItsSuccessor)
{
    HBBTV_Window* released = window;
    postForWindow(HBBTV_EVENT_TERMINATE_APPLICATION, released);
    postStartUrl(released, "http://released.tv/");
    postIdentity("first");
    postForWindow(HBBTV_EVENT_START_APPLICATION, released);
    postIdentity("second");

    HBBTV_Window* successor = replaceWindow(released);
    ASSERT_NE(successor, nullptr);
    ASSERT_EQ(successor, released) << "the allocator hook did not place the new window in the old block";
    tickAll();
    EXPECT_THAT(openedUrls(), IsEmpty());
    EXPECT_EQ(platform().notices.size(), 0u);
    const std::vector<Call> identities = world().callsTo("tm_set_uastring_extension");
    ASSERT_EQ(identities.size(), 2u);
    EXPECT_EQ(identities[0].args[1], "HbbTV/1.1.1 (first; ; ; ; ; )");
    EXPECT_EQ(identities[1].args[1], "HbbTV/1.1.1 (second; ; ; ; ; )");

    postStartUrl(successor, "http://successor.tv/");
    tickAll();
    EXPECT_THAT(openedUrls(), ElementsAre("http://successor.tv/"));
}

// A platform thread keeps sending while the browser thread releases the window: the queue's
// lock covers the forgetting, and every event that does not name the window still runs.
TEST_F(ReleasedWindowEventsTest, ForgettingWhileAPlatformThreadSends)
{
    HBBTV_Window* released = window;
    const int identities = 400;
    std::atomic<bool> windowEventsSent{false};
    std::thread sender([released, &windowEventsSent] {
        for (int i = 0; i < identities; ++i) {
            if (i < 50) {
                postStartUrl(released, "http://released.tv/");
                postForWindow(HBBTV_EVENT_TERMINATE_APPLICATION, released);
            }
            windowEventsSent.store(i >= 50);
            postIdentity("sender");
        }
    });
    while (!windowEventsSent.load())
        std::this_thread::yield();
    HBBTV_Window* successor = replaceWindow(released);
    sender.join();
    ASSERT_NE(successor, nullptr);
    ASSERT_EQ(successor, released) << "the allocator hook did not place the new window in the old block";
    tickAll();

    EXPECT_THAT(openedUrls(), IsEmpty());
    EXPECT_EQ(platform().notices.size(), 0u);
    EXPECT_EQ(world().callsTo("tm_set_uastring_extension").size(), size_t(identities));
}

}  // namespace
