// Platform events end to end: sections, service changes, starts and stops by the platform,
// broadband, memory and identity, with every record freed as the platform expects.

#include "BroadcastFixture.h"

using namespace tesmo_test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

using PlatformEventsTest = BroadcastTest;

std::vector<std::pair<uint32_t, uint32_t>> managerEvents;
void recordManagerEvent(uint32_t event, uint32_t id)
{
    managerEvents.emplace_back(event, id);
}

Bytes twoSectionTable(uint8_t version, uint8_t number)
{
    ApplicationDescriptorFields fields;
    return AITSection()
        .version(version)
        .number(number, 1)
        .application(App(0x10, uint16_t(number + 1), number == 0 ? 1 : 2)
                         .with(applicationDescriptor(fields))
                         .with(httpTransport(1, "http://part" + std::to_string(number) + ".tv/")))
        .bytes();
}

TEST_F(PlatformEventsTest, TableArrivingInPiecesAndOutOfOrderIsActivatedWhenComplete)
{
    postSection(twoSectionTable(3, 1));
    tickAll();
    EXPECT_THAT(platform().notices, IsEmpty());
    EXPECT_THAT(world().callsTo("hbbtv_ait_completed"), IsEmpty());

    postSection(twoSectionTable(3, 0));
    tickAll();
    EXPECT_THAT(world().callsTo("hbbtv_ait_completed"), ElementsAre(Call{"hbbtv_ait_completed", {"3"}}));
    const std::vector<Notice> updates = platform().ofType(HBBTV_NOTIFICATION_AIT_UPDATE);
    ASSERT_EQ(updates.size(), 1u);
    EXPECT_EQ(updates[0].window, window);
    EXPECT_EQ(updates[0].applications.size(), 2u);
    EXPECT_THAT(openedUrls(), ElementsAre("http://part0.tv/"));
}

// A name's length byte is held against the end of the descriptor loop, not its own
// descriptor: here the name takes the location descriptor that follows as its text.
TEST_F(PlatformEventsTest, NameRunningPastItsDescriptorKeepsItsBytesInTheUpdate)
{
    const Bytes nameThenLocation =
        AITSection()
            .application(App(0x10, 1, 1).with(descriptor(0x01, {'e', 'n', 'g', 7})).with(locationDescriptor("index")))
            .bytes();
    postSection(nameThenLocation);
    tickAll();
    const std::vector<Notice> updates = platform().ofType(HBBTV_NOTIFICATION_AIT_UPDATE);
    ASSERT_EQ(updates.size(), 1u);
    ASSERT_EQ(updates[0].applications.size(), 1u);
    EXPECT_EQ(updates[0].applications[0].name, "\x15\x05index");
}

TEST_F(PlatformEventsTest, RepeatedVersionChangesNothingANewVersionIsActivated)
{
    postSection(autostartSection(1));
    tickAll();
    loadFinished(appWindow());
    tickAll();
    platform().notices.clear();
    world().reset();

    postSection(autostartSection(1));
    tickAll();
    EXPECT_THAT(platform().notices, IsEmpty());
    EXPECT_THAT(world().calls(), IsEmpty());

    postSection(autostartSection(2, 7));
    tickAll();
    EXPECT_EQ(platform().ofType(HBBTV_NOTIFICATION_AIT_UPDATE).size(), 1u);
    EXPECT_THAT(openedUrls(), ElementsAre("http://app7.tv/index.html"));
    EXPECT_EQ(platform().ofType(HBBTV_NOTIFICATION_APPLICATION_STOP).size(), 1u);
}

TEST_F(PlatformEventsTest, ServiceChangeRestartsAServiceBoundApplication)
{
    ApplicationDescriptorFields bound;
    bound.serviceBound = true;
    const Bytes section =
        AITSection()
            .application(App(0x10, 1, 1).with(applicationDescriptor(bound)).with(httpTransport(1, "http://bound.tv/")))
            .bytes();
    postSection(section);
    tickAll();
    loadFinished(appWindow());
    tickAll();

    postSimple(HBBTV_EVENT_AIT_WITHDRAWN);
    tickAll();
    EXPECT_THAT(world().callNames(), ::testing::IsSupersetOf({"dsmcc_clear_cache", "hbbtv_ait_invalidate"}));
    postSection(section);
    tickAll();
    EXPECT_EQ(openedUrls().size(), 2u) << "started afresh on the new service";
    EXPECT_EQ(platform().ofType(HBBTV_NOTIFICATION_APPLICATION_STOP).size(), 1u);
}

TEST_F(PlatformEventsTest, ServiceWithoutAitEndsOnlyServiceBoundApplications)
{
    for (bool serviceBound : {true, false}) {
        ApplicationDescriptorFields fields;
        fields.serviceBound = serviceBound;
        postSection(
            AITSection()
                .version(serviceBound ? 1 : 2)
                .application(App(0x10, 1, 1).with(applicationDescriptor(fields)).with(httpTransport(1, "http://x.tv/")))
                .bytes());
        tickAll();
        platform().notices.clear();
        HBBTV_EventData* none = platformEvent();  // no section, tested word 0
        post(HBBTV_EVENT_AIT_SECTION, none);
        tickAll();
        EXPECT_EQ(platform().ofType(HBBTV_NOTIFICATION_APPLICATION_STOP).size(), serviceBound ? 1u : 0u);
    }
}

