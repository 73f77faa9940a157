// Starting through the listener gate, failing over on load errors, stopping and time shift.

#include "LifecycleFixture.h"
#include "tesmo_hbbtv/bindings.h"

using namespace TesmoHbbTV;
using namespace tesmo_test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

using StartStopTest = LifecycleTest;

std::vector<std::pair<uint32_t, uint32_t>> managerEvents;
std::vector<uint32_t> destroyedApplications;

void recordManagerEvent(uint32_t event, uint32_t id)
{
    managerEvents.emplace_back(event, id);
}
void recordDestroyed(uint32_t id)
{
    destroyedApplications.push_back(id);
}

class ScriptListenersTest : public StartStopTest {
protected:
    void SetUp() override
    {
        StartStopTest::SetUp();
        managerEvents.clear();
        destroyedApplications.clear();
        native_ApplicationManagerSetListener(recordManagerEvent);
        native_ApplicationManagerSetAppDestroyedListener(recordDestroyed);
    }
    void TearDown() override
    {
        native_ApplicationManagerSetListener(nullptr);
        native_ApplicationManagerSetAppDestroyedListener(nullptr);
        StartStopTest::TearDown();
    }
};

TEST_F(StartStopTest, StartNotificationCarriesTheEntryAndTheUrl)
{
    deliver(table({App(0x10, 0x4002, 1)
                       .with(applicationDescriptor({}))
                       .with(httpTransport(1, "http://tv/"))
                       .with(usageDescriptor(1))}));
    const std::vector<Notice> starts = platform().ofType(HBBTV_NOTIFICATION_APPLICATION_START);
    ASSERT_EQ(starts.size(), 1u);
    EXPECT_EQ(starts[0].window, window);
    EXPECT_EQ(starts[0].flagA, 1) << "broadcast signalled";
    EXPECT_EQ(starts[0].flagC, 1) << "autostart";
    EXPECT_EQ(starts[0].organisationId, 0x10u);
    EXPECT_EQ(starts[0].applicationId, 0x4002);
    EXPECT_EQ(starts[0].url, "http://tv/");
    EXPECT_EQ(starts[0].usageType, 1);

    tickAll();
    const std::vector<Notice> related = platform().ofType(HBBTV_NOTIFICATION_BROADCAST_RELATED_CHANGE);
    ASSERT_EQ(related.size(), 1u) << "announced while the application is built";
    EXPECT_EQ(related[0].flagA, 1);
    EXPECT_EQ(related[0].flagB, 1);
    EXPECT_EQ(related[0].organisationId, 0u) << "the identifiers are copied only after the announcement";
    EXPECT_EQ(platform().ofType(HBBTV_NOTIFICATION_REQUEST_WINDOW)[0].window, window);
}

TEST_F(StartStopTest, ListenerMayBlockAndKeepOrBlockAndKill)
{
    Application* first = runAutostart(table({entry(1, 1)}, 1));
    ASSERT_NE(first, nullptr);

    LogCapture log;
    platform().startAction = HBBTV_APPLICATION_ACTION_BLOCK_AND_KEEP;
    EXPECT_EQ(window->startBroadcastIndependentApplication(HbbTVURL("http://other.tv/")), nullptr);
    tickAll();
    EXPECT_EQ(running(), first);
    EXPECT_EQ(window->getState(), Window::RUNNING);
    EXPECT_TRUE(log.contains(LOG_LEVEL_DEBUG, "Window", "Leaving running application."));

    platform().startAction = HBBTV_APPLICATION_ACTION_BLOCK_AND_KILL;
    EXPECT_EQ(window->startBroadcastIndependentApplication(HbbTVURL("http://other.tv/")), nullptr);
    EXPECT_EQ(running(), first) << "killed at a later tick";
    tickAll();
    EXPECT_EQ(running(), nullptr);
    EXPECT_TRUE(log.contains(LOG_LEVEL_DEBUG, "Window", "Killing running application."));
}

