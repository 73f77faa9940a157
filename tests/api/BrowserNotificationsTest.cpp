// The browser core's notifications end to end: loads, protocol streams from the carousel,
// script requests, XML AITs and closing windows.

#include "BroadcastFixture.h"

using namespace tesmo_test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class BrowserNotificationsTest : public BroadcastTest {
protected:
    // Starts the AUTOSTART application of a fresh table; its page is not loaded yet.
    DAXO_TesmoWindow* startBroadcastApplication()
    {
        postSection(autostartSection());
        tickAll();
        return appWindow();
    }
    // The same, with broadband down: the application runs from the carousel.
    DAXO_TesmoWindow* startCarouselApplication()
    {
        postSimple(HBBTV_EVENT_BROADBAND_DOWN);
        return startBroadcastApplication();
    }
    DAXO_TesmoWindow* startBroadbandApplication(const char* url)
    {
        HBBTV_EventData* start = platformEvent();
        start->start_broadcast_independent.window = window;
        start->start_broadcast_independent.url = platformString(url);
        post(HBBTV_EVENT_START_BROADCAST_INDEPENDENT, start);
        tickAll();
        return appWindow();
    }
    bool protocolStart(DAXO_TesmoWindow* browserWindow, const char* url, void* stream, int* result)
    {
        DAXO_ProtocolRecord record{url, nullptr, stream};
        return notify(browserWindow, DAXO_TESMO_EVT_PROTOCOL_LOADING_START, &record, result);
    }
    int xhr(DAXO_TesmoWindow* browserWindow, const char* base, const char* url, int32_t& permission)
    {
        DAXO_RequestRecord record{base, url, -7};
        int result = 99;
        EXPECT_TRUE(notify(browserWindow, DAXO_TESMO_EVT_XHR_REQUEST, &record, &result));
        permission = record.permission;
        return result;
    }
};

TEST_F(BrowserNotificationsTest, UnmanagedWindowsAreLeftToThePlatform)
{
    auto* stranger = reinterpret_cast<DAXO_TesmoWindow*>(0x7777);
    DAXO_LoadRecord load{};
    DAXO_ProtocolRecord protocol{"dvb://1.2.3.4/x", nullptr, nullptr};
    DAXO_RequestRecord request{"http://a/", "http://a/b", 0};
    DAXO_AITData ait{0, nullptr};
    const std::pair<int, void*> cases[] = {{2, nullptr},   {9, nullptr},    {11, &load}, {12, nullptr}, {49, &protocol},
                                           {124, nullptr}, {149, &request}, {157, &ait}, {3, nullptr}};
    for (const auto& c : cases) {
        int result = 42;
        EXPECT_FALSE(notify(stranger, c.first, c.second, &result)) << c.first;
        EXPECT_EQ(result, 42) << c.first;
    }
}

TEST_F(BrowserNotificationsTest, FinishedLoadPromotesTheApplicationAtALaterTick)
{
    DAXO_TesmoWindow* browser = startBroadcastApplication();
    LogCapture log;
    EXPECT_EQ(loadFinished(browser), 0);
    EXPECT_FALSE(log.contains(LOG_LEVEL_LOG, "Window", "Initial page of application successfully loaded."));
    tickAll();
    EXPECT_TRUE(log.contains(LOG_LEVEL_LOG, "Window", "Initial page of application successfully loaded."));
    int result = 5;
    EXPECT_TRUE(notify(browser, DAXO_TESMO_EVT_LOADING_STARTED, nullptr, &result));
    EXPECT_EQ(result, 0);
}

TEST_F(BrowserNotificationsTest, NotFoundAndConnectionFailuresFailOverToTheCarousel)
{
    DAXO_TesmoWindow* browser = startBroadcastApplication();
    LogCapture log;
    EXPECT_EQ(loadFinished(browser, 0, 404), 0);
    tickAll();
    EXPECT_THAT(openedUrls(), ElementsAre("http://app1.tv/index.html", "dvb://1.2.3.5/index.html"));

    EXPECT_EQ(loadFinished(appWindow(), 3, 200), 0);
    EXPECT_TRUE(log.contains(LOG_LEVEL_ERR, "tesmo_hbbtv", "DAXO_LOAD_CONNECTION_FAILED"));
    EXPECT_TRUE(log.contains(LOG_LEVEL_ERR, "Window", "Automatic load of AUTOSTART application failed."));
    int result = 9;
    EXPECT_TRUE(notify(browser, DAXO_TESMO_EVT_LOADING_FAILED, nullptr, &result))
        << "still the window's browser window";
    EXPECT_EQ(result, -3) << "but no application's any more";
}

TEST_F(BrowserNotificationsTest, FailedLaterPageIsNotTakenOver)
{
    DAXO_TesmoWindow* browser = startBroadcastApplication();
    loadFinished(browser);
    tickAll();
    int result = 9;
    EXPECT_TRUE(notify(browser, DAXO_TESMO_EVT_LOADING_FAILED, nullptr, &result));
    EXPECT_EQ(result, -3);
}