TEST_F(PlatformEventsTest, PlatformStartsAndTerminatesApplications)
{
    postSection(
        AITSection()
            .application(App(0x10, 5, 2).with(applicationDescriptor({})).with(httpTransport(1, "http://present.tv/")))
            .bytes());
    HBBTV_EventData* start = platformEvent();
    start->start_application.window = window;
    start->start_application.organisation_id = 0x10;
    start->start_application.application_id = 5;
    post(HBBTV_EVENT_START_APPLICATION, start);
    tickAll();
    EXPECT_THAT(openedUrls(), ElementsAre("http://present.tv/"));

    LogCapture log;
    HBBTV_EventData* terminate = platformEvent();
    terminate->terminate_application.window = window;
    post(HBBTV_EVENT_TERMINATE_APPLICATION, terminate);
    tickAll();
    EXPECT_TRUE(log.contains(LOG_LEVEL_LOG, "ExternalEvent", "Terminate app!"));
    EXPECT_EQ(platform().ofType(HBBTV_NOTIFICATION_APPLICATION_STOP).size(), 1u);

    HBBTV_EventData* independent = platformEvent();
    independent->start_broadcast_independent.window = window;
    independent->start_broadcast_independent.url = platformString("http://portal.tv/");
    post(HBBTV_EVENT_START_BROADCAST_INDEPENDENT, independent);
    HBBTV_EventData* stranger = platformEvent();
    stranger->start_broadcast_independent.window = reinterpret_cast<HBBTV_Window*>(0x5);
    stranger->start_broadcast_independent.url = platformString("http://never.tv/");
    post(HBBTV_EVENT_START_BROADCAST_INDEPENDENT, stranger);
    tickAll();
    EXPECT_THAT(openedUrls(), ElementsAre("http://present.tv/", "http://portal.tv/"));
}

TEST_F(PlatformEventsTest, BroadbandDownStartsFromTheCarousel)
{
    postSimple(HBBTV_EVENT_BROADBAND_DOWN);
    postSection(autostartSection());
    tickAll();
    EXPECT_THAT(openedUrls(), ElementsAre("dvb://1.2.3.5/index.html"));
    postSimple(HBBTV_EVENT_BROADBAND_UP);
    postSection(autostartSection(2, 2));
    tickAll();
    EXPECT_EQ(openedUrls().back(), "http://app2.tv/index.html");
}

TEST_F(PlatformEventsTest, LowMemoryReachesTheScriptListener)
{
    managerEvents.clear();
    native_ApplicationManagerSetListener(recordManagerEvent);
    postSimple(HBBTV_EVENT_LOW_MEMORY);
    tickAll();
    native_ApplicationManagerSetListener(nullptr);
    postSimple(HBBTV_EVENT_LOW_MEMORY);
    tickAll();
    EXPECT_THAT(managerEvents, ElementsAre(std::make_pair(0u, 0u)));
}

TEST_F(PlatformEventsTest, PlatformProfilesDecideWhatMayStart)
{
    ApplicationDescriptorFields fields;
    fields.profiles = {{0x0002, 1, 1, 1}};
    const Bytes section =
        AITSection()
            .application(App(0x10, 1, 1).with(applicationDescriptor(fields)).with(httpTransport(1, "http://p.tv/")))
            .bytes();
    postSection(section);
    tickAll();
    EXPECT_THAT(openedUrls(), IsEmpty());

    HBBTV_EventData* profiles = platformEvent();
    profiles->platform_profiles.profiles = 0x0002;
    post(HBBTV_EVENT_PLATFORM_PROFILES, profiles);
    postSimple(HBBTV_EVENT_AIT_WITHDRAWN);
    postSection(section);
    tickAll();
    EXPECT_THAT(openedUrls(), ElementsAre("http://p.tv/"));
}

TEST_F(PlatformEventsTest, RecordsOfEveryTypeAreFreedEvenWithoutAWindow)
{
    // Under LeakSanitizer: every owned string and buffer below must be freed.
    tesmo_hbbtv_release_window(window);
    postSection(autostartSection());
    for (HBBTV_EventType type : {HBBTV_EVENT_AIT_WITHDRAWN, HBBTV_EVENT_DSMCC_FILE_READY, HBBTV_EVENT_DSMCC_FILE_ERROR,
                                 HBBTV_EVENT_BROADBAND_UP, HBBTV_EVENT_LOW_MEMORY, HBBTV_EVENT_PLATFORM_PROFILES})
        postSimple(type);
    HBBTV_EventData* start = platformEvent();
    start->start_broadcast_independent.url = platformString("http://x/");
    post(HBBTV_EVENT_START_BROADCAST_INDEPENDENT, start);
    HBBTV_EventData* stream = platformEvent();
    stream->stream_event.a = platformString("a");
    stream->stream_event.d = platformString("d");
    post(HBBTV_EVENT_DSMCC_STREAM_EVENT, stream);
    HBBTV_EventData* identity = platformEvent();
    identity->terminal_identity.strings[5] = platformString("f");
    post(HBBTV_EVENT_TERMINAL_IDENTITY, identity);
    for (HBBTV_EventType type :
         {HBBTV_EVENT_AIT_SECTION, HBBTV_EVENT_START_APPLICATION, HBBTV_EVENT_START_BROADCAST_INDEPENDENT,
          HBBTV_EVENT_TERMINATE_APPLICATION, HBBTV_EVENT_DSMCC_FILE_READY, HBBTV_EVENT_DSMCC_STREAM_EVENT,
          HBBTV_EVENT_TERMINAL_IDENTITY, HBBTV_EVENT_PLATFORM_PROFILES})
        post(type, nullptr);
    tickAll();
    EXPECT_THAT(world().callsTo("tm_set_uastring_extension"),
                ElementsAre(Call{"tm_set_uastring_extension", {ptr(core()), "HbbTV/1.1.1 (; ; ; ; ; f)"}}));
}

}  // namespace