TEST_F(StartStopTest, InvalidIdentifierIsBlockedUnlessTheListenerAllowsIt)
{
    deliver(table({entry(0x8001, 1)}));
    tickAll();
    EXPECT_EQ(running(), nullptr);
    EXPECT_EQ(platform().startedUrls().size(), 1u) << "the platform was asked";

    platform().startAction = HBBTV_APPLICATION_ACTION_START;
    deliver(table({entry(0x8001, 1)}, 2));
    tickAll();
    EXPECT_NE(running(), nullptr);
}

TEST_F(StartStopTest, NextAutostartEntryIsTriedWhenTheLastTransportFails)
{
    deliver(table({entry(1, 1, 5), entry(2, 1, 1)}));
    tickAll();
    LogCapture log;
    EXPECT_TRUE(window->reportLoadFailed(runningBrowserWindow()));
    EXPECT_TRUE(
        log.contains(LOG_LEVEL_ERR, "Window", "Loading failed, trying to load next AUTOSTART application instead."));
    tickAll();
    EXPECT_EQ(running()->getApplicationIdentifier(), 2);

    EXPECT_TRUE(window->reportLoadFailed(runningBrowserWindow()));
    EXPECT_TRUE(log.contains(LOG_LEVEL_ERR, "Window", "Automatic load of AUTOSTART application failed."));
    tickAll();
    EXPECT_EQ(running(), nullptr);
}

TEST_F(ScriptListenersTest, FailedChildGivesWayToItsParent)
{
    Application* parent = runAutostart(table({entry(1, 1)}));
    Application* child = window->createApplication(HbbTVURL("http://child.tv/"), nullptr);
    ASSERT_NE(child, nullptr);
    child->setParentApplication(parent);
    LogCapture log;
    tickAll();
    EXPECT_EQ(running(), child);
    EXPECT_TRUE(log.contains(
        LOG_LEVEL_DEBUG, "Window",
        "Allowing currently running application to live as fallback until initial page of new application loaded."));
    EXPECT_TRUE(window->applicationExists(parent));

    const uint32_t childId = child->getID();
    EXPECT_TRUE(window->reportLoadFailed(child->getDaxoWindow()));
    EXPECT_TRUE(log.contains(LOG_LEVEL_ERR, "Window", "Loading failed, parent application will not be killed."));
    EXPECT_EQ(running(), parent);
    tickAll();
    EXPECT_FALSE(window->findApplication(childId));
    EXPECT_THAT(managerEvents, ElementsAre(std::make_pair(3u, childId)));
    EXPECT_THAT(destroyedApplications, ElementsAre(childId));
}

TEST_F(ScriptListenersTest, LoadedChildRetiresItsParentAndIsShown)
{
    Application* parent = runAutostart(table({entry(1, 1)}));
    const uint32_t parentId = parent->getID();
    Application* child = window->createApplication(HbbTVURL("http://child.tv/"), nullptr);
    child->setParentApplication(parent);
    tickAll();
    platform().notices.clear();
    child->show();
    EXPECT_THAT(platform().types(), IsEmpty()) << "not shown before its first page";
    window->reportLoadSuccess(child->getDaxoWindow());
    EXPECT_THAT(platform().types(), ElementsAre(HBBTV_NOTIFICATION_SHOW_WINDOW));
    tickAll();
    EXPECT_THAT(destroyedApplications, ElementsAre(parentId));
    EXPECT_FALSE(child->hasParentApplication());
    child->hide();
    EXPECT_EQ(platform().notices.back().type, HBBTV_NOTIFICATION_HIDE_WINDOW);
}

