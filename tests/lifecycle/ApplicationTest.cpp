#include "LifecycleFixture.h"

using namespace TesmoHbbTV;
using namespace tesmo_test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

using ApplicationTest = LifecycleTest;

TEST_F(ApplicationTest, IdentifiersRiseByOneAndAreNeverReused)
{
    const uint32_t before = Application::next_id;
    auto* first = new Application(window, HbbTVURL("http://a/"), nullptr);
    EXPECT_EQ(first->getID(), before);
    delete first;
    Application second(window, HbbTVURL("http://b/"), nullptr);
    EXPECT_EQ(second.getID(), before + 1);
}

TEST_F(ApplicationTest, UrlOnlyApplicationIsBroadbandShownAndGetsEveryKey)
{
    world().supportedKeys = 0x3FF;
    tesmo_hbbtv_shutdown();
    tesmo_hbbtv_init(nullptr);
    platform().install();
    window = tesmo_hbbtv_create_window();
    Application app(window, HbbTVURL("http://a/x?y#z"), nullptr);
    EXPECT_FALSE(app.isBroadcastRelated());
    EXPECT_TRUE(app.isShown());
    EXPECT_EQ(app.getKeySet()->getValue(), 0x3FF);
    EXPECT_EQ(app.getOrganisationIdentifier(), 0u);
    EXPECT_THAT(platform().notices, IsEmpty());
    EXPECT_TRUE(app.getApplicationDomain()->isWithinBoundaries("http://a/other"));
}

TEST_F(ApplicationTest, BroadcastApplicationStartsHiddenWithoutKeys)
{
    ref_ptr<AIT> ait = table({entry(0x4001, 1)});
    Application app(window, HbbTVURL("http://app/"), ait->getAITApplication(0u));
    EXPECT_TRUE(app.isBroadcastRelated());
    EXPECT_FALSE(app.isShown());
    EXPECT_EQ(app.getKeySet()->getValue(), 0);
    EXPECT_EQ(app.getApplicationIdentifier(), 0x4001);
    EXPECT_EQ(platform().ofType(HBBTV_NOTIFICATION_BROADCAST_RELATED_CHANGE).size(), 1u);
    app.setBroadcastRelated(true);
    EXPECT_EQ(platform().notices.size(), 1u) << "an unchanged value sends nothing";
    EXPECT_EQ(app.getApplicationDomain(), ait->getAITApplication(0u)->getApplicationDomain());
}

TEST_F(ApplicationTest, WindowIsRequestedOnceAndGivenBackOnDeletion)
{
    auto* app = new Application(window, HbbTVURL("http://a/"), nullptr);
    world().reset();
    EXPECT_TRUE(app->init());
    EXPECT_FALSE(app->init());
    DAXO_TesmoWindow* browser = app->getDaxoWindow();
    app->loadInitialPage();
    EXPECT_THAT(world().calls(), ElementsAre(Call{"tm_clear_history", {ptr(browser)}},
                                             Call{"tm_open_url", {ptr(browser), "http://a/"}}));
    delete app;
    const std::vector<Notice> released = platform().ofType(HBBTV_NOTIFICATION_RELEASE_WINDOW);
    ASSERT_EQ(released.size(), 1u);
    EXPECT_EQ(released[0].browserWindow, browser);
}

TEST_F(ApplicationTest, ShowAndHideNeedABrowserWindow)
{
    Application app(window, HbbTVURL("http://a/"), nullptr);
    app.hide();
    app.show();
    EXPECT_THAT(platform().notices, IsEmpty());
    app.init();
    app.hide();
    app.show();
    EXPECT_THAT(platform().types(), ElementsAre(HBBTV_NOTIFICATION_REQUEST_WINDOW, HBBTV_NOTIFICATION_HIDE_WINDOW,
                                                HBBTV_NOTIFICATION_SHOW_WINDOW));
}

TEST_F(ApplicationTest, CarouselApplicationsAskTheCarouselClientAboutOtherPages)
{
    ref_ptr<AIT> ait = table({App(0x10, 1).with(applicationDescriptor({})).with(carouselTransport(1, 5))});
    Application app(window, HbbTVURL("dvb://1.2.3.5/index.html"), ait->getAITApplication(0u));
    EXPECT_FALSE(app.isWithinApplicationBoundaries("dvb://9.9.9.9/x")) << "no transport yet";
    app.setTransport(ait->getAITApplication(0u)->getTransports()[0]);
    world().sameCarousel = 1;
    EXPECT_TRUE(app.isWithinApplicationBoundaries("dvb://9.9.9.9/x"));
    EXPECT_EQ(world().callsTo("dsmcc_same_carousel")[0].args,
              (std::vector<std::string>{"dvb://9.9.9.9/x", "dvb://1.2.3.5/index.html"}));
    world().sameCarousel = 0;
    EXPECT_FALSE(app.isWithinApplicationBoundaries("dvb://9.9.9.9/x"));
    EXPECT_TRUE(app.isWithinApplicationBoundaries("dvb://1.2.3.5/other.html")) << "inside its own boundary";
}

}  // namespace