TEST_F(BrowserNotificationsTest, ClosedWindowEndsItsApplicationLater)
{
    DAXO_TesmoWindow* browser = startBroadcastApplication();
    int result = 77;
    EXPECT_TRUE(notify(browser, DAXO_TESMO_EVT_WINDOW_CLOSE, nullptr, &result));
    EXPECT_EQ(result, 77);
    EXPECT_THAT(platform().ofType(HBBTV_NOTIFICATION_APPLICATION_STOP), IsEmpty());
    tickAll();
    EXPECT_EQ(platform().ofType(HBBTV_NOTIFICATION_APPLICATION_STOP).size(), 1u);
}

TEST_F(BrowserNotificationsTest, CarouselFileDeliveredAtOnceInPieces)
{
    DAXO_TesmoWindow* browser = startCarouselApplication();
    world().reset();
    world().getFileResult = DSMCC_OK;
    world().mimeType = "text/html";
    world().filePieces = {"<html>", "<body/>", "</html>"};
    void* stream = reinterpret_cast<void*>(0x51);
    int result = 9;
    EXPECT_TRUE(protocolStart(browser, "dvb:/page.html", stream, &result));
    EXPECT_EQ(result, 0);
    EXPECT_EQ(world().calls(), (std::vector<Call>{
                                   {"dsmcc_get_file", {"1.2.3.5/page.html", ptr(stream)}},
                                   {"dsmcc_get_mime_type", {ptr(stream)}},
                                   {"tm_protocol_set_mime_type", {ptr(stream), "text/html"}},
                                   {"dsmcc_read", {ptr(stream)}},
                                   {"tm_protocol_write", {ptr(stream), "<html>"}},
                                   {"dsmcc_read", {ptr(stream)}},
                                   {"tm_protocol_write", {ptr(stream), "<body/>"}},
                                   {"dsmcc_read", {ptr(stream)}},
                                   {"tm_protocol_write", {ptr(stream), "</html>"}},
                                   {"dsmcc_read", {ptr(stream)}},
                                   {"tm_protocol_finished", {ptr(stream), "200"}},
                                   {"dsmcc_close_file", {ptr(stream)}},
                               }));
}

TEST_F(BrowserNotificationsTest, PendingCarouselFileArrivesWithTheReadyEventUntilStopped)
{
    DAXO_TesmoWindow* browser = startBroadcastApplication();
    void* stream = reinterpret_cast<void*>(0x52);
    int result = 9;
    protocolStart(browser, "dvb://1.2.3.5/late.js", stream, &result);
    world().reset();
    world().filePieces = {"var x;"};
    HBBTV_EventData* ready = platformEvent();
    ready->dsmcc_file.handle = stream;
    post(HBBTV_EVENT_DSMCC_FILE_READY, ready);
    tickAll();
    EXPECT_EQ(world().callsTo("tm_protocol_write").size(), 1u);
    EXPECT_EQ(world().callsTo("tm_protocol_finished").size(), 1u);

    DAXO_ProtocolRecord stop{"dvb://1.2.3.5/late.js", nullptr, stream};
    EXPECT_TRUE(notify(browser, DAXO_TESMO_EVT_PROTOCOL_LOADING_STOP, &stop, &result));
    LogCapture log;
    EXPECT_FALSE(notify(browser, DAXO_TESMO_EVT_PROTOCOL_LOADING_STOP, &stop, &result));
    EXPECT_TRUE(log.contains(LOG_LEVEL_ERR, "tesmo_hbbtv", "Unrecognized id, releasing to platform"));
    HBBTV_EventData* again = platformEvent();
    again->dsmcc_file.handle = stream;
    post(HBBTV_EVENT_DSMCC_FILE_ERROR, again);
    tickAll();
    EXPECT_TRUE(log.contains(LOG_LEVEL_WARN, "OCDownloadManager", "Unknown id when reporting download failed"));
}

TEST_F(BrowserNotificationsTest, FailedCarouselFilesEndTheRequestWith404)
{
    DAXO_TesmoWindow* browser = startBroadcastApplication();
    void* stream = reinterpret_cast<void*>(0x53);
    int result = 9;
    world().reset();
    world().getFileResult = DSMCC_FILE_ERROR_CODE;
    LogCapture log;
    protocolStart(browser, "dvb:/missing.png", stream, &result);
    EXPECT_TRUE(log.contains(LOG_LEVEL_ERR, "tesmo_hbbtv", "Failed to load dvb url."));
    EXPECT_EQ(world().callsTo("tm_protocol_failed"), (std::vector<Call>{{"tm_protocol_failed", {ptr(stream), "404"}}}));

    world().reset();
    world().getFileResult = DSMCC_OK;
    world().readFailsAtPiece = 0;
    protocolStart(browser, "dvb:/broken.png", stream, &result);
    EXPECT_EQ(world().callsTo("tm_protocol_failed").size(), 2u) << "reported twice: on the read and on the start";
    EXPECT_EQ(world().callsTo("dsmcc_close_file").size(), 2u);
}

