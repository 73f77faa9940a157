// The carousel client reads what the carousel writer writes, and says plainly what is wrong
// with a broken carousel instead of failing.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "CarouselFeed.h"
#include "CarouselWriter.h"
#include "ObjectCarousel.h"

using namespace carousel;
using ::testing::HasSubstr;

namespace {

std::string text(size_t size, char seed)
{
    std::string out;
    for (size_t i = 0; i < size; ++i)
        out += char('a' + (i * 7 + size_t(seed)) % 26);
    return out;
}

struct Fed {
    explicit Fed(size_t budget = ObjectCarousel::DEFAULT_BUDGET) : carousel(budget) {}
    ObjectCarousel carousel;
    std::vector<std::string> events;
    void feed(const std::vector<Bytes>& sections)
    {
        for (const Bytes& s : sections) {
            const std::string said = carousel.addSection(s.data(), s.size());
            if (!said.empty())
                events.push_back(said);
        }
    }
    const ObjectCarousel::Entry* entry(const std::string& path) const
    {
        static std::vector<ObjectCarousel::Entry> entries;
        entries = carousel.list();
        for (const auto& e : entries)
            if (e.path == path)
                return &e;
        return nullptr;
    }
};

// A DownloadDataBlock with one byte of its block changed, CRC made good again.
Bytes corrupted(Bytes section, size_t blockByte)
{
    section[26 + blockByte] ^= 0x5A;
    const uint32_t crc = tesmo_test::crc32Mpeg(section.data(), section.size() - 4);
    for (int i = 0; i < 4; ++i)
        section[section.size() - 4 + size_t(i)] = uint8_t(crc >> (24 - 8 * i));
    return section;
}

const std::string KEY1("\0\0\0\1", 4), KEY2("\0\0\0\2", 4), KEY3("\0\0\0\3", 4);

std::string key(uint32_t n)
{
    return std::string{char(n >> 24), char(n >> 16), char(n >> 8), char(n)};
}

void append(Bytes& to, const Bytes& more)
{
    to.insert(to.end(), more.begin(), more.end());
}

TEST(ObjectCarouselTest, WhatTheWriterWritesIsReadBack)
{
    const std::vector<CarouselFile> files{{"index.html", "<html>hello</html>"},
                                          {"data/list.txt", "one\ntwo\n"},
                                          {"style.css", text(2000, 1)},
                                          {"big.js", text(3000, 2)}};
    CarouselIds ids;
    ids.blockSize = 256;
    Fed fed;
    fed.feed(writeObjectCarousel(files, ids, {"style.css"}));

    std::vector<std::string> listed;
    for (const auto& e : fed.carousel.list()) {
        EXPECT_EQ(e.problem, "") << e.path;
        listed.push_back(e.path + " " + e.kind + " " + std::to_string(e.size));
    }
    EXPECT_THAT(listed, ::testing::ElementsAre("/ service gateway 0", "/big.js file 3000", "/data directory 0",
                                               "/data/list.txt file 8", "/index.html file 18", "/style.css file 2000"));
    for (const CarouselFile& file : files) {
        std::string content;
        EXPECT_EQ(fed.carousel.file(file.path, content), ObjectCarousel::Lookup::FOUND) << file.path;
        EXPECT_EQ(content, file.content) << file.path;
    }
    std::string none;
    EXPECT_EQ(fed.carousel.file("data", none), ObjectCarousel::Lookup::MISSING) << "a directory is no file";
    EXPECT_EQ(fed.carousel.file("nothing.html", none), ObjectCarousel::Lookup::MISSING);
    EXPECT_THAT(fed.events.front(), HasSubstr("service gateway in module 1"));
}

TEST(ObjectCarouselTest, BrokenCarouselsAreToldNotTrusted)
{
    CarouselIds ids;
    ids.blockSize = 100;
    const ModuleSpec gatewayModule{1, 1, biopDirectory(ids, "srg", KEY1, {{"a.txt", {"fil", 2, KEY2}, 500}}), false};
    const ModuleSpec file{2, 1, biopFile(KEY2, text(500, 3)), false};
    const Bytes dsi = serverInitiateSection(ids, {"srg", 1, KEY1});
    const Bytes dii = infoIndicationSection(ids, {gatewayModule, file});
    const std::vector<Bytes> gatewayBlocks = dataBlockSections(ids, gatewayModule);
    std::vector<Bytes> fileBlocks = dataBlockSections(ids, file);
    std::string content;

    {  // a block never arrives
        Fed fed;
        fed.feed({dsi, dii});
        fed.feed(gatewayBlocks);
        fileBlocks.erase(fileBlocks.begin() + 2, fileBlocks.begin() + 4);
        fed.feed(fileBlocks);
        EXPECT_EQ(fed.entry("/a.txt")->problem, "incomplete: 4 of 6 blocks, missing 2-3");
        EXPECT_EQ(fed.carousel.file("a.txt", content), ObjectCarousel::Lookup::PENDING);
    }
    {  // the module changes version half way: the new one is assembled from the start
        Fed fed;
        fed.feed({dsi, dii});
        fed.feed(gatewayBlocks);
        fed.feed({dataBlockSections(ids, file)[0]});
        const ModuleSpec newer{2, 2, biopFile(KEY2, "new"), false};
        ids.diiVersion = 2;
        fed.feed({infoIndicationSection(ids, {gatewayModule, newer})});
        ids.diiVersion = 1;
        fed.feed(dataBlockSections(ids, file));  // the old version's blocks go unused
        fed.feed(dataBlockSections(ids, newer));
        EXPECT_THAT(fed.events, ::testing::Contains("carousel: module 2 v2 replaces v1"));
        EXPECT_EQ(fed.carousel.file("a.txt", content), ObjectCarousel::Lookup::FOUND);
        EXPECT_EQ(content, "new");
    }
    {  // announced but never sent, and a reference to a module no DII lists
        Fed fed;
        const ModuleSpec dangling{1, 1, biopDirectory(ids, "srg", KEY1, {{"gone", {"fil", 9, KEY2}}}), false};
        fed.feed({dsi, infoIndicationSection(ids, {dangling, file})});
        fed.feed(dataBlockSections(ids, dangling));
        EXPECT_EQ(fed.entry("/gone")->problem, "module 9 is not in the DII");
        EXPECT_EQ(fed.carousel.file("gone", content), ObjectCarousel::Lookup::MISSING);
    }
    {  // a BIOP message that claims more than its module holds
        Fed fed;
        ModuleSpec lying = file;
        lying.data[11] = 0x7F;  // message_size
        fed.feed({dsi, infoIndicationSection(ids, {gatewayModule, lying})});
        fed.feed(gatewayBlocks);
        fed.feed(dataBlockSections(ids, lying));
        EXPECT_EQ(fed.entry("/a.txt")->problem, "a BIOP message claims more bytes than its module holds");
    }
    {  // zlib data that does not inflate
        Fed fed;
        ModuleSpec packed = file;
        packed.compressed = true;
        fed.feed({dsi, infoIndicationSection(ids, {gatewayModule, packed})});
        fed.feed(gatewayBlocks);
        fed.feed({corrupted(dataBlockSections(ids, packed)[0], 10)});
        EXPECT_THAT(fed.events, ::testing::Contains("carousel: module 2 v1: its zlib data does not inflate"));
        EXPECT_EQ(fed.entry("/a.txt")->problem, "its zlib data does not inflate");
    }
    {  // a directory that contains itself
        Fed fed;
        const ModuleSpec loop{1, 1, biopDirectory(ids, "srg", KEY1, {{"loop", {"dir", 1, KEY3}}}), false};
        ModuleSpec withLoop = loop;
        const Bytes again = biopDirectory(ids, "dir", KEY3, {{"again", {"dir", 1, KEY3}}});
        withLoop.data.insert(withLoop.data.end(), again.begin(), again.end());
        fed.feed({dsi, infoIndicationSection(ids, {withLoop})});
        fed.feed(dataBlockSections(ids, withLoop));
        EXPECT_EQ(fed.entry("/loop/again")->problem, "a directory loop: it contains itself");
        EXPECT_EQ(fed.carousel.file("loop/again/again/x", content), ObjectCarousel::Lookup::MISSING);
    }
    {  // a directory bound under two names, names no file may have, a chain deeper than any carousel
        Fed fed;
        std::vector<NamedReference> top = {{"shared", {"dir", 1, KEY3}},
                                           {"again", {"dir", 1, KEY3}},
                                           {"..", {"dir", 1, KEY3}},
                                           {std::string("a\0b", 3), {"dir", 1, KEY3}},
                                           {"deep", {"dir", 1, key(100)}}};
        ModuleSpec module{1, 1, biopDirectory(ids, "srg", KEY1, top), false};
        append(module.data, biopDirectory(ids, "dir", KEY3, {}));
        for (uint32_t level = 100; level < 100 + ObjectCarousel::MAX_DEPTH + 5; ++level)
            append(module.data, biopDirectory(ids, "dir", key(level), {{"d", {"dir", 1, key(level + 1)}}}));
        fed.feed({dsi, infoIndicationSection(ids, {module})});
        fed.feed(dataBlockSections(ids, module));
        EXPECT_EQ(fed.entry("/shared")->problem, "listed already as /again");
        EXPECT_EQ(fed.entry("/..")->problem, "a name no file may have: not followed");
        EXPECT_EQ(fed.entry("/a\\0b")->problem, "a name no file may have: not followed");
        const std::vector<ObjectCarousel::Entry> entries = fed.carousel.list();
        const auto deepest = std::find_if(entries.begin(), entries.end(), [](const ObjectCarousel::Entry& e) {
            return !e.problem.empty() && e.problem[0] == 'd';
        });
        ASSERT_NE(deepest, entries.end());
        EXPECT_EQ(deepest->problem, "deeper than 64 levels: not followed");
        EXPECT_EQ(std::count(deepest->path.begin(), deepest->path.end(), '/'), 64);
        EXPECT_LT(entries.size(), 80u);
    }
    {  // modules past the carousel's memory budget, all told, are described, not kept
        Fed fed(4000);
        CarouselIds small = ids;
        small.blockSize = 512;
        fed.feed(writeObjectCarousel({{"a.txt", text(1500, 1)}, {"b.txt", text(1500, 2)}, {"c.txt", text(3000, 3)}},
                                     small, {"c.txt"}));
        EXPECT_EQ(fed.entry("/a.txt")->problem, "");
        EXPECT_EQ(fed.entry("/b.txt")->problem, "");
        EXPECT_EQ(fed.entry("/c.txt")->problem, "over the carousel's memory budget of 4000 bytes: not kept");

        // zlib bombs: eight modules of 4 MiB of zeros, a few KB each as carried
        Fed bombed(9u << 20);
        CarouselIds large = ids;
        large.blockSize = 4066;
        std::vector<CarouselFile> bombs;
        std::set<std::string> packed;
        for (char name = 'a'; name < 'i'; ++name) {
            bombs.push_back({std::string(1, name), std::string(4u << 20, '\0')});
            packed.insert(bombs.back().path);
        }
        const std::vector<Bytes> sections = writeObjectCarousel(bombs, large, packed);
        EXPECT_LT(sections.size(), 40u) << "what the broadcast carries is small";
        bombed.feed(sections);
        EXPECT_EQ(bombed.entry("/b")->problem, "");
        EXPECT_EQ(bombed.entry("/c")->problem, "over the carousel's memory budget of 9 MiB: not kept");
        EXPECT_EQ(bombed.entry("/h")->problem, "over the carousel's memory budget of 9 MiB: not kept");
    }
    {  // sections that are no DSM-CC download messages, or whose CRC fails
        Fed fed;
        Bytes bad = dsi;
        bad[20] ^= 1;
        fed.feed({bad, Bytes{0x74, 0xB0, 0x01, 0}});
        EXPECT_THAT(fed.events, ::testing::ElementsAre("carousel: a DSM-CC section whose length or CRC does not hold",
                                                       "carousel: not a DSM-CC download section"));
    }
}

TEST(CarouselFeedTest, FileAskedBeforeItsModuleIsAnsweredWhenItCompletes)
{
    CarouselIds ids;
    ids.blockSize = 64;
    std::vector<TimedSection> sections;
    for (Bytes& s : writeObjectCarousel({{"index.html", text(1000, 4)}}, ids, {}))
        sections.push_back({0, std::move(s)});
    CarouselFeed feed;
    feed.start(sections, 10, ObjectCarousel::DEFAULT_BUDGET);
    std::vector<std::string> said;
    std::vector<CarouselFeed::Answer> answers;
    feed.step(0, said, answers);
    std::string content;
    void* id = reinterpret_cast<void*>(0x51);
    ASSERT_EQ(feed.get("index.html", id, content), ObjectCarousel::Lookup::PENDING);
    uint64_t tick = 1;
    for (; answers.empty() && tick < 20; ++tick)
        feed.step(tick, said, answers);
    ASSERT_EQ(answers.size(), 1u);
    EXPECT_TRUE(answers[0].found);
    EXPECT_EQ(answers[0].id, id);
    EXPECT_EQ(answers[0].content, text(1000, 4));
    EXPECT_EQ(tick - 1, feed.lastTick()) << "answered with the module's last block";

    feed.get("gone.html", id, content);
    EXPECT_EQ(feed.get("gone.html", id, content), ObjectCarousel::Lookup::MISSING);
}

}  // namespace
