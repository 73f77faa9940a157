// Queued starts and stops hold windows and applications that may be gone when they run,
// and a released window's address is readily handed to the next one. None of that may
// touch freed memory or act on the wrong object (run under AddressSanitizer in CI).

#include "LifecycleFixture.h"
#include "api/LoadSuccessEvent.h"
#include "api/StopApplicationEvent.h"

using namespace TesmoHbbTV;
using namespace tesmo_test;
using ::testing::IsEmpty;

namespace {

using LifetimeSafetyTest = LifecycleTest;

void queue(ThreadsafeEventQueue::Event* e)
{
    ConfigurationManager::getInstance()->getEventQueue()->add(e);
}

TEST_F(LifetimeSafetyTest, ReleasedWindowIgnoresQueuedStart)
{
    LogCapture log;
    window->startBroadcastIndependentApplication(HbbTVURL("http://tv/"));
    tesmo_hbbtv_release_window(window);
    window = tesmo_hbbtv_create_window();  // likely at the same address
    tickAll();
    EXPECT_TRUE(log.contains(LOG_LEVEL_ERR, "StartApplicationEvent", "Invalid setup or window do not exist."));
    EXPECT_EQ(running(), nullptr);
    EXPECT_THAT(platform().ofType(HBBTV_NOTIFICATION_REQUEST_WINDOW), IsEmpty());
}

TEST_F(LifetimeSafetyTest, ReleasedWindowIgnoresQueuedStop)
{
    Application* app = runAutostart(table({entry(1, 1)}));
    window->shutdownApplication(app, false, false);
    tesmo_hbbtv_release_window(window);
    window = tesmo_hbbtv_create_window();
    tesmo_hbbtv_set_broadcast_window(window);
    runAutostart(table({entry(2, 1)}));
    ASSERT_NE(running(), nullptr);
    tickAll();
    EXPECT_EQ(running()->getApplicationIdentifier(), 2) << "the old stop does not reach the new window";
}

TEST_F(LifetimeSafetyTest, StopForAnApplicationAlreadyGoneIsHarmless)
{
    Application* first = runAutostart(table({entry(1, 1)}));
    window->shutdownApplication(first, false, false);
    window->shutdownApplication(first, true, false);  // gone now; the queued stop remains
    window->startBroadcastIndependentApplication(HbbTVURL("http://next.tv/"));
    tickAll();
    ASSERT_NE(running(), nullptr) << "the successor, possibly at the same address, survives the stale stop";
    EXPECT_EQ(running()->getURL().getFullUrl(), "http://next.tv/");
}

TEST_F(LifetimeSafetyTest, ReplacedPendingApplicationIsDeletedByItsOwnStart)
{
    LogCapture log;
    Application* first = window->startBroadcastIndependentApplication(HbbTVURL("http://first.tv/"));
    Application* second = window->startBroadcastIndependentApplication(HbbTVURL("http://second.tv/"));
    EXPECT_NE(first, second);
    EXPECT_TRUE(log.contains(LOG_LEVEL_WARN, "Window", "Pending application added when pending already existed."));
    tickAll();
    EXPECT_TRUE(log.contains(LOG_LEVEL_WARN, "Window",
                             "startPendingApplication: application does not matching pending application, aborting."));
    EXPECT_EQ(running(), second);
    EXPECT_EQ(openedUrls(), std::vector<std::string>{"http://second.tv/"});
}

TEST_F(LifetimeSafetyTest, WindowReleasedWithEveryKindOfApplicationInFlight)
{
    // A running application with a failed child whose stop is queued, a replaced pending
    // application and a pending one: all go with the window, nothing leaks.
    Application* parent = runAutostart(table({entry(1, 1)}));
    Application* child = window->createApplication(HbbTVURL("http://child.tv/"), nullptr);
    child->setParentApplication(parent);
    tickAll();
    window->reportLoadFailed(child->getDaxoWindow());
    window->startBroadcastIndependentApplication(HbbTVURL("http://a.tv/"));
    window->startBroadcastIndependentApplication(HbbTVURL("http://b.tv/"));
    tesmo_hbbtv_release_window(window);
    window = tesmo_hbbtv_create_window();
    tickAll();
    EXPECT_EQ(running(), nullptr);
    const size_t granted = platform().ofType(HBBTV_NOTIFICATION_REQUEST_WINDOW).size();
    EXPECT_EQ(platform().ofType(HBBTV_NOTIFICATION_RELEASE_WINDOW).size(), granted)
        << "every browser window given back";
}

TEST_F(LifetimeSafetyTest, LateNotificationsForAReleasedWindowFindNothing)
{
    LogCapture log;
    runAutostart(table({entry(1, 1)}));
    DAXO_TesmoWindow* browser = runningBrowserWindow();
    tesmo_hbbtv_release_window(window);
    EXPECT_FALSE(tesmo_hbbtv_is_hbbtv_window(browser));
    EXPECT_EQ(tesmo_hbbtv_get_window_identifier(browser), nullptr);
    queue(new LoadSuccessEvent(browser));
    tickAll();
    EXPECT_TRUE(log.contains(LOG_LEVEL_ERR, "LoadSuccessEvent", "Could not get Window for given tesmo window."));
    EXPECT_EQ(tesmo_hbbtv_get_daxo_window(window), nullptr);
    EXPECT_FALSE(tesmo_hbbtv_is_within_boundaries(window, "http://app1.tv/"));
    EXPECT_EQ(tesmo_hbbtv_set_time_shifted(window, 1), HBBTV_STATUS_FAILED);
    window = nullptr;
}

TEST_F(LifetimeSafetyTest, ReleasingAWindowTwiceDoesNotDeleteItTwice)
{
    HBBTV_Window* released = window;
    tesmo_hbbtv_release_window(released);
    tesmo_hbbtv_release_window(released);
    window = tesmo_hbbtv_create_window();
    EXPECT_NE(window, nullptr) << "the policy slot was given back";
}

TEST_F(LifetimeSafetyTest, TableOfARunningApplicationOutlivesTheWindowsReferences)
{
    Application* app = runAutostart(table({entry(1, 1)}, 1));
    deliver(table({entry(2, 1)}, 2));  // tearing down: the first stays until its successor runs
    deliver(table({entry(3, 1)}, 3));
    deliver(table({entry(4, 1)}, 4));
    EXPECT_EQ(running(), app);
    EXPECT_EQ(app->getAITApplication()->getApplicationIdentifier(), 1) << "its entry is still readable";
    tickAll();
}

TEST(LifecycleSoakTest, TenThousandStartStopAndFailCycles)
{
    FakeWorld::get().reset();
    PlatformListener::get().reset();
    tesmo_hbbtv_init(nullptr);
    PlatformListener::get().install();
    HBBTV_Window* window = tesmo_hbbtv_create_window();
    for (int i = 0; i < 10000; ++i) {
        Application* app = window->startBroadcastIndependentApplication(HbbTVURL("http://tv/" + std::to_string(i % 7)));
        tesmo_hbbtv_tick();
        switch (i % 3) {
        case 0:
            window->reportLoadSuccess(app->getDaxoWindow());
            window->shutdownApplication(app, false, false);
            break;
        case 1:
            window->reportLoadFailed(app->getDaxoWindow());
            break;
        default:
            tesmo_hbbtv_release_window(window);
            window = tesmo_hbbtv_create_window();
            break;
        }
        tesmo_hbbtv_tick();
        PlatformListener::get().notices.clear();
        FakeWorld::get().reset();
    }
    tesmo_hbbtv_shutdown();
    PlatformListener::get().reset();
}

}  // namespace
