// How a window takes new tables: which application starts, which one continues, which is
// torn down.

#include "LifecycleFixture.h"

using namespace TesmoHbbTV;
using namespace tesmo_test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

using ActivationTest = LifecycleTest;

TEST_F(ActivationTest, HighestPriorityAutostartWithASupportedProfileStarts)
{
    LogCapture log;
    ApplicationDescriptorFields newer;
    newer.priority = 9;
    newer.profiles = {{0x0000, 1, 2, 1}};  // beyond the terminal's 1.1.1
    App tooNew = App(0x10, 7, 1).with(applicationDescriptor(newer)).with(httpTransport(1, "http://new.tv/"));
    deliver(table({entry(1, 2, 20), tooNew, entry(2, 1, 5), entry(3, 1, 3)}));

    EXPECT_THAT(platform().startedUrls(), ElementsAre("http://app2.tv/index.html"));
    EXPECT_TRUE(
        log.contains(LOG_LEVEL_WARN, "Window", "Attempt to start application with unsupported platform profile."));
    EXPECT_TRUE(log.contains(LOG_LEVEL_LOG, "Window",
                             "First AUTOSTART application failed to start, started lower prio one instead."));
    EXPECT_THAT(openedUrls(), IsEmpty()) << "the start waits for a tick";

    tickAll();
    ASSERT_NE(running(), nullptr);
    EXPECT_TRUE(running()->isLaunchedAsAutostart());
    EXPECT_TRUE(running()->isBroadcastRelated());
    EXPECT_EQ(window->getState(), Window::RUNNING);
    EXPECT_THAT(openedUrls(), ElementsAre("http://app2.tv/index.html"));
    EXPECT_THAT(world().callNames(), ::testing::Contains("tm_clear_history"));
    EXPECT_EQ(tesmo_hbbtv_get_window_identifier(runningBrowserWindow()), window);
    EXPECT_EQ(tesmo_hbbtv_get_daxo_window(window), runningBrowserWindow());

    ConfigurationManager::getInstance()->setHbbTVVersion({1, 2, 1});
    EXPECT_TRUE(table({tooNew})->getAITApplication(0u)->isPlatformProfileSupported());
}

TEST_F(ActivationTest, ApplicationStillSignalledContinuesWithTheNewEntry)
{
    Application* app = runAutostart(table({entry(1, 1)}, 1));
    ASSERT_NE(app, nullptr);
    platform().notices.clear();

    ref_ptr<AIT> next = table({entry(1, 2, 1, true)}, 2);
    LogCapture log;
    deliver(next);
    tickAll();
    EXPECT_EQ(running(), app);
    EXPECT_EQ(app->getAITApplication(), next->getAITApplication(0u));
    EXPECT_EQ(app->getTransport(), next->getAITApplication(0u)->getTransports()[0].get());
    EXPECT_TRUE(log.contains(LOG_LEVEL_LOG, "Window", "Allowing running application to continue at new AIT load."));
    EXPECT_THAT(platform().types(), IsEmpty());
}

TEST_F(ActivationTest, KilledOrMissingApplicationIsReplacedByTheNewAutostart)
{
    for (const std::vector<App>& successor :
         {std::vector<App>{entry(1, 4), entry(2, 1)}, std::vector<App>{entry(2, 1)}}) {
        Application* first = runAutostart(table({entry(1, 1)}, 1));
        ASSERT_NE(first, nullptr);
        const uint32_t firstId = first->getID();
        LogCapture log;
        deliver(table(successor, 2));
        EXPECT_TRUE(log.contains(LOG_LEVEL_LOG, "Window", "Tearing down running application at new AIT load"));
        EXPECT_EQ(window->getState(), Window::TEARING_DOWN);
        EXPECT_EQ(running(), first) << "the old application lives until its successor starts";
        tickAll();
        ASSERT_NE(running(), nullptr);
        EXPECT_NE(running()->getID(), firstId);
        EXPECT_EQ(running()->getApplicationIdentifier(), 2);
        EXPECT_TRUE(log.contains(LOG_LEVEL_LOG, "Window", "Shutting down existing application."));
        tesmo_hbbtv_release_window(window);
        window = tesmo_hbbtv_create_window();
        tesmo_hbbtv_set_broadcast_window(window);
    }
}

TEST_F(ActivationTest, TearingDownWithoutSuccessorShutsTheApplicationDown)
{
    runAutostart(table({entry(1, 1)}, 1));
    deliver(table({entry(1, 4)}, 2));
    EXPECT_EQ(running(), nullptr);
    EXPECT_EQ(window->getState(), Window::IDLE);
    EXPECT_EQ(platform().ofType(HBBTV_NOTIFICATION_APPLICATION_STOP).size(), 1u);
}

