// The script bindings end to end, as the browser core's script engine calls them.

#include <cmath>

#include "BroadcastFixture.h"

using namespace tesmo_test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

const long PAGE = 77;  // the script side's handle of the page's browser window

class BindingsTest : public BroadcastTest {
protected:
    // A broadcast application from a table whose entry is signed, with its page known to
    // the browser core under PAGE.
    void* startSignedApplication(uint16_t id = 0x4001)
    {
        ApplicationDescriptorFields fields;
        fields.labels = {2};
        postSection(
            AITSection()
                .application(App(0x10, id, 1)
                                 .with(applicationDescriptor(fields))
                                 .with(carouselTransport(2, 0xa))
                                 .with(locationDescriptor("index.html"))
                                 .with(usageDescriptor(1)))
                .application(
                    App(0x10, 0x20, 2).with(applicationDescriptor({})).with(httpTransport(1, "http://sibling.tv/")))
                .bytes(),
            reinterpret_cast<void*>(0xCAFE));
        tickAll();
        world().windowsByHandle[PAGE] = appWindow();
        void* application = nullptr;
        EXPECT_EQ(native_AppManGetApplicationId(PAGE, &application), 0);
        return application;
    }
};

TEST_F(BindingsTest, ApplicationIdOfAPage)
{
    void* id = nullptr;
    LogCapture log;
    EXPECT_EQ(native_AppManGetApplicationId(PAGE, &id), 3);
    EXPECT_TRUE(log.contains(LOG_LEVEL_ERR, "ApplicationManager", "No window found in native call"));
    void* app = startSignedApplication();
    EXPECT_NE(app, nullptr);
    EXPECT_EQ(world().callsTo("tm_get_window").back().args, (std::vector<std::string>{ptr(core()), "77"}));
    world().getWindowResult = -1;
    EXPECT_EQ(native_AppManGetApplicationId(PAGE, &id), 3);
}

TEST_F(BindingsTest, ShowHideAndUnknownIdentifiers)
{
    void* app = startSignedApplication();
    platform().notices.clear();
    EXPECT_EQ(native_ApplicationShow(app), 0);
    EXPECT_EQ(native_ApplicationHide(app), 0);
    EXPECT_THAT(platform().types(), ElementsAre(HBBTV_NOTIFICATION_SHOW_WINDOW, HBBTV_NOTIFICATION_HIDE_WINDOW));
    LogCapture log;
    EXPECT_EQ(native_ApplicationShow(reinterpret_cast<void*>(9999)), 3);
    EXPECT_EQ(native_ApplicationDestroyApplication(reinterpret_cast<void*>(9999)), 3);
    EXPECT_EQ(native_ApplicationDestroyApplication(nullptr), 3);
    EXPECT_TRUE(log.contains(LOG_LEVEL_DEBUG, "ApplicationManager",
                             "Native application manager api called with invalid appId."));
}

TEST_F(BindingsTest, CreateFromTheCurrentTableOrFromBroadband)
{
    void* parent = startSignedApplication();
    void* child = reinterpret_cast<void*>(1);
    EXPECT_EQ(native_ApplicationCreateApplication("dvb://current.ait/10.zz", 0, parent, &child), 3);
    EXPECT_EQ(child, nullptr);

    EXPECT_EQ(native_ApplicationCreateApplication("dvb://current.ait/10.20?x=1", 1, parent, &child), 0);
    ASSERT_NE(child, nullptr);
    EXPECT_EQ(platform().startedUrls().back(), "http://sibling.tv/?x=1");

    postSimple(HBBTV_EVENT_BROADBAND_DOWN);
    tickAll();
    LogCapture log;
    EXPECT_EQ(native_ApplicationCreateApplication("http://portal.tv/", 0, parent, &child), 1);
    EXPECT_TRUE(log.contains(LOG_LEVEL_DEBUG, "ApplicationManager", "Create application failed"));
    EXPECT_EQ(native_ApplicationCreateApplication("http://portal.tv/", 0, reinterpret_cast<void*>(555), &child), 3);
    EXPECT_TRUE(log.contains(LOG_LEVEL_DEBUG, "ApplicationManager",
                             "Invalid parent application id in native application create call"));
}

TEST_F(BindingsTest, ChildStartsBesideItsParentAndDestroyEndsIt)
{
    void* parent = startSignedApplication();
    loadFinished(appWindow());
    tickAll();
    void* child = nullptr;
    ASSERT_EQ(native_ApplicationCreateApplication("http://child.tv/", 0, parent, &child), 0);
    tickAll();
    EXPECT_THAT(platform().ofType(HBBTV_NOTIFICATION_APPLICATION_STOP), IsEmpty()) << "the parent lives on as fallback";
    EXPECT_EQ(native_ApplicationDestroyApplication(child), 0);
    tickAll();
    const std::vector<Notice> stops = platform().ofType(HBBTV_NOTIFICATION_APPLICATION_STOP);
    ASSERT_EQ(stops.size(), 2u) << "the parent first, then the child";
    EXPECT_EQ(stops[1].url, "http://child.tv/");
}

