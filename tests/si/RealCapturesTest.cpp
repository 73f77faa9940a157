#include <gtest/gtest.h>

#include "ExactBuffer.h"
#include "SharedData.h"
#include "TsSections.h"
#include "si/AIT.h"
#include "si/PMT.h"

using namespace TesmoHbbTV;
using namespace tesmo_test;

namespace {

std::string capture(const char* name)
{
    return sharedDataDir() + "/captures/" + name;
}

std::vector<std::string> urlsOf(const AITApplication& app)
{
    std::vector<std::string> urls;
    for (const auto& t : app.getTransports())
        urls.push_back(t->getURL(app.getApplicationLocation()));
    return urls;
}

struct Fed {
    ref_ptr<AIT> ait;
    std::vector<bool> accepted;
};

Fed feedAll(const std::vector<Bytes>& sections)
{
    Fed fed{ref_ptr<AIT>(new AIT(0x1010, 0x2, 0x3, nullptr)), {}};
    for (const Bytes& s : sections) {
        ExactBuffer buffer(s);
        fed.accepted.push_back(fed.ait->parse(buffer.get()));
    }
    return fed;
}

// What the real tables parse to is in the golden results; this one is changed first.
TEST(RealCapturesTest, AbcEntriesAfterTheFaultyOneDecodeOnTheirOwn)
{
    REQUIRE_SHARED_DATA();
    Bytes section = sectionsOnPid(capture("abc-au-hbbtv.ts"), 0x157C).at(0);
    // Give the empty location descriptor one byte so that the whole table decodes; the
    // other entries then read as the independent decoder reads them.
    const size_t emptyLocation = 0xC7;
    ASSERT_EQ(section[emptyLocation], 0x15);
    ASSERT_EQ(section[emptyLocation + 1], 0x00);
    section.insert(section.begin() + emptyLocation + 2, 'x');
    section[emptyLocation + 1] = 1;
    const size_t iviewDevEntry = 0x74;
    section[iviewDevEntry + 8] += 1;  // low byte of its descriptor loop length
    section[10 + 1] += 1;  // application_loop_length
    setSectionLength(section);
    Fed fed = feedAll({section});
    ASSERT_TRUE(fed.accepted[0]);
    ASSERT_EQ(fed.ait->getNumApplications(), 4u);
    const AITApplication* iview = fed.ait->getAITApplication(0x142ul, 0x7000);
    const AITApplication* freeview = fed.ait->getAITApplication(0x141ul, 0x4000);
    ASSERT_TRUE(iview && freeview);
    EXPECT_EQ(iview->getApplicationName(), "IVIEW");
    EXPECT_EQ(iview->getControlCode(), AITApplication::PRESENT);
    EXPECT_EQ(urlsOf(*iview), (std::vector<std::string>{"http://tv.iview.abc.net.au/index.php"}));
    EXPECT_EQ(freeview->getApplicationName(), "FREEVIEWPLUS");
    ASSERT_EQ(freeview->getApplicationDescriptor()->profiles.size(), 1u);
    const PlatformProfile& profile = freeview->getApplicationDescriptor()->profiles[0];
    EXPECT_EQ((std::vector<int>{profile.major, profile.minor, profile.micro}), (std::vector<int>{1, 2, 1}));
    EXPECT_TRUE(freeview->isSigned());
}

TEST(RealCapturesTest, RaiPmtsSignalTheHbbTVAit)
{
    REQUIRE_SHARED_DATA();
    const std::vector<Bytes> pat = sectionsOnPid(capture("rai-dtt-hbbtv.ts"), 0x0000);
    ASSERT_FALSE(pat.empty());
    int signallingServices = 0;
    const Bytes& table = pat[0];
    for (size_t i = 8; i + 4 <= table.size() - 4; i += 4) {
        const uint16_t program = uint16_t(table[i] << 8 | table[i + 1]);
        const uint16_t pid = uint16_t((table[i + 2] & 0x1F) << 8 | table[i + 3]);
        const std::vector<Bytes> pmts = sectionsOnPid(capture("rai-dtt-hbbtv.ts"), pid);
        ASSERT_FALSE(pmts.empty()) << program;
        ExactBuffer section(pmts[0]);
        PMT pmt(section.get());
        int signalling = 0;
        for (const auto& stream : pmt.getStreams())
            if (stream->getStreamType() == 0x05 && stream->getApplicationSignallingDescriptor())
                ++signalling;
        // 0x0D52 is a lone HEVC service without applications.
        EXPECT_EQ(signalling, program == 0x0D52 ? 0 : 2) << "program " << program;
        signallingServices += signalling ? 1 : 0;
    }
    EXPECT_EQ(signallingServices, 7);
}

}  // namespace