TEST_F(BrowserNotificationsTest, BroadbandApplicationsGetNoCarouselFiles)
{
    DAXO_TesmoWindow* browser = startBroadbandApplication("http://portal.tv/");
    world().reset();
    void* stream = reinterpret_cast<void*>(0x54);
    int result = 9;
    EXPECT_TRUE(protocolStart(browser, "dvb://1.2.3.5/x", stream, &result));
    EXPECT_EQ(world().calls(), (std::vector<Call>{{"tm_protocol_failed", {ptr(stream), "404"}}}));
}

TEST_F(BrowserNotificationsTest, ScriptRequestsAreVettedAgainstTheBoundaries)
{
    DAXO_TesmoWindow* browser = startBroadcastApplication();
    int32_t permission = -1;
    EXPECT_EQ(xhr(browser, "http://app1.tv/index.html", "http://app1.tv/data.json", permission), 0);
    EXPECT_EQ(permission, HBBTV_XHR_PERMISSION_DEFAULT);
    EXPECT_EQ(platform().ofType(HBBTV_NOTIFICATION_XHR).at(0).url, "http://app1.tv/data.json");

    LogCapture log;
    EXPECT_EQ(xhr(browser, "http://app1.tv/index.html", "http://tracker.tv/x", permission), 0);
    EXPECT_EQ(permission, HBBTV_XHR_PERMISSION_CORE_DECIDES);
    EXPECT_TRUE(
        log.contains(LOG_LEVEL_DEBUG, "tesmo_hbbtv", "Letting core decide on an out of bound http(s) XHR request."));
    world().sameCarousel = 0;
    EXPECT_EQ(xhr(browser, "http://app1.tv/index.html", "dvb://9.9.9.9/x", permission), 0);
    EXPECT_EQ(permission, HBBTV_XHR_PERMISSION_DENY);
    EXPECT_TRUE(log.contains(LOG_LEVEL_DEBUG, "tesmo_hbbtv", "Denying out of bound dvb XHR request."));
}

TEST_F(BrowserNotificationsTest, XmlAitFromABroadbandApplicationStartsItsApplication)
{
    DAXO_TesmoWindow* browser = startBroadbandApplication("http://portal.tv/");
    DAXO_AITProfile profile{0x0000, 1, 1, 1};
    DAXO_AITApplicationTransport http{3, "http://xml.tv/", 0, 0, 0, 0, 0};
    DAXO_AITApplication app{"From XML", 19, 500, 1, 3, 0, 1, 1, &profile, 1, &http, "start.html", 0, nullptr, 0};
    DAXO_AITData record{1, &app};
    int result = 9;
    EXPECT_TRUE(notify(browser, DAXO_TESMO_EVT_AIT, &record, &result));
    EXPECT_EQ(result, 0);
    EXPECT_THAT(platform().ofType(HBBTV_NOTIFICATION_AIT_UPDATE), IsEmpty()) << "activated at a later tick";
    tickAll();
    const std::vector<Notice> updates = platform().ofType(HBBTV_NOTIFICATION_AIT_UPDATE);
    ASSERT_EQ(updates.size(), 1u);
    EXPECT_EQ(updates[0].isXmlAit, 1);
    EXPECT_EQ(openedUrls().back(), "http://xml.tv/start.html");
}

TEST_F(BrowserNotificationsTest, XmlAitIsRefusedWhenNotAllowedOrInvalid)
{
    DAXO_TesmoWindow* broadcast = startBroadcastApplication();
    DAXO_AITData empty{0, nullptr};
    int result = 9;
    LogCapture log;
    EXPECT_TRUE(notify(broadcast, DAXO_TESMO_EVT_AIT, &empty, &result));
    EXPECT_EQ(result, 1);
    EXPECT_TRUE(log.contains(LOG_LEVEL_ERR, "tesmo_hbbtv", "XML AIT received but not allowed to start"));

    DAXO_TesmoWindow* broadband = startBroadbandApplication("http://portal.tv/");
    EXPECT_TRUE(notify(broadband, DAXO_TESMO_EVT_AIT, &empty, &result));
    EXPECT_EQ(result, 1);
    EXPECT_TRUE(log.contains(LOG_LEVEL_ERR, "tesmo_hbbtv", "Invalid XML AIT received, rejecting"));
    tickAll();
    EXPECT_EQ(platform().ofType(HBBTV_NOTIFICATION_APPLICATION_STOP).size(), 2u) << "the broadband application ends";
}

TEST_F(BrowserNotificationsTest, XmlParseFailureReportedByTheCore)
{
    DAXO_TesmoWindow* browser = startBroadcastApplication();
    int result = 31;
    EXPECT_TRUE(notify(browser, DAXO_TESMO_EVT_XML_AIT_PARSE_FAILED, nullptr, &result));
    EXPECT_EQ(result, 31);
    loadFinished(browser);
    tickAll();
    EXPECT_EQ(openedUrls().back(), "dvb://1.2.3.5/index.html") << "the load success counted as a failure";
}

}  // namespace