TEST_F(ActivationTest, ServiceBoundApplicationDoesNotSurviveAServiceChange)
{
    runAutostart(table({entry(1, 1, 1, false, true)}, 1));
    const uint32_t id = running()->getID();
    window->setAIT(ref_ptr<AIT>());
    EXPECT_TRUE(window->getAIT()->isInvalid());
    deliver(table({entry(1, 1, 1, false, true)}, 1));
    tickAll();
    ASSERT_NE(running(), nullptr);
    EXPECT_NE(running()->getID(), id) << "restarted as a new instance";
}

TEST_F(ActivationTest, InvalidatedTableStartsNothing)
{
    EXPECT_FALSE(window->setAIT(ref_ptr<AIT>()));
    EXPECT_EQ(window->getAIT().get(), nullptr);
    window->setAIT(table({entry(1, 1)}));
    window->setAIT(ref_ptr<AIT>());
    EXPECT_FALSE(window->activateAIT());
    EXPECT_THAT(platform().startedUrls(), IsEmpty());
}

TEST_F(ActivationTest, ApplicationStartedByUrlIsTornDownAtEveryTable)
{
    window->startBroadcastIndependentApplication(HbbTVURL("http://portal.tv/"));
    tickAll();
    ASSERT_NE(running(), nullptr);
    EXPECT_FALSE(running()->isBroadcastRelated());
    deliver(table({entry(1, 1)}));
    tickAll();
    EXPECT_EQ(running()->getApplicationIdentifier(), 1);
}

TEST_F(ActivationTest, RunningStateWithoutApplicationFallsBackToIdle)
{
    LogCapture log;
    window->setState(Window::RUNNING);
    deliver(table({entry(1, 1)}));
    EXPECT_TRUE(
        log.contains(LOG_LEVEL_WARN, "Window",
                     "When activating AIT the manager state was RUNNING, but no running application was found."));
    EXPECT_THAT(platform().startedUrls(), ElementsAre("http://app1.tv/index.html"));
}

TEST_F(ActivationTest, ApplicationThatLeftTheBroadcastRejoinsIt)
{
    Application* app = runAutostart(table({entry(1, 1)}, 1));
    app->setBroadcastRelated(false);
    LogCapture log;
    deliver(table({entry(1, 2)}, 2));
    EXPECT_EQ(running(), app);
    EXPECT_TRUE(app->isBroadcastRelated());
    EXPECT_TRUE(log.contains(LOG_LEVEL_LOG, "Window",
                             "Transferring state of running application from broadcast independent (transitioned "
                             "earlier from broadcast related) to broadcast related at new AIT load."));
}

DAXO_AITApplicationTransport xmlHttp{3, "http://app1.tv/", 0, 0, 0, 0, 0};
DAXO_AITProfile xmlProfile{0x0000, 1, 1, 1};

ref_ptr<AIT> xmlTable()
{
    DAXO_AITApplication record{"xml", 0x10, 1, 1, 3, 0, 1, 1, &xmlProfile, 1, &xmlHttp, "index.html", 0, nullptr, 0};
    DAXO_AITData data{1, &record};
    ref_ptr<AIT> ait(new AIT());
    EXPECT_TRUE(ait->parse(data));
    return ait;
}

TEST_F(ActivationTest, BroadbandApplicationJoinsTheBroadcastWhenItsPageIsInsideTheBoundary)
{
    runAutostart(xmlTable());
    Application* app = running();
    ASSERT_NE(app, nullptr);
    EXPECT_FALSE(app->isBroadcastRelated());

    world().loadingUrl = "http://app1.tv/index.html";
    LogCapture log;
    deliver(table({entry(1, 2)}, 1));
    EXPECT_EQ(running(), app);
    EXPECT_TRUE(app->isBroadcastRelated());
    EXPECT_TRUE(log.contains(
        LOG_LEVEL_LOG, "Window",
        "Transferring state of running application from broadcast independent to broadcast related at new AIT load"));
    EXPECT_EQ(app->getTransport()->getUrlBase(), "http://app1.tv/");
}

TEST_F(ActivationTest, BroadbandApplicationOutsideTheBoundaryIsTornDown)
{
    runAutostart(xmlTable());
    Application* app = running();
    world().loadingUrl = "http://elsewhere.tv/page.html";
    deliver(table({entry(1, 2)}, 1));
    EXPECT_EQ(window->getState(), Window::IDLE);
    EXPECT_EQ(running(), nullptr);
    EXPECT_EQ(platform().ofType(HBBTV_NOTIFICATION_APPLICATION_STOP).size(), 1u);
    (void)app;
}

TEST_F(ActivationTest, XmlTableLeavesTheBroadcastTableToComeBack)
{
    ref_ptr<AIT> broadcast = table({entry(1, 1)});
    window->setAIT(broadcast);
    window->setAIT(xmlTable());
    window->scheduleReactivateAIT(true);
    EXPECT_EQ(window->getAIT().get(), broadcast.get());
}

}  // namespace
