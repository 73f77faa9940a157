#ifndef TESMO_HBBTV_TESTS_LIFECYCLEFIXTURE_H
#define TESMO_HBBTV_TESTS_LIFECYCLEFIXTURE_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ExactBuffer.h"
#include "LibraryFixture.h"
#include "LogCapture.h"
#include "PlatformListener.h"
#include "SectionBuilder.h"
#include "api/ConfigurationManager.h"
#include "api/ThreadsafeEventQueue.h"
#include "lifecycle/Application.h"
#include "lifecycle/Window.h"
#include "lifecycle/ApplicationPolicyHbbTV.h"
#include "lifecycle/WindowManager.h"
#include "si/AIT.h"

namespace tesmo_test {

// An initialised library with one broadcast window and a platform listener that grants
// browser windows. Tables go to the window through its own interface.
class LifecycleTest : public LibraryTest {
protected:
    void SetUp() override
    {
        LibraryTest::SetUp();
        platform().reset();
        tesmo_hbbtv_init(reinterpret_cast<DAXO_Tesmo*>(0xC0DE));
        platform().install();
        window = tesmo_hbbtv_create_window();
        tesmo_hbbtv_set_broadcast_window(window);
    }
    void TearDown() override
    {
        LibraryTest::TearDown();
        platform().reset();
    }

    static PlatformListener& platform() { return PlatformListener::get(); }

    // A broadcast table of one section.
    static TesmoHbbTV::ref_ptr<TesmoHbbTV::AIT> table(const std::vector<App>& apps, uint8_t version = 1,
                                                       void* channel = nullptr)
    {
        AITSection section;
        section.version(version);
        for (const App& app : apps)
            section.application(app);
        TesmoHbbTV::ref_ptr<TesmoHbbTV::AIT> ait(new TesmoHbbTV::AIT(0x1, 0x2, 0x3, channel));
        ExactBuffer bytes(section.bytes());
        EXPECT_TRUE(ait->parse(bytes.get()));
        return ait;
    }

    // An application entry with an HTTP transport, and optionally a carousel one after it.
    static App entry(uint16_t id, uint8_t controlCode, uint8_t priority = 1, bool carouselToo = false,
                     bool serviceBound = false)
    {
        ApplicationDescriptorFields fields;
        fields.priority = priority;
        fields.serviceBound = serviceBound;
        fields.labels = carouselToo ? Bytes{1, 2} : Bytes{1};
        App app(0x10, id, controlCode);
        app.with(applicationDescriptor(fields))
            .with(httpTransport(1, "http://app" + std::to_string(id) + ".tv/"))
            .with(locationDescriptor("index.html"));
        if (carouselToo)
            app.with(carouselTransport(2, 5));
        return app;
    }

    void deliver(const TesmoHbbTV::ref_ptr<TesmoHbbTV::AIT>& ait)
    {
        window->setAIT(ait);
        window->activateAIT();
    }

    // Runs every queued event, including those queued while running.
    static void tickAll()
    {
        for (int i = 0; i < 1000; ++i)
            tesmo_hbbtv_tick();
    }

    TesmoHbbTV::Application* running() const { return window->getRunningApplication(); }
    DAXO_TesmoWindow* runningBrowserWindow() const { return running() ? running()->getDaxoWindow() : nullptr; }

    // Starts the table's AUTOSTART application and reports its first page loaded.
    TesmoHbbTV::Application* runAutostart(const TesmoHbbTV::ref_ptr<TesmoHbbTV::AIT>& ait)
    {
        deliver(ait);
        tickAll();
        if (running())
            window->reportLoadSuccess(runningBrowserWindow());
        return running();
    }

    std::vector<std::string> openedUrls() const
    {
        std::vector<std::string> urls;
        for (const Call& call : FakeWorld::get().callsTo("tm_open_url"))
            urls.push_back(call.args[1]);
        return urls;
    }

    HBBTV_Window* window = nullptr;
};

} // namespace tesmo_test

#endif
