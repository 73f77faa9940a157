// The real AIT sections of the shared captures, posted as a platform would post them.

#include "BroadcastFixture.h"
#include "SharedData.h"
#include "TsSections.h"

using namespace tesmo_test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

using RealBroadcastTest = BroadcastTest;

std::vector<Bytes> capturedSections(const char* capture, uint16_t pid)
{
    return sectionsOnPid(sharedDataDir() + "/captures/" + capture, pid);
}

// The table's second entry carries a zero-length descriptor, which refuses the section
// after its first entry was taken; the table never becomes current, so nothing starts
// (an independent decoder lists four applications).
TEST_F(RealBroadcastTest, AbcTableIsRefusedAndStartsNothing)
{
    REQUIRE_SHARED_DATA();
    for (const Bytes& section : capturedSections("abc-au-hbbtv.ts", 0x157C))
        postSection(section);
    tickAll();
    EXPECT_THAT(world().callsTo("hbbtv_ait_completed"), IsEmpty());
    EXPECT_THAT(platform().notices, IsEmpty());
    EXPECT_THAT(world().callsTo("tm_open_url"), IsEmpty());
}

TEST_F(RealBroadcastTest, RaiApplicationsNeedATerminalOfVersion141)
{
    REQUIRE_SHARED_DATA();
    const std::vector<Bytes> sections = capturedSections("rai-dtt-hbbtv.ts", 0x07D2);
    ASSERT_EQ(sections.size(), 1u);
    for (uint16_t identity : {1, 2}) {
        HBBTV_EventData* terminal = platformEvent();
        terminal->terminal_identity.version = identity;
        post(HBBTV_EVENT_TERMINAL_IDENTITY, terminal);
        postSimple(HBBTV_EVENT_AIT_WITHDRAWN);
        LogCapture log;
        postSection(sections[0]);
        tickAll();
        EXPECT_TRUE(
            log.contains(LOG_LEVEL_WARN, "Window", "Attempt to start application with unsupported platform profile."))
            << identity;
        EXPECT_TRUE(log.contains(LOG_LEVEL_WARN, "Window", "AUTOSTART application failed to start.")) << identity;
    }
    EXPECT_THAT(world().callsTo("hbbtv_ait_completed"),
                ElementsAre(Call{"hbbtv_ait_completed", {"0"}}, Call{"hbbtv_ait_completed", {"0"}}));
    const std::vector<Notice> updates = platform().ofType(HBBTV_NOTIFICATION_AIT_UPDATE);
    ASSERT_EQ(updates.size(), 2u);
    ASSERT_EQ(updates[0].applications.size(), 2u);
    EXPECT_EQ(updates[0].applications[0].applicationId, 0x65);
    EXPECT_THAT(updates[0].applications[0].urls,
                ElementsAre("dvb://1.2.3.2a/RemoteControl/index.html?delivery=2",
                            "https://www.raiplay.it/hbbtv/launcher/RemoteControl/index.html?delivery=2"));
    EXPECT_THAT(platform().ofType(HBBTV_NOTIFICATION_APPLICATION_START), IsEmpty());
}

}  // namespace
