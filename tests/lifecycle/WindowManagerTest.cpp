#include "LifecycleFixture.h"
#include "tesmo_hbbtv/bindings.h"

using namespace TesmoHbbTV;
using namespace tesmo_test;

namespace {

std::vector<uint32_t> destroyed;
void recordDestroyed(uint32_t id)
{
    destroyed.push_back(id);
}

class WindowManagerTest : public LibraryTest {
protected:
    void SetUp() override
    {
        LibraryTest::SetUp();
        tesmo_hbbtv_init(nullptr);
        manager = WindowManager::getInstance();
    }
    WindowManager* manager = nullptr;
};

TEST_F(WindowManagerTest, OneWindowAtATimeInCreationOrder)
{
    LogCapture log;
    EXPECT_EQ(manager->getWindow(0u), nullptr);
    Window* first = tesmo_hbbtv_create_window();
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(tesmo_hbbtv_create_window(), nullptr);
    EXPECT_EQ(manager->getWindow(0u), first);
    EXPECT_EQ(manager->getWindow(1u), nullptr);
    EXPECT_EQ(log.messages().front(), "   LOG [WindowManager] WindowManager::createWindow()");
    EXPECT_EQ(tesmo_hbbtv_get_broadcast_window(), nullptr) << "not the broadcast window by itself";
}

TEST_F(WindowManagerTest, BroadcastWindowIsOneOfTheManagersAndClearedWithIt)
{
    Window* window = tesmo_hbbtv_create_window();
    Window stranger(manager);
    tesmo_hbbtv_set_broadcast_window(&stranger);
    EXPECT_EQ(tesmo_hbbtv_get_broadcast_window(), nullptr);
    tesmo_hbbtv_set_broadcast_window(window);
    tesmo_hbbtv_set_broadcast_window(nullptr);
    EXPECT_EQ(tesmo_hbbtv_get_broadcast_window(), window);
    tesmo_hbbtv_release_window(window);
    EXPECT_EQ(tesmo_hbbtv_get_broadcast_window(), nullptr);
}

TEST_F(WindowManagerTest, RemovingNothingTouchesNoSlot)
{
    LogCapture log;
    EXPECT_FALSE(manager->removeWindow(nullptr));
    EXPECT_TRUE(log.contains(LOG_LEVEL_LOG, "WindowManager", "WindowManager::removeWindow()"));
    EXPECT_NE(tesmo_hbbtv_create_window(), nullptr);
}

TEST_F(WindowManagerTest, BrowserWindowLookups)
{
    Window* window = tesmo_hbbtv_create_window();
    auto* low = reinterpret_cast<DAXO_TesmoWindow*>(0x100);
    auto* high = reinterpret_cast<DAXO_TesmoWindow*>(0x200);
    manager->registerDaxoWindow(high, window);
    manager->registerDaxoWindow(low, window);
    EXPECT_EQ(manager->getDaxoWindow(window), low);
    EXPECT_TRUE(tesmo_hbbtv_is_hbbtv_window(high));
    EXPECT_FALSE(tesmo_hbbtv_is_hbbtv_window(nullptr));
    manager->unregisterDaxoWindow(low);
    EXPECT_EQ(tesmo_hbbtv_get_daxo_window(window), high);
    EXPECT_EQ(tesmo_hbbtv_get_daxo_window(nullptr), nullptr);
}

TEST_F(WindowManagerTest, ApplicationsAreFiledByIdentifier)
{
    destroyed.clear();
    native_ApplicationManagerSetAppDestroyedListener(recordDestroyed);
    Window* window = tesmo_hbbtv_create_window();
    Application a(window, HbbTVURL("http://a/"), nullptr);
    Application b(window, HbbTVURL("http://b/"), nullptr);
    EXPECT_FALSE(manager->registerApplication(nullptr));
    EXPECT_TRUE(manager->registerApplication(&a));
    EXPECT_TRUE(manager->registerApplication(&b));
    EXPECT_EQ(manager->getApplication(a.getID()), &a);
    EXPECT_EQ(manager->getApplication(b.getID()), &b);
    EXPECT_TRUE(manager->unregisterApplication(&a));
    EXPECT_EQ(manager->getApplication(a.getID()), nullptr);
    EXPECT_EQ(destroyed, std::vector<uint32_t>{a.getID()});
    native_ApplicationManagerSetAppDestroyedListener(nullptr);
}

TEST(ApplicationPolicyTest, ReleasingNeverGoesBelowZero)
{
    ApplicationPolicyHbbTV policy;
    policy.releaseWindow();
    EXPECT_TRUE(policy.requestNewWindow());
    EXPECT_FALSE(policy.requestNewWindow());
    policy.releaseWindow();
    EXPECT_TRUE(policy.requestNewWindow());
}

TEST_F(WindowManagerTest, ListenerAddedOnlyWhenGiven)
{
    EXPECT_FALSE(tesmo_hbbtv_add_notification_listener(nullptr));
    EXPECT_TRUE(tesmo_hbbtv_add_notification_listener(&PlatformListener::listen));
}

}  // namespace
