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

Fed feedAll(const std::vector<Bytes>& sections, uint16_t onid = 0x1010, uint16_t tsid = 0x2, uint16_t sid = 0x3)
{
    Fed fed{ref_ptr<AIT>(new AIT(onid, tsid, sid, nullptr)), {}};
    for (const Bytes& s : sections) {
        ExactBuffer buffer(s);
        fed.accepted.push_back(fed.ait->parse(buffer.get()));
    }
    return fed;
}

TEST(RealCapturesTest, RaiHbbTVTable)
{
    REQUIRE_SHARED_DATA();
    const std::vector<Bytes> sections = sectionsOnPid(capture("rai-dtt-hbbtv.ts"), 0x07D2);
    ASSERT_EQ(sections.size(), 1u);
    Fed fed = feedAll(sections, 0x217C, 0x0D, 0x0D49);
    ASSERT_TRUE(fed.accepted[0]);
    const AIT& ait = *fed.ait;
    EXPECT_TRUE(ait.isComplete());
    EXPECT_EQ(ait.getVersionNumber(), 0);

    const AITApplication* launcher = ait.getAITApplication(0x3C0ul, 0x65);
    const AITApplication* raiplay = ait.getAITApplication(0x3C0ul, 0x66);
    ASSERT_TRUE(launcher && raiplay);
    EXPECT_EQ(launcher->getControlCode(), AITApplication::AUTOSTART);
    EXPECT_EQ(raiplay->getControlCode(), AITApplication::PRESENT);
    ASSERT_EQ(launcher->getApplicationDescriptor()->profiles.size(), 1u);
    const PlatformProfile& profile = launcher->getApplicationDescriptor()->profiles[0];
    EXPECT_EQ((std::vector<int>{profile.major, profile.minor, profile.micro}), (std::vector<int>{1, 4, 1}));
    EXPECT_EQ(urlsOf(*launcher), (std::vector<std::string>{
                                     "https://www.raiplay.it/hbbtv/launcher/RemoteControl/index.html?delivery=2",
                                     "dvb://217c.d.d49.2a/RemoteControl/index.html?delivery=2"}));
    EXPECT_EQ(urlsOf(*raiplay), (std::vector<std::string>{"https://www.raiplay.it/hbbtv/RaiPlay2020/index.html"}));
    // The names begin with a DVB character-table selector byte, kept as signalled.
    EXPECT_EQ(launcher->getApplicationName().substr(1), "Telecomando HbbTV");
    EXPECT_EQ(launcher->getApplicationName()[0], '\x05');
}

// The IVIEW_DEV entry carries a zero-length location descriptor: the entry, and with it the
// section, is refused after the first entry was taken, and the section still counts, so the
// table is complete yet every copy of it is refused.
TEST(RealCapturesTest, AbcTableStopsAtTheZeroLengthDescriptor)
{
    REQUIRE_SHARED_DATA();
    const std::vector<Bytes> sections = sectionsOnPid(capture("abc-au-hbbtv.ts"), 0x157C);
    ASSERT_EQ(sections.size(), 3u);
    Fed fed = feedAll(sections);
    EXPECT_EQ(fed.accepted, (std::vector<bool>{false, false, false}));
    EXPECT_TRUE(fed.ait->isComplete());
    EXPECT_EQ(fed.ait->getVersionNumber(), 1);
    ASSERT_EQ(fed.ait->getNumApplications(), 1u);
    const AITApplication& abc = *fed.ait->getAITApplication(0u);
    EXPECT_EQ(abc.getOrganisationIdentifier(), 0x141u);
    EXPECT_EQ(abc.getApplicationIdentifier(), 0x1000);
    EXPECT_EQ(abc.getApplicationName(), "ABC");
    EXPECT_EQ(abc.getControlCode(), AITApplication::AUTOSTART);
    EXPECT_EQ(abc.getApplicationPriority(), 1);
    EXPECT_EQ(urlsOf(abc), (std::vector<std::string>{"http://hbbtv.freeviewaustralia.tv/index.html?autostart=abc",
                                                     "dvb://1010.2.3.5/index.html?autostart=abc"}));
}

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

TEST(RealCapturesTest, MhpTablesWithZeroLengthDescriptorsAreRefused)
{
    REQUIRE_SHARED_DATA();
    const std::vector<Bytes> rai = sectionsOnPid(capture("rai-dtt-hbbtv.ts"), 0x07D1);
    ASSERT_EQ(rai.size(), 1u);
    EXPECT_EQ(feedAll(rai).accepted, (std::vector<bool>{false}));
    for (uint16_t pid : {0x1EC5, 0x1EC6, 0x1EC7}) {
        const std::vector<Bytes> sections = sectionsOnPid(capture("mediaset-sat-mhp.ts"), pid);
        ASSERT_FALSE(sections.empty()) << pid;
        Fed fed = feedAll(sections);
        EXPECT_FALSE(fed.accepted[0]) << pid;
        EXPECT_EQ(fed.ait->getNumApplications(), 0u) << pid;
    }
}

TEST(RealCapturesTest, SyntheticTablesWithOddValues)
{
    REQUIRE_SHARED_DATA();
    const std::vector<Bytes> sections = sectionsOnPid(capture("all-descriptors-synthetic.ts"), 0x00C8);
    std::vector<ref_ptr<AIT>> tables;
    for (const Bytes& s : sections) {
        Fed fed = feedAll({s});
        if (fed.accepted[0])
            tables.push_back(fed.ait);
    }
    ASSERT_GE(tables.size(), 2u);
    EXPECT_EQ(tables[0]->getVersionNumber(), 21);
    EXPECT_EQ(tables[0]->getNumApplications(), 0u);
    EXPECT_EQ(tables[1]->getVersionNumber(), 10);
    ASSERT_EQ(tables[1]->getNumApplications(), 2u);
    EXPECT_EQ(tables[1]->getAITApplication(0u)->getOrganisationIdentifier(), 0x12345678u);
    EXPECT_EQ(tables[1]->getAITApplication(0u)->getApplicationIdentifier(), 0x9ABC);
    EXPECT_EQ(tables[1]->getAITApplication(0u)->getControlCode(), 0x07);
    EXPECT_EQ(tables[1]->getAITApplication(1u)->getControlCode(), 0xAB) << "odd control codes are kept";
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

} // namespace
