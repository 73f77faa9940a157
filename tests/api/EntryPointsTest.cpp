#include <gtest/gtest.h>
#include <gmock/gmock.h>

#include <cstdlib>

#include "LibraryFixture.h"
#include "LogCapture.h"

using namespace tesmo_test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

DAXO_Tesmo* const CORE = reinterpret_cast<DAXO_Tesmo*>(0x1000);

// A terminal-identity event whose first string names it, so that runs can be told apart.
HBBTV_EventData* identityEvent(const char* name, uint16_t version = 1)
{
    HBBTV_EventData* data = platformEvent();
    data->terminal_identity.version = version;
    data->terminal_identity.strings[0] = platformString(name);
    return data;
}

std::vector<std::string> userAgents()
{
    std::vector<std::string> texts;
    for (const Call& call : FakeWorld::get().callsTo("tm_set_uastring_extension"))
        texts.push_back(call.args[1]);
    return texts;
}

using EntryPointsTest = LibraryTest;

TEST_F(EntryPointsTest, InitReadsKeysThenStartsAitAndCarouselShutdownStopsThem)
{
    tesmo_hbbtv_init(CORE);
    EXPECT_THAT(world().callNames(),
                ElementsAre("hbbtv_keyset_get_supported_values", "hbbtv_ait_start", "dsmcc_start"));
    world().reset();
    tesmo_hbbtv_shutdown();
    EXPECT_THAT(world().callNames(), ElementsAre("hbbtv_ait_stop", "dsmcc_stop"));
}

TEST_F(EntryPointsTest, EachTickRunsOnlyTheOldestEvent)
{
    tesmo_hbbtv_init(CORE);
    tesmo_hbbtv_send_event(HBBTV_EVENT_TERMINAL_IDENTITY, identityEvent("first"));
    tesmo_hbbtv_send_event(HBBTV_EVENT_TERMINAL_IDENTITY, identityEvent("second"));
    tesmo_hbbtv_send_event(HBBTV_EVENT_TERMINAL_IDENTITY, identityEvent("third"));

    tesmo_hbbtv_tick();
    EXPECT_THAT(userAgents(), ElementsAre("HbbTV/1.1.1 (first; ; ; ; ; )"));
    tesmo_hbbtv_tick();
    tesmo_hbbtv_tick();
    tesmo_hbbtv_tick();
    EXPECT_THAT(userAgents(), ElementsAre("HbbTV/1.1.1 (first; ; ; ; ; )", "HbbTV/1.1.1 (second; ; ; ; ; )",
                                          "HbbTV/1.1.1 (third; ; ; ; ; )"));
}

TEST_F(EntryPointsTest, EventsBeforeInitOrAfterShutdownAreNotTaken)
{
    HBBTV_EventData* data = identityEvent("kept by caller");
    tesmo_hbbtv_send_event(HBBTV_EVENT_TERMINAL_IDENTITY, data);
    tesmo_hbbtv_tick();

    tesmo_hbbtv_init(CORE);
    tesmo_hbbtv_shutdown();
    tesmo_hbbtv_send_event(HBBTV_EVENT_TERMINAL_IDENTITY, data);
    tesmo_hbbtv_tick();

    EXPECT_THAT(userAgents(), IsEmpty());
    // Still the caller's: freeing it here would be a double free had the library taken it.
    free(data->terminal_identity.strings[0]);
    free(data);
}

TEST_F(EntryPointsTest, EventsPendingAtShutdownAreFreedWithoutTheirStrings)
{
    tesmo_hbbtv_init(CORE);
    HBBTV_EventData* data = identityEvent("never run");
    char* owned = data->terminal_identity.strings[0];
    tesmo_hbbtv_send_event(HBBTV_EVENT_TERMINAL_IDENTITY, data);
    tesmo_hbbtv_shutdown();
    EXPECT_THAT(userAgents(), IsEmpty());
    free(owned);
}

TEST_F(EntryPointsTest, TerminalIdentityBuildsTheUserAgentExtension)
{
    tesmo_hbbtv_init(CORE);
    HBBTV_EventData* full = platformEvent();
    full->terminal_identity.version = 2;
    const char* parts[6] = {"+DL", "Maker", "Model", "1.0", "2.0", "Family"};
    for (int i = 0; i < 6; ++i)
        full->terminal_identity.strings[i] = platformString(parts[i]);
    tesmo_hbbtv_send_event(HBBTV_EVENT_TERMINAL_IDENTITY, full);

    HBBTV_EventData* empty = platformEvent();
    empty->terminal_identity.version = 2;
    tesmo_hbbtv_send_event(HBBTV_EVENT_TERMINAL_IDENTITY, empty);
    HBBTV_EventData* other = platformEvent();
    other->terminal_identity.version = 7;
    tesmo_hbbtv_send_event(HBBTV_EVENT_TERMINAL_IDENTITY, other);
    tesmo_hbbtv_send_event(HBBTV_EVENT_TERMINAL_IDENTITY, nullptr);
    for (int i = 0; i < 4; ++i)
        tesmo_hbbtv_tick();

    EXPECT_THAT(
        world().callsTo("tm_set_uastring_extension"),
        ElementsAre(Call{"tm_set_uastring_extension", {ptr(CORE), "HbbTV/1.2.1 (+DL; Maker; Model; 1.0; 2.0; Family)"}},
                    Call{"tm_set_uastring_extension", {ptr(CORE), "HbbTV/1.2.1 (; ; ; ; ; )"}},
                    Call{"tm_set_uastring_extension", {ptr(CORE), "HbbTV/1.1.1 (; ; ; ; ; )"}}));
}

char* streamArgs[5];
void recordStreamEvent(char* a, char* b, char* c, char* d, void* e)
{
    streamArgs[0] = a;
    streamArgs[1] = b;
    streamArgs[2] = c;
    streamArgs[3] = d;
    streamArgs[4] = static_cast<char*>(e);
}

TEST_F(EntryPointsTest, StreamEventCallsBackWithItsFiveWordsThenFreesTheStrings)
{
    LogCapture log;
    tesmo_hbbtv_init(CORE);
    HBBTV_EventData* data = platformEvent();
    data->stream_event.callback = recordStreamEvent;
    data->stream_event.a = platformString("name");
    data->stream_event.b = platformString("data");
    data->stream_event.c = nullptr;
    data->stream_event.d = platformString("status");
    char fifth[] = "not owned";
    data->stream_event.e = fifth;
    char* a = data->stream_event.a;
    tesmo_hbbtv_send_event(HBBTV_EVENT_DSMCC_STREAM_EVENT, data);
    tesmo_hbbtv_tick();

    EXPECT_EQ(streamArgs[0], a);
    EXPECT_EQ(streamArgs[2], nullptr);
    EXPECT_EQ(streamArgs[4], fifth);
    EXPECT_THAT(log.messages(), ElementsAre(" DEBUG [ExternalEvent] E_DSMCC_STREAM_EVENT"));
}

TEST_F(EntryPointsTest, UnknownEventTypesAreIgnoredAndFreed)
{
    tesmo_hbbtv_init(CORE);
    world().reset();
    tesmo_hbbtv_send_event(static_cast<HBBTV_EventType>(13), platformEvent());
    tesmo_hbbtv_tick();
    EXPECT_THAT(world().callNames(), IsEmpty());
}

}  // namespace
