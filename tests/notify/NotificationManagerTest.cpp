#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ExactBuffer.h"
#include "PlatformListener.h"
#include "SectionBuilder.h"
#include "notify/AITUpdateNotification.h"
#include "notify/GetFreeMemoryNotification.h"
#include "notify/NotificationManager.h"
#include "notify/ReleaseWindowNotification.h"
#include "notify/RequestWindowNotification.h"
#include "notify/StartApplicationNotification.h"
#include "notify/StopApplicationNotification.h"
#include "notify/TrustedNotification.h"
#include "notify/XHRNotification.h"
#include "si/AIT.h"

using namespace TesmoHbbTV;
using namespace tesmo_test;
using ::testing::ElementsAre;

namespace {

std::vector<int32_t> writtenActions;
HBBTV_STATUS writeOne(HBBTV_NotificationType, HBBTV_NotificationData* data)
{
    data->application.action = 1;
    return HBBTV_STATUS_FAILED;
}
HBBTV_STATUS writeTwo(HBBTV_NotificationType, HBBTV_NotificationData* data)
{
    writtenActions.push_back(data->application.action);
    data->application.action = 2;
    return HBBTV_STATUS_OK;
}

class NotificationManagerTest : public ::testing::Test {
protected:
    void SetUp() override { PlatformListener::get().reset(); }
    void TearDown() override
    {
        NotificationManager::getInstance()->shutdown();
        PlatformListener::get().reset();
    }
    NotificationManager& manager() { return *NotificationManager::getInstance(); }
};

TEST_F(NotificationManagerTest, WithoutListenersEveryQuestionKeepsItsPreset)
{
    int32_t action = 0;
    manager().broadcast(new StartApplicationNotification(nullptr, true, 1, 2, "u", 0, true, &action));
    EXPECT_EQ(action, 0);
    action = 1;
    manager().broadcast(new StartApplicationNotification(nullptr, true, 1, 0x8000, "u", 0, true, &action));
    EXPECT_EQ(action, 1) << "a preset block stands";
    DAXO_TesmoWindow* slot = nullptr;
    bool granted = true, released = true, trusted = true;
    manager().broadcast(new RequestWindowNotification(&slot, &granted, nullptr));
    manager().broadcast(new ReleaseWindowNotification(&slot, &released));
    manager().broadcast(new TrustedNotification(nullptr, "u", &trusted, true, 1, 2, 0, false));
    EXPECT_FALSE(granted);
    EXPECT_FALSE(released);
    EXPECT_TRUE(trusted) << "the library's own verdict stands";
    long freeMemory = -1;
    manager().broadcast(new GetFreeMemoryNotification(&freeMemory));
    EXPECT_EQ(freeMemory, -1);
}

TEST_F(NotificationManagerTest, ListenersRunInOrderAndTheLastWriterWins)
{
    writtenActions.clear();
    manager().addListener(writeOne);
    manager().addListener(writeTwo);
    manager().addListener(writeTwo);
    manager().addListener(nullptr);
    int32_t action = 0;
    manager().broadcast(new StartApplicationNotification(nullptr, false, 0, 0, "u", 0, false, &action));
    EXPECT_EQ(action, 2);
    EXPECT_THAT(writtenActions, ElementsAre(1, 2)) << "each sees the earlier one's answer; a double is called twice";

    manager().removeListener(writeTwo);
    manager().removeListener(writeTwo);
    manager().removeListener(writeTwo);
    action = 0;
    manager().broadcast(new StartApplicationNotification(nullptr, false, 0, 0, "u", 0, false, &action));
    EXPECT_EQ(action, 1);
}

TEST_F(NotificationManagerTest, NullStringsArriveEmptyAndAnswersComeBack)
{
    PlatformListener::get().reactivateAit = true;
    PlatformListener::get().trusted = false;
    manager().addListener(&PlatformListener::listen);
    bool reactivate = false;
    manager().broadcast(
        new StopApplicationNotification(reinterpret_cast<void*>(0x5), true, 7, 8, nullptr, &reactivate));
    bool trusted = true;
    manager().broadcast(new TrustedNotification(nullptr, "http://x/", &trusted, true, 1, 2, 3, true));
    int32_t permission = 0;
    manager().broadcast(new XHRNotification(nullptr, "http://t/", &permission));
    EXPECT_TRUE(reactivate);
    EXPECT_FALSE(trusted);
    const std::vector<Notice>& n = PlatformListener::get().notices;
    ASSERT_EQ(n.size(), 3u);
    EXPECT_EQ(n[0].url, "");
    EXPECT_EQ(n[0].organisationId, 7u);
    EXPECT_EQ(n[1].flagC, 1);
    EXPECT_EQ(n[1].usageType, 3);
    EXPECT_EQ(n[2].url, "http://t/");
}

ref_ptr<AIT> tableWithThreeTransports()
{
    ApplicationDescriptorFields fields;
    fields.labels = {1, 2, 3};
    ref_ptr<AIT> ait(new AIT(1, 2, 3, nullptr));
    ExactBuffer section(AITSection()
                            .application(App(0x10, 1)
                                             .with(applicationDescriptor(fields))
                                             .with(nameDescriptor("One"))
                                             .with(httpTransport(1, "http://t1/"))
                                             .with(httpTransport(2, "http://t2/"))
                                             .with(carouselTransport(3, 9))
                                             .with(locationDescriptor("i.html")))
                            .application(App(0x10, 2, 2))
                            .bytes());
    EXPECT_TRUE(ait->parse(section.get()));
    return ait;
}

TEST_F(NotificationManagerTest, AitUpdateListsUrlsLastTransportFirst)
{
    manager().addListener(&PlatformListener::listen);
    ref_ptr<AIT> ait = tableWithThreeTransports();
    manager().broadcast(new AITUpdateNotification(reinterpret_cast<void*>(0x9), ait.get()));
    const Notice& update = PlatformListener::get().notices.at(0);
    EXPECT_EQ(update.window, reinterpret_cast<void*>(0x9));
    ASSERT_EQ(update.applications.size(), 2u);
    EXPECT_EQ(update.applications[0].name, "One");
    EXPECT_EQ(update.applications[0].controlCode, 1);
    EXPECT_THAT(update.applications[0].urls,
                ElementsAre("dvb://1.2.3.9/i.html", "http://t2/i.html", "http://t1/i.html"));
    EXPECT_EQ(update.applications[1].controlCode, 0) << "no application descriptor";
    EXPECT_TRUE(update.applications[1].urls.empty());
    EXPECT_EQ(update.wasCorrected, 0);
}

TEST_F(NotificationManagerTest, AitUpdateWithoutTableOrApplications)
{
    manager().addListener(&PlatformListener::listen);
    manager().broadcast(new AITUpdateNotification(nullptr, nullptr));
    ref_ptr<AIT> empty(new AIT(1, 2, 3, nullptr));
    manager().broadcast(new AITUpdateNotification(nullptr, empty.get()));
    const std::vector<Notice>& n = PlatformListener::get().notices;
    ASSERT_EQ(n.size(), 2u);
    EXPECT_FALSE(n[0].hasPayload);
    EXPECT_TRUE(n[1].hasPayload);
    EXPECT_TRUE(n[1].applications.empty());
}

DAXO_AITApplicationTransport xmlTransport{3, "http://x/", 0, 0, 0, 0, 0};

TEST_F(NotificationManagerTest, CorrectedFlagIsReportedForXmlTablesOnly)
{
    manager().addListener(&PlatformListener::listen);
    DAXO_AITApplication record{"x", 1, 2, 2, 3, 0, 0, 0, nullptr, 1, &xmlTransport, "a", 0, nullptr, 0};
    DAXO_AITData data{1, &record};
    ref_ptr<AIT> xml(new AIT());
    ASSERT_TRUE(xml->parse(data));
    manager().broadcast(new AITUpdateNotification(nullptr, xml.get()));
    EXPECT_EQ(PlatformListener::get().notices.at(0).wasCorrected, 1);
    EXPECT_EQ(PlatformListener::get().notices.at(0).isXmlAit, 1);
}

}  // namespace
