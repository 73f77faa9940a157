// Listeners that call back into the library, as an integrator's do: each case once read or
// wrote freed memory (run under AddressSanitizer in CI).

#include "BroadcastFixture.h"

using namespace tesmo_test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

const long PAGE = 77;

class ReentrancyTest : public BroadcastTest {
protected:
    void whenNotified(HBBTV_NotificationType type, std::function<void(HBBTV_NotificationData*)> action)
    {
        platform().onNotice = [type, action](HBBTV_NotificationType seen, HBBTV_NotificationData* data) {
            if (seen == type)
                action(data);
        };
    }

    // A broadband application with its first page loaded, known to scripts under PAGE;
    // returns its script identifier.
    void* runBroadbandApplication()
    {
        HBBTV_EventData* start = platformEvent();
        start->start_broadcast_independent.window = window;
        start->start_broadcast_independent.url = platformString("http://parent.tv/");
        post(HBBTV_EVENT_START_BROADCAST_INDEPENDENT, start);
        tickAll();
        loadFinished(appWindow());
        tickAll();
        return scriptId(appWindow());
    }
    void* scriptId(DAXO_TesmoWindow* browserWindow)
    {
        world().windowsByHandle[PAGE] = browserWindow;
        void* id = nullptr;
        native_AppManGetApplicationId(PAGE, &id);
        return id;
    }
    // The parent's child, started and loading its first page.
    void* startChild(void* parent)
    {
        void* child = nullptr;
        EXPECT_EQ(native_ApplicationCreateApplication("http://child.tv/", 0, parent, &child), 0);
        tickAll();
        return child;
    }

    std::vector<std::string> stoppedUrls() const
    {
        std::vector<std::string> urls;
        for (const Notice& n : platform().ofType(HBBTV_NOTIFICATION_APPLICATION_STOP))
            urls.push_back(n.url);
        return urls;
    }
    std::vector<DAXO_TesmoWindow*> releasedBrowserWindows() const
    {
        std::vector<DAXO_TesmoWindow*> released;
        for (const Notice& n : platform().ofType(HBBTV_NOTIFICATION_RELEASE_WINDOW))
            released.push_back(n.browserWindow);
        return released;
    }
};

TEST_F(ReentrancyTest, ListenerClosesTheWindowOfTheApplicationThatStops)
{
    postSection(autostartSection());
    tickAll();
    DAXO_TesmoWindow* browser = appWindow();
    loadFinished(browser);
    tickAll();
    whenNotified(HBBTV_NOTIFICATION_APPLICATION_STOP, [](HBBTV_NotificationData* data) {
        tesmo_hbbtv_release_window(static_cast<HBBTV_Window*>(data->application.window));
    });
    int result = 0;
    notify(browser, DAXO_TESMO_EVT_WINDOW_CLOSE, nullptr, &result);
    tickAll();
    EXPECT_THAT(stoppedUrls(), ElementsAre("http://app1.tv/index.html"));
    EXPECT_THAT(releasedBrowserWindows(), ElementsAre(browser));
    EXPECT_EQ(tesmo_hbbtv_get_broadcast_window(), nullptr);
    EXPECT_FALSE(tesmo_hbbtv_is_hbbtv_window(browser));
}

TEST_F(ReentrancyTest, ReactivatingListenerWhileAClosedChildTakesItsParentDown)
{
    void* parent = runBroadbandApplication();
    startChild(parent);
    DAXO_TesmoWindow* childWindow = appWindow();
    platform().reactivateAit = true;
    int result = 0;
    notify(childWindow, DAXO_TESMO_EVT_WINDOW_CLOSE, nullptr, &result);
    tickAll();
    EXPECT_THAT(stoppedUrls(), ElementsAre("http://parent.tv/", "http://child.tv/")) << "each stops once";
    EXPECT_EQ(native_ApplicationHide(parent), 3);
}

TEST_F(ReentrancyTest, ReleasingTheWindowWhileAChildLoadsEndsBoth)
{
    void* parent = runBroadbandApplication();
    DAXO_TesmoWindow* parentWindow = appWindow();
    void* child = startChild(parent);
    DAXO_TesmoWindow* childWindow = appWindow();
    tesmo_hbbtv_release_window(window);
    EXPECT_THAT(stoppedUrls(), ElementsAre("http://parent.tv/", "http://child.tv/"));
    EXPECT_THAT(releasedBrowserWindows(), ElementsAre(parentWindow, childWindow));
    EXPECT_EQ(native_ApplicationShow(parent), 3);
    EXPECT_EQ(native_ApplicationShow(child), 3);
}