TEST_F(BindingsTest, FreeMemoryAndCurrentChannel)
{
    double memory = 0;
    EXPECT_EQ(native_AppPrivateDataGetFreeMem(nullptr, nullptr, nullptr, &memory), 0);
    EXPECT_EQ(memory, -1);
    platform().freeMemory = 123456;
    native_AppPrivateDataGetFreeMem(nullptr, nullptr, nullptr, &memory);
    EXPECT_EQ(memory, 123456);

    void* app = startSignedApplication();
    void* channel = nullptr;
    EXPECT_EQ(native_AppPrivateDataGetCurrentChannel(app, &channel), 0);
    EXPECT_EQ(channel, reinterpret_cast<void*>(0xCAFE));
    EXPECT_EQ(native_AppPrivateDataGetCurrentChannel(reinterpret_cast<void*>(4242), &channel), 3);
}

TEST_F(BindingsTest, TrustFollowsSignatureBoundaryAndListener)
{
    EXPECT_EQ(native_PermissionsIsTrusted(PAGE, "dvb://1.2.3.a/index.html"), 6) << "no application";
    startSignedApplication();
    EXPECT_EQ(native_PermissionsIsTrusted(PAGE, "dvb://1.2.3.a/index.html"), 0);
    const Notice trusted = platform().ofType(HBBTV_NOTIFICATION_TRUSTED).back();
    EXPECT_EQ(trusted.flagB, 1);
    EXPECT_EQ(trusted.applicationId, 0x4001);
    EXPECT_EQ(trusted.usageType, 1);
    EXPECT_EQ(trusted.url, "dvb://1.2.3.a/index.html");
    platform().trusted = false;
    EXPECT_EQ(native_PermissionsIsTrusted(PAGE, "dvb://1.2.3.a/index.html"), 6);

    tesmo_hbbtv_release_window(window);
    window = tesmo_hbbtv_create_window();
    tesmo_hbbtv_set_broadcast_window(window);
    platform().trusted.reset();
    startSignedApplication(0x0101);
    EXPECT_EQ(native_PermissionsIsTrusted(PAGE, "dvb://1.2.3.a/index.html"), 6) << "unsigned";
    platform().trusted = true;
    EXPECT_EQ(native_PermissionsIsTrusted(PAGE, "dvb://1.2.3.a/index.html"), 0);
}

TEST_F(BindingsTest, BroadcastRelationAndLeavingTheBroadcast)
{
    EXPECT_EQ(native_PermissionsIsBroadcastRelated(PAGE, "dvb://1.2.3.a/x"), 6);
    startSignedApplication();
    EXPECT_EQ(native_PermissionsIsBroadcastRelated(PAGE, "dvb://1.2.3.a/x"), 0);
    world().sameCarousel = 0;
    EXPECT_EQ(native_PermissionsIsBroadcastRelated(PAGE, "http://elsewhere.tv/"), 6);

    EXPECT_EQ(native_AppManNotifySetChannelCalled(PAGE, "dvb://1.2.3.a/x", nullptr), 0);
    EXPECT_EQ(native_PermissionsIsBroadcastRelated(PAGE, "dvb://1.2.3.a/x"), 6) << "the page left the broadcast";
    EXPECT_EQ(platform().ofType(HBBTV_NOTIFICATION_BROADCAST_RELATED_CHANGE).back().flagA, 0);
    EXPECT_EQ(native_AppManNotifySetChannelCalled(555, "x", nullptr), 0);
}

