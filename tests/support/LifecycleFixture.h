#ifndef TESMO_HBBTV_TESTS_LIFECYCLEFIXTURE_H
#define TESMO_HBBTV_TESTS_LIFECYCLEFIXTURE_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ExactBuffer.h"
#include "LogCapture.h"
#include "PlatformFixture.h"
#include "SectionBuilder.h"
#include "api/ConfigurationManager.h"
#include "api/ThreadsafeEventQueue.h"
#include "lifecycle/Application.h"
#include "lifecycle/Window.h"
#include "lifecycle/ApplicationPolicyHbbTV.h"
#include "lifecycle/WindowManager.h"
#include "si/AIT.h"

namespace tesmo_test {

// Tables go to the window through its own interface.
class LifecycleTest : public PlatformTest {
protected:
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
};

}  // namespace tesmo_test

#endif