TEST_F(ReentrancyTest, OneBrowserWindowSharedByParentAndChild)
{
    platform().grantOneWindow = true;
    void* parent = runBroadbandApplication();
    void* child = startChild(parent);
    EXPECT_EQ(scriptId(appWindow()), child) << "the page in the window is the child's";
    tesmo_hbbtv_release_window(window);
    EXPECT_THAT(stoppedUrls(), ElementsAre("http://parent.tv/", "http://child.tv/"));
    EXPECT_THAT(releasedBrowserWindows(), ElementsAre(appWindow())) << "one release for one browser window";
    EXPECT_EQ(native_ApplicationHide(parent), 3);
    EXPECT_EQ(native_ApplicationHide(child), 3);
}

TEST_F(ReentrancyTest, ListenerClosesTheWindowWhenThePageLeavesTheBroadcast)
{
    postSection(autostartSection());
    tickAll();
    world().windowsByHandle[PAGE] = appWindow();
    HBBTV_Window* closing = window;
    whenNotified(HBBTV_NOTIFICATION_BROADCAST_RELATED_CHANGE,
                 [closing](HBBTV_NotificationData*) { tesmo_hbbtv_release_window(closing); });
    EXPECT_EQ(native_AppManNotifySetChannelCalled(PAGE, "http://app1.tv/index.html", nullptr), 0);
    EXPECT_THAT(stoppedUrls(), ElementsAre("http://app1.tv/index.html")) << "ended when the binding returned";
    EXPECT_EQ(native_AppManGetApplicationId(PAGE, nullptr), 3);
}

TEST_F(ReentrancyTest, ListenerClosesTheWindowWhileAnApplicationStartsInIt)
{
    // Asked whether the application may start, or for its browser window: nothing opens.
    for (HBBTV_NotificationType asked : {HBBTV_NOTIFICATION_APPLICATION_START, HBBTV_NOTIFICATION_REQUEST_WINDOW}) {
        HBBTV_Window* closing = window;
        whenNotified(asked, [closing](HBBTV_NotificationData*) { tesmo_hbbtv_release_window(closing); });
        postSection(autostartSection(uint8_t(asked)));
        tickAll();
        EXPECT_THAT(openedUrls(), IsEmpty()) << asked;
        EXPECT_EQ(tesmo_hbbtv_get_broadcast_window(), nullptr) << asked;
        window = tesmo_hbbtv_create_window();
        tesmo_hbbtv_set_broadcast_window(window);
    }
    EXPECT_EQ(releasedBrowserWindows().size(), 1u) << "the granted browser window goes back";

    // The same from a page's script.
    platform().onNotice = nullptr;
    void* parent = runBroadbandApplication();
    HBBTV_Window* closing = window;
    whenNotified(HBBTV_NOTIFICATION_APPLICATION_START,
                 [closing](HBBTV_NotificationData*) { tesmo_hbbtv_release_window(closing); });
    void* child = reinterpret_cast<void*>(1);
    EXPECT_EQ(native_ApplicationCreateApplication("http://child.tv/", 0, parent, &child), 1);
    EXPECT_EQ(child, nullptr);
    tickAll();
    EXPECT_THAT(stoppedUrls(), ElementsAre("http://parent.tv/"));
}

TEST_F(ReentrancyTest, InitAndShutdownFromAListenerAreRefused)
{
    postSection(autostartSection());
    whenNotified(HBBTV_NOTIFICATION_APPLICATION_START, [](HBBTV_NotificationData*) {
        tesmo_hbbtv_shutdown();
        tesmo_hbbtv_init(nullptr);
    });
    LogCapture log;
    tickAll();
    EXPECT_THAT(log.messages(),
                ::testing::IsSupersetOf(
                    {LogLine(LOG_LEVEL_ERR, "tesmo_hbbtv", "tesmo_hbbtv_shutdown called from a callback: refused"),
                     LogLine(LOG_LEVEL_ERR, "tesmo_hbbtv", "tesmo_hbbtv_init called from a callback: refused")}));
    EXPECT_EQ(tesmo_hbbtv_get_broadcast_window(), window) << "the library is as it was";
    EXPECT_EQ(platform().ofType(HBBTV_NOTIFICATION_REQUEST_WINDOW).size(), 1u);
    EXPECT_EQ(world().callsTo("hbbtv_ait_stop").size(), 0u);
}

TEST_F(ReentrancyTest, LabelListedTwiceFailsOverOnce)
{
    // Both labels name the one common transport: a failed load may not retry it forever.
    ApplicationDescriptorFields fields;
    fields.labels = {1, 1};
    postSection(AITSection()
                    .common(httpTransport(1, "http://common.tv/"))
                    .application(App(0x10, 1, 1).with(applicationDescriptor(fields)).with(locationDescriptor("a.html")))
                    .bytes());
    tickAll();
    for (int attempt = 0; attempt < 5; ++attempt) {
        loadFinished(appWindow(), 0, 404);
        tickAll();
    }
    EXPECT_THAT(platform().startedUrls(), ElementsAre("http://common.tv/a.html"));
}

}  // namespace
