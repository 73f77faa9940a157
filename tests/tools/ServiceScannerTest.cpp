#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

#include "SectionBuilder.h"
#include "ServiceScanner.h"
#include "TsWriter.h"

namespace {

using namespace tesmo_test;

Bytes language(const char* code, uint8_t audioType)
{
    return descriptor(0x0A, {uint8_t(code[0]), uint8_t(code[1]), uint8_t(code[2]), audioType});
}

Bytes subtitling(const char* code, uint8_t type)
{
    return descriptor(0x59, {uint8_t(code[0]), uint8_t(code[1]), uint8_t(code[2]), type, 0, 1, 0, 1});
}

Bytes tag(uint8_t componentTag)
{
    return descriptor(0x52, {componentTag});
}

// The components a receiver lists from one PMT, written into a capture and read back.
std::vector<Component> componentsOf(const std::vector<Stream>& streams)
{
    TsWriter ts;
    ts.writeSection(0x0000, patSection(1, {{0x0007, 0x0100}}));
    ts.writeSection(0x0100, pmtSection(0x0007, streams));
    const std::string path = testing::TempDir() + "components.ts";
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(ts.bytes().data()), std::streamsize(ts.bytes().size()));
    TransportStream stream;
    std::string error;
    EXPECT_TRUE(stream.open(path, error)) << error;
    const std::vector<Service> services = scanServices(stream);
    std::remove(path.c_str());
    return services.size() == 1 ? services[0].components : std::vector<Component>{};
}

TEST(ServiceScannerTest, ComponentsOfEveryKindWithWhatTheirDescriptorsSay)
{
    const std::vector<Component> components = componentsOf({
        {0x1B, 0x110, tag(1)},
        {0x0F, 0x111, concat({tag(2), language("deu", 0)})},
        {0x03, 0x112, concat({tag(3), language("eng", 3)})},
        {0x06, 0x113, concat({tag(4), descriptor(0x6A, {0})})},
        {0x06, 0x114, concat({tag(5), subtitling("fra", 0x10)})},
        {0x06, 0x115, subtitling("deu", 0x20)},
        {0x06, 0x116, tag(6)},  // private data of no kind a page lists
        {0x0B, 0x117, tag(7)},  // an object carousel
        {0x02, 0x118, language("e\x01g", 0)},  // a language that is not letters
    });
    struct Expected {
        Component::Kind kind;
        uint16_t pid;
        int tag;
        const char* encoding;
        const char* language;
        bool audioDescription;
        bool hearingImpaired;
    } const expected[] = {
        {Component::VIDEO, 0x110, 1, "AVC_SD_25", "", false, false},
        {Component::AUDIO, 0x111, 2, "HEAAC", "deu", false, false},
        {Component::AUDIO, 0x112, 3, "MPEG1_L2", "eng", true, false},
        {Component::AUDIO, 0x113, 4, "AC3", "", false, false},
        {Component::SUBTITLE, 0x114, 5, "DVB-SUBT", "fra", false, false},
        {Component::SUBTITLE, 0x115, -1, "DVB-SUBT", "deu", false, true},
        {Component::VIDEO, 0x118, -1, "MPEG2_SD_25", "e?g", false, false},
    };
    ASSERT_EQ(components.size(), std::size(expected));
    for (size_t i = 0; i < components.size(); ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(components[i].kind, expected[i].kind);
        EXPECT_EQ(components[i].pid, expected[i].pid);
        EXPECT_EQ(components[i].componentTag, expected[i].tag);
        EXPECT_EQ(components[i].encoding, expected[i].encoding);
        EXPECT_EQ(components[i].language, expected[i].language);
        EXPECT_EQ(components[i].audioDescription, expected[i].audioDescription);
        EXPECT_EQ(components[i].hearingImpaired, expected[i].hearingImpaired);
    }
}

// Descriptors cut or overlong are broadcast bytes like any other: the stream is still listed,
// without what they would have said.
TEST(ServiceScannerTest, MalformedDescriptorsLeaveTheComponentWithoutThem)
{
    Bytes longSubtitling(8 * 30, 'x');
    const std::vector<Component> components = componentsOf({
        {0x06, 0x120, descriptor(0x59, longSubtitling)},
        {0x06, 0x121, descriptor(0x59, {'d', 'e'})},
        {0x0F, 0x122, descriptor(0x0A, {'d', 'e'})},
    });
    ASSERT_EQ(components.size(), 3u);
    for (const Component& component : components)
        EXPECT_EQ(component.language, "") << component.pid;
    EXPECT_EQ(components[0].kind, Component::SUBTITLE);
    EXPECT_EQ(components[2].kind, Component::AUDIO);
}

}  // namespace
