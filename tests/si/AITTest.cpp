#include <gtest/gtest.h>

#include "ExactBuffer.h"
#include "SectionBuilder.h"
#include "si/AIT.h"

using namespace TesmoHbbTV;
using namespace tesmo_test;

namespace {

bool feed(AIT& ait, const Bytes& section)
{
    ExactBuffer buffer(section);
    return ait.parse(buffer.get());
}

App appWithPriority(uint16_t id, uint8_t priority)
{
    ApplicationDescriptorFields fields;
    fields.priority = priority;
    return App(0x10, id).with(applicationDescriptor(fields)).with(httpTransport(1, "http://a/"));
}

std::vector<uint16_t> applicationIds(const AIT& ait)
{
    std::vector<uint16_t> ids;
    for (unsigned i = 0; i < ait.getNumApplications(); ++i)
        ids.push_back(ait.getAITApplication(i)->getApplicationIdentifier());
    return ids;
}

class AITTest : public ::testing::Test {
protected:
    AIT* ait = new AIT(0x1, 0x2, 0xa, reinterpret_cast<void*>(0x77));
    ref_ptr<AIT> hold{ait};
};

TEST_F(AITTest, SectionWithAnotherTableIdIsRefusedAndChangesNothing)
{
    Bytes section = AITSection().application(appWithPriority(1, 1)).bytes();
    section[0] = 0x42;
    EXPECT_FALSE(feed(*ait, section));
    EXPECT_EQ(ait->getNumApplications(), 0u);
    EXPECT_FALSE(ait->isComplete());
    EXPECT_FALSE(ait->parse(nullptr));
}

TEST_F(AITTest, RepeatedSectionIsAcceptedAndAddsNothing)
{
    const Bytes section = AITSection().number(0, 1).application(appWithPriority(1, 1)).bytes();
    EXPECT_TRUE(feed(*ait, section));
    EXPECT_TRUE(feed(*ait, section));
    EXPECT_EQ(ait->getNumApplications(), 1u);
    EXPECT_FALSE(ait->isComplete());
}

TEST_F(AITTest, OneVersionOnlyAndNothingAfterCompletion)
{
    const Bytes first = AITSection().version(4).number(0, 1).application(appWithPriority(1, 1)).bytes();
    const Bytes otherVersion = AITSection().version(5).number(1, 1).application(appWithPriority(2, 1)).bytes();
    const Bytes second = AITSection().version(4).number(1, 1).application(appWithPriority(3, 1)).bytes();
    EXPECT_TRUE(feed(*ait, first));
    EXPECT_FALSE(feed(*ait, otherVersion));
    EXPECT_TRUE(feed(*ait, second));
    EXPECT_TRUE(ait->isComplete());
    EXPECT_EQ(ait->getVersionNumber(), 4);
    EXPECT_FALSE(feed(*ait, first)) << "a complete table refuses even a repeat";
    EXPECT_EQ(applicationIds(*ait), (std::vector<uint16_t>{1, 3}));
}

TEST_F(AITTest, LastSectionNumberZeroCompletesAtOnce)
{
    EXPECT_TRUE(feed(*ait, AITSection().number(0, 0).bytes()));
    EXPECT_TRUE(ait->isComplete());
    EXPECT_EQ(ait->getLastSectionNumber(), 0);
}

TEST_F(AITTest, CompletenessCountsSectionsWithoutCheckingTheirNumbers)
{
    EXPECT_TRUE(feed(*ait, AITSection().number(0, 1).bytes()));
    EXPECT_TRUE(feed(*ait, AITSection().number(2, 1).bytes()));
    EXPECT_TRUE(ait->isComplete()) << "section 1 never came";
}

TEST_F(AITTest, SectionsArrivingOutOfOrderAssembleOneTable)
{
    EXPECT_TRUE(feed(*ait, AITSection().number(2, 2).application(appWithPriority(3, 1)).bytes()));
    EXPECT_TRUE(feed(*ait, AITSection().number(0, 2).application(appWithPriority(1, 1)).bytes()));
    EXPECT_FALSE(ait->isComplete());
    EXPECT_TRUE(feed(*ait, AITSection().number(1, 2).application(appWithPriority(2, 1)).bytes()));
    EXPECT_TRUE(ait->isComplete());
    EXPECT_EQ(applicationIds(*ait), (std::vector<uint16_t>{3, 1, 2}));
}

TEST_F(AITTest, CommonLoopPastTheSectionEndIsRefusedButTheSectionStillCounts)
{
    Bytes broken = AITSection().number(0, 1).common(httpTransport(1, "http://a/")).bytes();
    broken[9] = 0xFF;  // common_descriptors_length far beyond the end
    EXPECT_FALSE(feed(*ait, broken));
    EXPECT_TRUE(feed(*ait, AITSection().number(0, 1).bytes())) << "a retransmission counts as a repeat";
    EXPECT_TRUE(feed(*ait, AITSection().number(1, 1).bytes()));
    EXPECT_TRUE(ait->isComplete());
}

TEST_F(AITTest, CommonDescriptorRunningPastTheCommonLoopIsRefused)
{
    Bytes section = AITSection().common(httpTransport(1, "http://a/")).application(appWithPriority(1, 1)).bytes();
    section[11] += 1;  // the descriptor now claims one byte of the application loop
    EXPECT_FALSE(feed(*ait, section));
    EXPECT_EQ(ait->getNumApplications(), 0u);
}

TEST_F(AITTest, CommonCarouselWithoutRemoteConnectionBelongsToTheTablesService)
{
    EXPECT_TRUE(feed(
        *ait, AITSection().common(carouselTransport(2, 0xb)).common(remoteCarouselTransport(3, 7, 8, 9, 0xc)).bytes()));
    const AIT::TransportMap common = ait->getCommonTransports();
    EXPECT_EQ(common.at(2)->getURL("index.html"), "dvb://1.2.a.b/index.html");
    EXPECT_EQ(common.at(3)->getURL("x"), "dvb://7.8.9.c/x");
}

TEST_F(AITTest, EntryEndingExactlyAtTheSectionEndIsAccepted)
{
    Bytes section = AITSection().application(appWithPriority(1, 1)).bytes();
    section.resize(section.size() - 4);  // no room left for the CRC
    setSectionLength(section);
    EXPECT_TRUE(feed(*ait, section));
    EXPECT_EQ(ait->getNumApplications(), 1u);
}

TEST_F(AITTest, EqualPrioritiesKeepTheirArrivalOrder)
{
    const Bytes section = AITSection()
                              .application(appWithPriority(0xA, 1))
                              .application(appWithPriority(0xB, 3))
                              .application(appWithPriority(0xC, 3))
                              .application(appWithPriority(0xD, 2))
                              .bytes();
    EXPECT_TRUE(feed(*ait, section));
    EXPECT_EQ(applicationIds(*ait), (std::vector<uint16_t>{0xB, 0xC, 0xD, 0xA}));
}

TEST_F(AITTest, FailingEntryRefusesTheSectionButKeepsEarlierEntries)
{
    const Bytes section =
        AITSection().application(appWithPriority(1, 1)).application(App(0x10, 2).with(descriptor(0x15, {}))).bytes();
    EXPECT_FALSE(feed(*ait, section));
    EXPECT_EQ(applicationIds(*ait), (std::vector<uint16_t>{1}));
}

TEST_F(AITTest, LookupsByIdentifiersControlCodeAndUsage)
{
    ApplicationDescriptorFields carouselOnly;
    carouselOnly.labels = {2};
    const Bytes section =
        AITSection()
            .application(App(0x10, 1, 2).with(applicationDescriptor({})).with(httpTransport(1, "http://p/")))
            .application(App(0x10, 2, 1).with(applicationDescriptor({})).with(httpTransport(1, "http://a/")))
            .application(App(0x11, 3, 1)
                             .with(applicationDescriptor(carouselOnly))
                             .with(carouselTransport(2, 5))
                             .with(usageDescriptor(1)))
            .bytes();
    ASSERT_TRUE(feed(*ait, section));
    AITApplication* present = ait->getAITApplication(0x10ul, 1);
    AITApplication* http = ait->getAITApplication(0x10ul, 2);
    AITApplication* carousel = ait->getAITApplication(0x11ul, 3);
    ASSERT_TRUE(present && http && carousel);
    EXPECT_EQ(ait->getAITApplication(0x11ul, 1), nullptr);

    EXPECT_EQ(ait->getAITApplication(AITApplication::AUTOSTART, true), http);
    EXPECT_EQ(ait->getAITApplication(AITApplication::AUTOSTART, false), carousel);
    EXPECT_EQ(ait->getNextAITApplication(http, AITApplication::AUTOSTART, true), carousel);
    EXPECT_EQ(ait->getNextAITApplication(carousel, AITApplication::AUTOSTART, true), nullptr);
    const DAXO_AITApplication none{};
    const std::unique_ptr<AITApplication> stranger = AITApplication::create(nullptr, none);
    EXPECT_EQ(ait->getNextAITApplication(stranger.get(), AITApplication::AUTOSTART, true), nullptr);
    EXPECT_FALSE(ait->isHandledAITApplication(stranger.get()));
    EXPECT_TRUE(ait->isHandledAITApplication(present));
    EXPECT_EQ(ait->getFirstDigitalTeletextAITApplication(), carousel);
    EXPECT_EQ(ait->getAITApplication(3u), nullptr);
    EXPECT_EQ(carousel->getChannelHandle(), reinterpret_cast<void*>(0x77));
}

DAXO_AITApplicationTransport xmlHttp{3, "http://xml/", 0, 0, 0, 0, 0};

DAXO_AITApplication xmlApplication(uint32_t id)
{
    DAXO_AITApplication app{};
    app.application_id = id;
    app.control_code = 1;
    app.visibility = 3;
    app.num_transports = 1;
    app.transports = &xmlHttp;
    app.location = "index.html";
    return app;
}

TEST(XMLAITTest, OnlyTheFirstApplicationOfARecordIsTaken)
{
    DAXO_AITApplication apps[2] = {xmlApplication(7), xmlApplication(8)};
    ref_ptr<AIT> ait(new AIT());
    DAXO_AITData none{0, apps};
    EXPECT_FALSE(ait->parse(none));
    DAXO_AITData two{2, apps};
    EXPECT_TRUE(ait->parse(two));
    EXPECT_EQ(applicationIds(*ait), (std::vector<uint16_t>{7}));
    EXPECT_TRUE(ait->isXMLAIT());
    EXPECT_TRUE(ait->isComplete());
    EXPECT_FALSE(ait->wasCorrected());
    DAXO_AITData missing{1, nullptr};
    EXPECT_FALSE(ait->parse(missing));
}

}  // namespace
