// The platform's reading of DVB SI for programmes and the network: times in MJD and BCD,
// present/following tables with their descriptors, new versions, and sections whose bytes lie.

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <functional>

#include "DvbTime.h"
#include "ProgrammeFeed.h"
#include "ProgrammeGuide.h"
#include "SectionBuilder.h"
#include "TransportStream.h"
#include "TsWriter.h"

using namespace tesmo_test;

namespace {

const int64_t EIGHT_PM = 1795636800;  // 2026-11-25T20:00:00Z
const EitService SERVICE{0x0001, 0x0001, 0x0001};

EitEvent event(uint16_t eventId, const Bytes& descriptors, int64_t start = EIGHT_PM, uint32_t duration = 1800)
{
    return {eventId, start, duration, 4, descriptors};
}

Bytes named(const std::string& name)
{
    return shortEventDescriptor("eng", name, "");
}

// A section whose bytes were changed, with its CRC made right again.
Bytes recrc(Bytes section)
{
    section.resize(section.size() - 4);
    const uint32_t crc = crc32Mpeg(section.data(), section.size());
    for (int shift = 24; shift >= 0; shift -= 8)
        section.push_back(uint8_t(crc >> shift));
    return section;
}

// The programme the present slot holds after a whole table of a present section whose one
// event has these descriptors.
std::optional<Programme> presentWith(const Bytes& descriptors)
{
    ProgrammeGuide guide(SERVICE.serviceId);
    guide.add(eitPresentFollowingSection(SERVICE, 1, 0, {event(1, descriptors)}));
    guide.add(eitPresentFollowingSection(SERVICE, 1, 1, {}));
    return guide.current().present;
}

std::string nameIn(const std::optional<Programme>& programme)
{
    return programme ? programme->name : "-";
}

TEST(DvbTimeTest, StartTimesFromMjdAndBcd)
{
    struct Case {
        uint64_t field;
        bool valid;
        int64_t seconds;
    } const cases[] = {
        {0xC079124500, true, 750516300},  // 1993-10-13 12:45:00, the classic example
        {0x9E8B000000, true, 0},  // MJD 40587: 1970-01-01
        {0x9E8A235959, true, -1},
        {0xFFFF235959, true, (0xFFFF - 40587) * 86400LL + 86399},  // the last day 16 bits can date
        {0xC0791A4500, false, 0},  // not BCD
        {0xC079240000, false, 0},  // hour 24
        {0xC079126000, false, 0},  // minute 60
        {0xC079120060, false, 0},  // second 60
        {0xFFFFFFFFFF, false, 0},  // undefined
    };
    for (const Case& c : cases) {
        int64_t seconds = 0;
        EXPECT_EQ(dvbTime::startTime(c.field, seconds), c.valid) << std::hex << c.field;
        if (c.valid) {
            EXPECT_EQ(seconds, c.seconds) << std::hex << c.field;
        }
    }
}

TEST(DvbTimeTest, DurationsFromBcd)
{
    struct Case {
        uint32_t field;
        bool valid;
        uint32_t seconds;
    } const cases[] = {
        {0x013045, true, 5445}, {0x000000, true, 0},  {0x995959, true, 359999},
        {0x00A000, false, 0},   {0x000060, false, 0}, {0x0F0000, false, 0},
    };
    for (const Case& c : cases) {
        uint32_t seconds = 0;
        EXPECT_EQ(dvbTime::duration(c.field, seconds), c.valid) << std::hex << c.field;
        if (c.valid) {
            EXPECT_EQ(seconds, c.seconds) << std::hex << c.field;
        }
    }
}

TEST(DvbTimeTest, WhatTheSectionBuilderWritesReadsBack)
{
    for (int64_t time : {int64_t(0), int64_t(-1), EIGHT_PM, EIGHT_PM + 86399, int64_t(-3506716800)}) {
        const Bytes field = dvbStartTime(time);
        uint64_t value = 0;
        for (uint8_t byte : field)
            value = value << 8 | byte;
        int64_t seconds = 0;
        ASSERT_TRUE(dvbTime::startTime(value, seconds)) << time;
        EXPECT_EQ(seconds, time);
    }
    EXPECT_EQ(dvbDuration(5445), (Bytes{0x01, 0x30, 0x45}));
    EXPECT_EQ(dvbTime::clock(EIGHT_PM + 15 * 60), "20:15");
    EXPECT_EQ(dvbTime::clock(-60), "23:59") << "before 1970";
}

TEST(ProgrammeGuideTest, AProgrammeHasItsEventsFields)
{
    const std::optional<Programme> present = presentWith(concat({shortEventDescriptor("deu", "Nachrichten",
                                                                                      "\x15"
                                                                                      "Der Tag \xE2\x80\x93 kurz"),
                                                                 parentalRatingDescriptor({{"DEU", 9}, {"AUT", 3}}),
                                                                 componentDescriptor(0x05, 0x03, 0x21, "deu", "Video"),
                                                                 componentDescriptor(0x02, 0x03, 0x22, "eng", "")}));
    ASSERT_TRUE(present);
    EXPECT_EQ(present->eventId, 1);
    EXPECT_EQ(present->startTime, EIGHT_PM);
    EXPECT_EQ(present->duration, 1800u);
    EXPECT_EQ(present->language, "deu");
    EXPECT_EQ(present->name, "Nachrichten");
    EXPECT_EQ(present->description, "Der Tag \xE2\x80\x93 kurz");
    ASSERT_EQ(present->ratings.size(), 2u);
    EXPECT_EQ(present->ratings[0].country, "DEU");
    EXPECT_EQ(present->ratings[0].age, 12);
    EXPECT_EQ(present->ratings[1].age, 6);
    ASSERT_EQ(present->components.size(), 2u);
    EXPECT_EQ(present->components[0].streamContent, 0x05);
    EXPECT_EQ(present->components[0].componentType, 0x03);
    EXPECT_EQ(present->components[0].componentTag, 0x21);
    EXPECT_EQ(present->components[0].language, "deu");
    EXPECT_EQ(present->components[0].text, "Video");
    EXPECT_EQ(present->components[1].text, "");
}

TEST(ProgrammeGuideTest, NamesAreDvbTextInUtf8)
{
    const std::pair<std::string, std::string> cases[] = {
        {"Evening News", "Evening News"},
        {"\x15"
         "Caf\xC3\xA9",
         "Caf\xC3\xA9"},  // UTF-8 behind its selector
        {"\x0B"
         "Euro \xA4",
         "Euro \xE2\x82\xAC"},  // ISO 8859-15
        {"\x05\xDE"
         "ans",
         "\xC5\x9E"
         "ans"},  // ISO 8859-9
        {"News\x8A"
         "Now",
         "News\nNow"},  // the table's line break
        {"", ""},
    };
    for (const auto& c : cases) {
        const std::optional<Programme> present = presentWith(named(c.first));
        ASSERT_TRUE(present);
        EXPECT_EQ(present->name, c.second);
    }
}

TEST(ProgrammeGuideTest, RatingsAreMinimumAgesOnly)
{
    const std::pair<uint8_t, int> cases[] = {{0x00, -1}, {0x01, 4}, {0x09, 12}, {0x0F, 18}, {0x10, -1}, {0xFF, -1}};
    for (const auto& c : cases) {
        const std::optional<Programme> present =
            presentWith(concat({named("Film"), parentalRatingDescriptor({{"GBR", c.first}})}));
        ASSERT_TRUE(present);
        if (c.second < 0) {
            EXPECT_TRUE(present->ratings.empty()) << int(c.first);
        } else {
            ASSERT_EQ(present->ratings.size(), 1u) << int(c.first);
            EXPECT_EQ(present->ratings[0].age, c.second);
            EXPECT_EQ(present->ratings[0].country, "GBR");
        }
    }
}

TEST(ProgrammeGuideTest, EachNewVersionIsTakenOnceBothSectionsAreIn)
{
    const Bytes news = eitPresentFollowingSection(SERVICE, 1, 0, {event(1, named("News"))});
    const Bytes film = eitPresentFollowingSection(SERVICE, 1, 1, {event(2, named("Film"), EIGHT_PM + 1800)});
    const Bytes filmNow = eitPresentFollowingSection(SERVICE, 2, 0, {event(2, named("Film"), EIGHT_PM + 1800)});
    const Bytes nothingNext = eitPresentFollowingSection(SERVICE, 2, 1, {});
    struct Step {
        const Bytes& section;
        bool changed;
        int version;
        const char* present;
        const char* following;
    } const steps[] = {
        {film, false, -1, nullptr, nullptr},  // a table is not whole with one section
        {news, true, 1, "News", "Film"},
        {news, false, 1, "News", "Film"},  // the same version again changes nothing
        {film, false, 1, "News", "Film"},
        {filmNow, false, 1, "News", "Film"},
        {nothingNext, true, 2, "Film", nullptr},
        {news, false, 2, "Film", nullptr},  // the old version's sections alone make no table
        {film, true, 1, "News", "Film"},  // ... until both are in again
    };
    ProgrammeGuide guide(SERVICE.serviceId);
    for (size_t i = 0; i < sizeof steps / sizeof steps[0]; ++i) {
        const Step& step = steps[i];
        EXPECT_EQ(guide.add(step.section), step.changed) << "step " << i;
        const PresentFollowing& now = guide.current();
        EXPECT_EQ(now.version, step.version) << "step " << i;
        EXPECT_EQ(nameIn(now.present), step.present ? step.present : "-") << "step " << i;
        EXPECT_EQ(nameIn(now.following), step.following ? step.following : "-") << "step " << i;
    }
}

TEST(ProgrammeGuideTest, AnEmptyPresentSectionLeavesNowEmpty)
{
    ProgrammeGuide guide(SERVICE.serviceId);
    guide.add(eitPresentFollowingSection(SERVICE, 3, 0, {}));
    EXPECT_TRUE(guide.add(eitPresentFollowingSection(SERVICE, 3, 1, {event(7, named("Later"))})));
    EXPECT_FALSE(guide.current().present);
    ASSERT_TRUE(guide.current().following);
    EXPECT_EQ(guide.current().following->name, "Later");
}

// A section whose loops or header lie is passed over: the table stays incomplete until a
// sound one comes, and nothing is read outside the bytes given.
TEST(ProgrammeGuideTest, SectionsThatLieArePassedOver)
{
    const Bytes present = eitPresentFollowingSection(SERVICE, 1, 0, {event(1, named("News"))});
    const size_t loopLength = 14 + 10;  // the event's descriptors_loop_length
    const size_t descriptorLength = loopLength + 2 + 1;
    const std::pair<const char*, std::function<Bytes(Bytes)>> faults[] = {
        {"the descriptor loop runs past the section",
         [&](Bytes s) {
             s[loopLength] |= 0x0F;
             s[loopLength + 1] = 0xFF;
             return recrc(s);
         }},
        {"a descriptor runs past its loop",
         [&](Bytes s) {
             s[descriptorLength] = 0xF0;
             return recrc(s);
         }},
        {"the section is cut short", [](Bytes s) { return Bytes(s.begin(), s.end() - 10); }},
        {"an event header is cut short",
         [](Bytes s) {
             s.insert(s.end() - 4, 5, 0x00);
             setSectionLength(s);
             return recrc(s);
         }},
        {"its section_length says less than there is",
         [](Bytes s) {
             s[2] = uint8_t(s[2] - 1);
             return s;
         }},
        {"its CRC is wrong",
         [](Bytes s) {
             s[20] ^= 0x01;
             return s;
         }},
        {"it is shorter than a header", [](Bytes s) { return Bytes(s.begin(), s.begin() + 10); }},
        {"it is of another service",
         [](Bytes s) {
             s[4] = 0x02;
             return recrc(s);
         }},
        {"it is a table to come",
         [](Bytes s) {
             s[5] &= 0xFE;
             return recrc(s);
         }},
        {"it is a schedule", [](Bytes s) {
             s[0] = 0x50;
             return recrc(s);
         }}};
    const Bytes following = eitPresentFollowingSection(SERVICE, 1, 1, {});
    for (const auto& fault : faults) {
        ProgrammeGuide guide(SERVICE.serviceId);
        EXPECT_FALSE(guide.add(fault.second(present))) << fault.first;
        EXPECT_FALSE(guide.add(following)) << fault.first;
        EXPECT_EQ(guide.current().version, -1) << fault.first;
        EXPECT_TRUE(guide.add(present)) << fault.first << ": the sound section completes the table";
    }
}

// A descriptor that lies costs what it says, not the programme.
TEST(ProgrammeGuideTest, DescriptorsThatLieAreLeftOut)
{
    Bytes nameTooLong = named("News");
    nameTooLong[2 + 3] = 200;
    Bytes textTooLong = named("News");
    textTooLong.back() = 9;
    const Bytes shortEventTooShort = descriptor(0x4D, {'e', 'n', 'g', 0});
    const Bytes ratingCut = descriptor(0x55, {'G', 'B', 'R', 0x05, 'F', 'R'});
    const Bytes componentCut = descriptor(0x50, {0xF5, 0x03, 0x01, 'e', 'n'});
    for (const Bytes& bad : {nameTooLong, textTooLong, shortEventTooShort, ratingCut, componentCut}) {
        const std::optional<Programme> present = presentWith(concat({bad, parentalRatingDescriptor({{"GBR", 1}})}));
        ASSERT_TRUE(present);
        EXPECT_EQ(present->startTime, EIGHT_PM);
        EXPECT_TRUE(present->name.empty());
        EXPECT_TRUE(present->components.empty());
        ASSERT_FALSE(present->ratings.empty());
        EXPECT_EQ(present->ratings.back().age, 4);
    }
    const std::optional<Programme> first = presentWith(concat({named("First"), named("Second")}));
    ASSERT_TRUE(first);
    EXPECT_EQ(first->name, "First") << "the first short event names the programme";
}

TEST(ProgrammeGuideTest, AnEventWhoseTimeIsNotBcdIsNoProgramme)
{
    Bytes present = eitPresentFollowingSection(SERVICE, 1, 0, {event(1, named("News"))});
    present[14 + 4] = 0xAA;  // the start's hours
    ProgrammeGuide guide(SERVICE.serviceId);
    guide.add(recrc(present));
    EXPECT_TRUE(guide.add(eitPresentFollowingSection(SERVICE, 1, 1, {event(2, named("Film"))})));
    EXPECT_FALSE(guide.current().present);
    ASSERT_TRUE(guide.current().following);
    EXPECT_EQ(guide.current().following->name, "Film");
}

TEST(ProgrammeFeedTest, TimelineWordsForAPresentFollowing)
{
    PresentFollowing programmes;
    programmes.version = 2;
    programmes.present = Programme();
    programmes.present->name = "Evening News";
    programmes.present->startTime = EIGHT_PM + 15 * 60;
    programmes.present->duration = 30 * 60;
    EXPECT_EQ(ProgrammeFeed::describe(programmes),
              "programmes v2: now \"Evening News\" (20:15-20:45 UTC), next nothing");
}

// The NIT actual names the network; one whose loops lie is passed over.
TEST(TransportStreamTest, NetworkFromTheNit)
{
    const Bytes sound = nitSection(0x3001, 0, networkNameDescriptor("Sample Network"), {{0x0001, 0x0002}});
    Bytes descriptorsTooLong = sound;
    descriptorsTooLong[9] = 0xFF;
    Bytes streamsTooLong = sound;
    streamsTooLong[10 + 16 + 1] = 0xFF;
    Bytes nameInLatin9 = nitSection(0x3001, 0, networkNameDescriptor("\x0B\xA4 Net"), {});
    struct Case {
        Bytes nit;
        uint16_t networkId;
        const char* name;
        uint16_t originalNetworkId;
    } const cases[] = {
        {sound, 0x3001, "Sample Network", 0x0002},
        {nameInLatin9, 0x3001, "\xE2\x82\xAC Net", 0},
        {recrc(descriptorsTooLong), 0, "", 0},
        {recrc(streamsTooLong), 0, "", 0},
    };
    const std::string path = ::testing::TempDir() + "nit-" + std::to_string(getpid()) + ".ts";
    for (const Case& c : cases) {
        TsWriter ts;
        ts.writeSection(0x0000, patSection(0x0001, {{0, 0x0010}, {1, 0x0100}}));
        ts.writeSection(0x0010, c.nit);
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(ts.bytes().data()), std::streamsize(ts.bytes().size()));
        TransportStream stream;
        std::string error;
        ASSERT_TRUE(stream.open(path, error)) << error;
        EXPECT_EQ(stream.networkId(), c.networkId);
        EXPECT_EQ(stream.networkName(), c.name);
        EXPECT_EQ(stream.originalNetworkId(), c.originalNetworkId);
        ASSERT_EQ(stream.programs().size(), 1u) << "program 0 is the NIT's, not a service";
    }
    std::remove(path.c_str());
}

}  // namespace