TEST_F(StartStopTest, StoppingTheLastBroadcastApplicationCanBringTheTableBack)
{
    Application* app = runAutostart(table({entry(1, 1)}));
    ASSERT_NE(app, nullptr);
    LogCapture log;
    platform().reactivateAit = true;
    EXPECT_TRUE(window->shutdownApplication(app, true, false));
    EXPECT_TRUE(log.contains(LOG_LEVEL_LOG, "Window", "Reactivating AIT..."));
    EXPECT_EQ(platform().startedUrls().size(), 2u) << "the table's AUTOSTART application starts again";

    const std::vector<Notice> stops = platform().ofType(HBBTV_NOTIFICATION_APPLICATION_STOP);
    ASSERT_EQ(stops.size(), 1u);
    EXPECT_EQ(stops[0].flagA, 1);
    EXPECT_EQ(stops[0].url, "http://app1.tv/index.html");
    EXPECT_EQ(platform().ofType(HBBTV_NOTIFICATION_RELEASE_WINDOW).size(), 1u);
}

TEST_F(StartStopTest, PendingApplicationCannotBeShutDown)
{
    Application* pending = window->startBroadcastIndependentApplication(HbbTVURL("http://tv/"));
    EXPECT_FALSE(window->shutdownApplication(pending, true, false));
    EXPECT_FALSE(window->shutdownApplication(nullptr, true, false));
}

TEST_F(StartStopTest, RefusedBrowserWindowEndsTheStart)
{
    LogCapture log;
    platform().grantWindows = false;
    window->startBroadcastIndependentApplication(HbbTVURL("http://tv/"));
    tickAll();
    EXPECT_EQ(running(), nullptr);
    EXPECT_TRUE(log.contains(LOG_LEVEL_WARN, "Window", "startPendingApplication(): Failed to initialize application."));
    EXPECT_THAT(openedUrls(), IsEmpty());
}

TEST_F(StartStopTest, TimeShiftEndsApplicationsThatCannotFollowIt)
{
    Recording aware;
    aware.flags = 0x40 | 0x20;
    App follows = entry(2, 1);
    follows.with(recordingDescriptor(aware));

    runAutostart(table({entry(1, 1), follows}));
    EXPECT_EQ(running()->getApplicationIdentifier(), 1);
    LogCapture log;
    EXPECT_EQ(tesmo_hbbtv_set_time_shifted(window, 1), HBBTV_STATUS_OK);
    EXPECT_EQ(tesmo_hbbtv_set_time_shifted(window, 1), HBBTV_STATUS_FAILED) << "unchanged";
    EXPECT_TRUE(log.contains(LOG_LEVEL_LOG, "Window", "Reactivating AIT..."));
    EXPECT_TRUE(log.contains(LOG_LEVEL_LOG, "Window",
                             "First AUTOSTART application failed to start, started lower prio one instead."));
    tickAll();
    ASSERT_NE(running(), nullptr);
    EXPECT_EQ(running()->getApplicationIdentifier(), 2) << "only the trick-mode-aware application runs time-shifted";
    EXPECT_EQ(tesmo_hbbtv_set_time_shifted(window, 1), HBBTV_STATUS_FAILED);
    EXPECT_EQ(tesmo_hbbtv_set_time_shifted(window, -3), HBBTV_STATUS_OK);
    EXPECT_FALSE(window->isTimeShifted());
    EXPECT_EQ(tesmo_hbbtv_set_time_shifted(nullptr, 1), HBBTV_STATUS_FAILED);
}

TEST_F(StartStopTest, BoundariesOfTheRunningApplication)
{
    EXPECT_FALSE(tesmo_hbbtv_is_within_boundaries(window, "http://app1.tv/x"));
    runAutostart(table({App(0x10, 1, 1)
                            .with(applicationDescriptor({}))
                            .with(httpTransport(1, "http://app1.tv/"))
                            .with(boundaryDescriptor({"http://partner.tv/"}))}));
    EXPECT_TRUE(tesmo_hbbtv_is_within_boundaries(window, "http://app1.tv/x"));
    EXPECT_TRUE(tesmo_hbbtv_is_within_boundaries(window, "http://partner.tv/y"));
    EXPECT_FALSE(tesmo_hbbtv_is_within_boundaries(window, "http://other.tv/"));
    EXPECT_FALSE(tesmo_hbbtv_is_within_boundaries(window, nullptr));
}

}  // namespace
