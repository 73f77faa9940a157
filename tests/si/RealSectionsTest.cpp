#include <gtest/gtest.h>

#include "ExactBuffer.h"
#include "SharedData.h"
#include "si/AIT.h"

using namespace TesmoHbbTV;
using namespace tesmo_test;

namespace {

ref_ptr<AIT> parseSectionFile(const char* name, bool& accepted)
{
    ExactBuffer section(readFileBytes(sharedDataDir() + "/sections/" + name));
    ref_ptr<AIT> ait(new AIT(0x1, 0x2, 0x3, nullptr));
    accepted = ait->parse(section.get());
    return ait;
}

// The three sections carry no application descriptor: their entries have no transport to
// start from, which is what the library must conclude from them.
TEST(RealSectionsTest, TypicalSectionHoldsAnAutostartAndAPresentEntry)
{
    REQUIRE_SHARED_DATA();
    bool accepted = false;
    ref_ptr<AIT> ait = parseSectionFile("ait_typical.bin", accepted);
    ASSERT_TRUE(accepted);
    EXPECT_TRUE(ait->isComplete());
    EXPECT_EQ(ait->getVersionNumber(), 30);
    ASSERT_EQ(ait->getNumApplications(), 2u);
    const AITApplication* autostart = ait->getAITApplication(0x120ul, 0x71);
    const AITApplication* present = ait->getAITApplication(0x120ul, 0x72);
    ASSERT_TRUE(autostart && present);
    EXPECT_EQ(autostart->getControlCode(), AITApplication::AUTOSTART);
    EXPECT_EQ(present->getControlCode(), AITApplication::PRESENT);
    EXPECT_EQ(autostart->getApplicationLocation(), "path/foo");
    EXPECT_EQ(present->getApplicationLocation(), "path/bar");
    EXPECT_EQ(autostart->getNumTransports(), 0);
    EXPECT_EQ(ait->getAITApplication(AITApplication::AUTOSTART, true), nullptr);
}

TEST(RealSectionsTest, SectionsWithoutUrlBaseOrPath)
{
    REQUIRE_SHARED_DATA();
    bool accepted = false;
    ref_ptr<AIT> noBase = parseSectionFile("ait_no_url_base.bin", accepted);
    ASSERT_TRUE(accepted);
    ASSERT_EQ(noBase->getNumApplications(), 1u);
    EXPECT_EQ(noBase->getAITApplication(0u)->getApplicationLocation(), "foo/bar");

    ref_ptr<AIT> noPath = parseSectionFile("ait_no_url_path.bin", accepted);
    ASSERT_TRUE(accepted);
    ASSERT_EQ(noPath->getNumApplications(), 1u);
    EXPECT_EQ(noPath->getAITApplication(0u)->getApplicationLocation(), "");
    EXPECT_EQ(noPath->getAITApplication(0u)->getApplicationIdentifier(), 0x71);
}

} // namespace