TEST_F(BindingsTest, KeySetsAreReadWrittenAndRouteKeys)
{
    world().supportedKeys = 0x1FF;
    tesmo_hbbtv_shutdown();
    tesmo_hbbtv_init(core());
    platform().install();
    window = tesmo_hbbtv_create_window();
    tesmo_hbbtv_set_broadcast_window(window);
    void* app = startSignedApplication();
    DAXO_TesmoWindow* browser = appWindow();

    double value = -5;
    EXPECT_EQ(native_KeySetGetValue(app, &value), 0);
    EXPECT_EQ(value, 0) << "a broadcast application starts without keys";
    EXPECT_FALSE(tesmo_hbbtv_key_input(browser, 0, 403, 0));
    EXPECT_EQ(native_KeySetGetMaximumValue(nullptr, &value), 0);
    EXPECT_EQ(value, 0x1FF);

    EXPECT_EQ(native_KeySetSetValue(app, 0x201, &value), 0);
    EXPECT_EQ(value, 0x1) << "ALPHA is not supported";
    world().reset();
    EXPECT_TRUE(tesmo_hbbtv_key_input(browser, 1, 403, 0));
    EXPECT_THAT(world().calls(), IsEmpty()) << "a query injects nothing";
    EXPECT_TRUE(tesmo_hbbtv_key_input(browser, 0, 403, 4));
    EXPECT_THAT(world().calls(), ElementsAre(Call{"daxo_keyboard_evt", {"0", "403", "4"}},
                                             Call{"daxo_keyboard_evt", {"1", "403", "4"}}));
    EXPECT_FALSE(tesmo_hbbtv_key_input(browser, 1, 404, 0)) << "outside the set, whatever the query flag";
    EXPECT_FALSE(tesmo_hbbtv_key_input(reinterpret_cast<DAXO_TesmoWindow*>(0xBAD), 0, 403, 0));
    EXPECT_EQ(native_KeySetSetValue(app, 1e12, &value), 0);
    EXPECT_EQ(value, 0x1FF) << "out of range becomes the largest value, then masked";
    EXPECT_EQ(native_KeySetSetValue(app, -1.9, &value), 0);
    EXPECT_EQ(value, 0x1FF);
    EXPECT_EQ(native_KeySetSetValue(app, std::nan(""), &value), 0);
    EXPECT_EQ(native_KeySetSetValue(app, 0x1FF, &value), 0);
    const std::vector<Notice> changes = platform().ofType(HBBTV_NOTIFICATION_KEYSET_CHANGED);
    ASSERT_EQ(changes.size(), 5u) << "every write, also an unchanged one";
    EXPECT_EQ(changes[0].browserWindow, browser);
    EXPECT_EQ(changes[0].keyset, 1);
    EXPECT_EQ(native_KeySetSetValue(reinterpret_cast<void*>(999), 1, &value), 3);
    EXPECT_EQ(native_KeySetGetValue(reinterpret_cast<void*>(999), &value), 3);
}

TEST_F(BindingsTest, StreamEventSubscriptionPaths)
{
    EXPECT_EQ(native_BroadcastAddStreamEventListener("ev", nullptr, nullptr, nullptr, nullptr, PAGE), 3);
    startSignedApplication();
    void* name = reinterpret_cast<void*>(0xA);
    void* listener = reinterpret_cast<void*>(0xB);
    EXPECT_EQ(native_BroadcastAddStreamEventListener("dvb://1.2.3/ev", name, listener, nullptr, nullptr, PAGE), 0);
    EXPECT_EQ(native_BroadcastAddStreamEventListener("abc/dvb://x", name, listener, nullptr, nullptr, PAGE), 0);
    EXPECT_EQ(native_BroadcastAddStreamEventListener("events", name, listener, nullptr, nullptr, PAGE), 0);
    std::vector<std::string> paths;
    for (const Call& call : world().callsTo("dsmcc_stream_event_subscribe"))
        paths.push_back(call.args[0]);
    EXPECT_THAT(paths, ElementsAre("1.2.3/ev", "b://x", "1.2.3.a/events"));
    EXPECT_EQ(world().callsTo("dsmcc_stream_event_subscribe")[0].args[1], ptr(name));

    EXPECT_EQ(native_BroadcastAddXMLStreamEventListener(name, 65537.0, 4294967295.0, listener, nullptr, nullptr, PAGE),
              0);
    EXPECT_EQ(world().callsTo("dsmcc_xml_stream_event_subscribe")[0].args,
              (std::vector<std::string>{ptr(name), "1", "3", "65535", ptr(listener), "null", "null"}));
    EXPECT_EQ(native_BroadcastAddXMLStreamEventListener(name, std::nan(""), -1.0, nullptr, nullptr, nullptr, PAGE), 0);

    EXPECT_EQ(native_BroadcastRemoveStreamEventListener(nullptr, name, listener), 0);
    EXPECT_EQ(native_BroadcastRemoveAllStreamEventListeners(listener), 0);
    EXPECT_EQ(world().callsTo("dsmcc_stream_event_unsubscribe")[0].args,
              (std::vector<std::string>{ptr(name), ptr(listener)}));
    EXPECT_EQ(world().callsTo("dsmcc_stream_event_unsubscribe_all").size(), 1u);
}

TEST_F(BindingsTest, PagesOfBroadbandApplicationsCannotSubscribe)
{
    HBBTV_EventData* start = platformEvent();
    start->start_broadcast_independent.window = window;
    start->start_broadcast_independent.url = platformString("http://portal.tv/");
    post(HBBTV_EVENT_START_BROADCAST_INDEPENDENT, start);
    tickAll();
    world().windowsByHandle[PAGE] = appWindow();
    EXPECT_EQ(native_BroadcastAddStreamEventListener("dvb://1.2.3/ev", nullptr, nullptr, nullptr, nullptr, PAGE), 3);
    EXPECT_EQ(native_BroadcastAddXMLStreamEventListener(nullptr, 1, 2, nullptr, nullptr, nullptr, PAGE), 3);
}

}  // namespace
