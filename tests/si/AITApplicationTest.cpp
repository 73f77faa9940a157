#include <gtest/gtest.h>

#include "ExactBuffer.h"
#include "LogCapture.h"
#include "SectionBuilder.h"
#include "api/ConfigurationManager.h"
#include "si/AIT.h"

using namespace TesmoHbbTV;
using namespace tesmo_test;

namespace {

// Parses one section holding the given entry (and common descriptors) into a fresh table.
ref_ptr<AIT> tableOf(const App& app, const Bytes& common = {})
{
    ref_ptr<AIT> ait(new AIT(1, 2, 3, nullptr));
    ExactBuffer section(AITSection().common(common).application(app).bytes());
    ait->parse(section.get());
    return ait;
}

ApplicationDescriptorFields labels(Bytes list)
{
    ApplicationDescriptorFields fields;
    fields.labels = std::move(list);
    return fields;
}

std::vector<std::string> urls(const AITApplication& app)
{
    std::vector<std::string> out;
    for (const auto& t : app.getTransports())
        out.push_back(t->getURL(app.getApplicationLocation()));
    return out;
}

TEST(AITApplicationTest, LocationBeforeOrAfterTheTransportGivesTheSameUrl)
{
    const Bytes transport = httpTransport(1, "http://tv/");
    ref_ptr<AIT> before =
        tableOf(App(1, 1).with(locationDescriptor("app/")).with(transport).with(applicationDescriptor({})));
    ref_ptr<AIT> after =
        tableOf(App(1, 1).with(applicationDescriptor({})).with(transport).with(locationDescriptor("app/")));
    EXPECT_EQ(urls(*before->getAITApplication(0u)), (std::vector<std::string>{"http://tv/app/"}));
    EXPECT_EQ(urls(*after->getAITApplication(0u)), (std::vector<std::string>{"http://tv/app/"}));
}

TEST(AITApplicationTest, OwnTransportBeatsCommonOneAndLabelOrderIsKept)
{
    const Bytes common = concat({httpTransport(1, "http://common1/"), httpTransport(2, "http://common2/")});
    ref_ptr<AIT> ait =
        tableOf(App(1, 1).with(applicationDescriptor(labels({2, 1}))).with(httpTransport(1, "http://local1/")), common);
    EXPECT_EQ(urls(*ait->getAITApplication(0u)), (std::vector<std::string>{"http://common2/", "http://local1/"}));
    EXPECT_EQ(ait->getAITApplication(0u)->getTransports()[0].get(), ait->getCommonTransports().at(2).get())
        << "the common transport is shared, not copied";

    ref_ptr<AIT> twice = tableOf(
        App(1, 1).with(applicationDescriptor(labels({1, 1, 9}))).with(httpTransport(1, "http://local1/")), common);
    EXPECT_EQ(urls(*twice->getAITApplication(0u)), (std::vector<std::string>{"http://local1/", "http://common1/"}));
}

TEST(AITApplicationTest, UnlistedOwnTransportsAreDroppedAndNoDescriptorMeansNoTransports)
{
    ref_ptr<AIT> unlisted =
        tableOf(App(1, 1).with(applicationDescriptor(labels({}))).with(httpTransport(1, "http://x/")));
    EXPECT_EQ(unlisted->getAITApplication(0u)->getNumTransports(), 0);
    ref_ptr<AIT> bare = tableOf(App(1, 1).with(httpTransport(1, "http://x/")));
    EXPECT_EQ(bare->getAITApplication(0u)->getNumTransports(), 0);
    EXPECT_EQ(bare->getAITApplication(0u)->getApplicationPriority(), 0);
}

TEST(AITApplicationTest, OverlongProfilesLeaveTheDescriptorAtItsDefaults)
{
    const Bytes body{40, 0x00, 0x01, 1, 1, 1, 0xE0, 0x09};
    ref_ptr<AIT> ait = tableOf(App(1, 1).with(descriptor(0x00, body)));
    const AITApplication::ApplicationDescriptor* d = ait->getAITApplication(0u)->getApplicationDescriptor();
    ASSERT_NE(d, nullptr);
    EXPECT_TRUE(d->profiles.empty());
    EXPECT_EQ(d->priority, 0);
}

TEST(AITApplicationTest, MalformedDescriptorsFailTheEntry)
{
    const Bytes truncatedName{'e', 'n', 'g', 9, 'a', 'b'};  // claims 9 name bytes, loop ends after 2
    for (const Bytes& bad :
         {descriptor(0x42, {}), descriptor(0x01, truncatedName), descriptor(0x01, {'e', 'n', 'g'})}) {
        ref_ptr<AIT> ait(new AIT(1, 2, 3, nullptr));
        ExactBuffer section(AITSection().application(App(1, 1).with(bad)).bytes());
        EXPECT_FALSE(ait->parse(section.get()));
        EXPECT_EQ(ait->getNumApplications(), 0u);
    }
}

TEST(AITApplicationTest, RecordingDescriptorFlagsAndComponentTags)
{
    Recording recording;
    recording.flags = 0x40 | 0x20;
    recording.labels = {"l1", ""};
    recording.componentTags = {0x11, 0x22};
    ref_ptr<AIT> ait = tableOf(App(1, 1).with(recordingDescriptor(recording)));
    const AITApplication::ApplicationRecordingDescriptor* r =
        ait->getAITApplication(0u)->getApplicationRecordingDescriptor();
    ASSERT_NE(r, nullptr);
    EXPECT_TRUE(r->trickModeAware);
    EXPECT_TRUE(r->timeShift);
    EXPECT_FALSE(r->scheduledRecording);
    EXPECT_EQ(r->componentTags, (std::vector<uint8_t>{0x11, 0x22}));

    // A label that runs to the descriptor's end stops the reading; the flags stay.
    const Bytes overlong{0x43, 1, 5, 'a', 'b', 'c', 'd'};
    ait = tableOf(App(1, 1).with(descriptor(0x06, overlong)));
    r = ait->getAITApplication(0u)->getApplicationRecordingDescriptor();
    ASSERT_NE(r, nullptr);
    EXPECT_TRUE(r->trickModeAware);
    EXPECT_TRUE(r->componentTags.empty());
}

TEST(PlatformProfileTest, CompatibilityByProfileBitsThenVersion)
{
    EXPECT_TRUE((PlatformProfile{0x0001, 1, 1, 1}.isCompatible(0x0003, 1, 2, 1)));
    EXPECT_FALSE((PlatformProfile{0x0001, 1, 3, 0}.isCompatible(0x0003, 1, 2, 1)));
    EXPECT_FALSE((PlatformProfile{0x0004, 1, 1, 1}.isCompatible(0x0003, 1, 2, 1)));
    EXPECT_TRUE((PlatformProfile{0x0000, 0, 9, 9}.isCompatible(0x0000, 1, 0, 0)));
    EXPECT_TRUE((PlatformProfile{0x0000, 1, 2, 1}.isCompatible(0x0000, 1, 2, 1)));
    EXPECT_FALSE((PlatformProfile{0x0000, 1, 2, 2}.isCompatible(0x0000, 1, 2, 1)));
    EXPECT_FALSE((PlatformProfile{0x0000, 2, 0, 0}.isCompatible(0x0000, 1, 9, 9)));
}

TEST(PlatformProfileTest, SupportFollowsTheConfiguredProfilesAndVersion)
{
    ApplicationDescriptorFields fields;
    fields.profiles = {{0x0002, 1, 2, 1}};
    ref_ptr<AIT> ait = tableOf(App(1, 1).with(applicationDescriptor(fields)));
    ConfigurationManager* config = ConfigurationManager::getInstance();
    config->setSupportedPlatformProfiles(0x0003);
    EXPECT_FALSE(ait->getAITApplication(0u)->isPlatformProfileSupported()) << "terminal announces 1.1.1";
    config->setHbbTVVersion({1, 2, 1});
    EXPECT_TRUE(ait->getAITApplication(0u)->isPlatformProfileSupported());
    ConfigurationManager::destroyInstance();

    ref_ptr<AIT> bare = tableOf(App(1, 1));
    EXPECT_FALSE(bare->getAITApplication(0u)->isPlatformProfileSupported());
}

DAXO_AITApplicationTransport xmlTransports[2] = {{1, nullptr, 0, 1, 2, 3, 4}, {3, "http://xml/", 0, 0, 0, 0, 0}};

TEST(AITApplicationXMLTest, RecordIsForcedToVisibleAutostartAndMarkedCorrected)
{
    const char* boundaries[2] = {"http://extra/x", nullptr};
    DAXO_AITProfile profile{0x0001, 1, 1, 1};
    DAXO_AITApplication record{"name",        19,           0x101F4, 2,          1, 1, 5, 1, &profile, 2,
                               xmlTransports, "start.html", 2,       boundaries, 1};
    ref_ptr<AIT> ait(new AIT());
    auto entry = AITApplication::create(ait.get(), record);
    AITApplication& app = *entry;
    bool corrected = false;
    ASSERT_TRUE(app.parse(record, corrected));
    EXPECT_EQ(app.getApplicationName(), "name");
    EXPECT_TRUE(corrected);
    EXPECT_EQ(app.getControlCode(), AITApplication::AUTOSTART);
    EXPECT_EQ(app.getApplicationIdentifier(), 0x01F4) << "only the low 16 bits";
    EXPECT_EQ(app.getApplicationDescriptor()->visibility, 3u);
    EXPECT_FALSE(app.isSignalledAsServiceBound());
    EXPECT_EQ(app.getApplicationPriority(), 5);
    EXPECT_EQ(urls(app), (std::vector<std::string>{"http://xml/start.html"})) << "the carousel record is refused";
    EXPECT_TRUE(app.getApplicationDomain()->isWithinBoundaries("http://extra/y"));
    EXPECT_TRUE(app.hasValidAppId());
    EXPECT_TRUE(app.isXMLAITbased());
}

TEST(AITApplicationXMLTest, MissingLocationAloneIsNotACorrection)
{
    DAXO_AITApplication record{nullptr, 1, 2, 1, 3, 0, 0, 0, nullptr, 1, &xmlTransports[1], nullptr, 0, nullptr, 0};
    bool corrected = false;
    ASSERT_TRUE(AITApplication::create(nullptr, record)->parse(record, corrected));
    EXPECT_FALSE(corrected);
}

TEST(AITApplicationXMLTest, RecordWithoutAnHttpTransportIsRefused)
{
    DAXO_AITApplication carouselOnly{"n", 1, 2, 1, 3, 0, 0, 0, nullptr, 1, &xmlTransports[0], "x", 0, nullptr, 0};
    bool corrected = false;
    EXPECT_FALSE(AITApplication::create(nullptr, carouselOnly)->parse(carouselOnly, corrected));
    DAXO_AITApplication none{"n", 1, 2, 1, 3, 0, 0, 0, nullptr, 3, nullptr, "x", 0, nullptr, 0};
    EXPECT_FALSE(AITApplication::create(nullptr, none)->parse(none, corrected));
}

}  // namespace
