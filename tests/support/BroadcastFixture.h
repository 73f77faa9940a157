#ifndef TESMO_HBBTV_TESTS_BROADCASTFIXTURE_H
#define TESMO_HBBTV_TESTS_BROADCASTFIXTURE_H

// Whole scenarios through the exported C interface only: the platform posts events, the
// browser core reports notifications, scripts call the bindings, and the recording double
// and listener see what the library does.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

#include "LogCapture.h"
#include "PlatformFixture.h"
#include "SectionBuilder.h"
#include "tesmo_hbbtv/bindings.h"

namespace tesmo_test {

class BroadcastTest : public PlatformTest {
protected:
    static void post(HBBTV_EventType type, HBBTV_EventData* data) { tesmo_hbbtv_send_event(type, data); }

    // An AIT section of the tuned service, as the platform's section filter hands it over.
    static void postSection(const Bytes& section, void* channel = nullptr)
    {
        HBBTV_EventData* data = platformEvent();
        auto* bytes = static_cast<unsigned char*>(std::malloc(section.size()));
        std::memcpy(bytes, section.data(), section.size());
        data->ait_section.section = bytes;
        data->ait_section.original_network_id = 0x1;
        data->ait_section.transport_stream_id = 0x2;
        data->ait_section.service_id = 0x3;
        data->ait_section.ait_present = 1;
        data->ait_section.channel = channel;
        post(HBBTV_EVENT_AIT_SECTION, data);
    }

    static void postSimple(HBBTV_EventType type) { post(type, platformEvent()); }

    static bool notify(DAXO_TesmoWindow* browserWindow, int id, void* data, int* result)
    {
        return tesmo_hbbtv_handle_notification(nullptr, browserWindow, id, data, result);
    }

    // The browser core reports the page of a browser window loaded (or not).
    static int loadFinished(DAXO_TesmoWindow* browserWindow, int32_t outcome = 0, int16_t status = 200)
    {
        DAXO_LoadRecord record{};
        record.outcome = outcome;
        record.http_status = status;
        int result = 99;
        notify(browserWindow, DAXO_TESMO_EVT_LOADING_FINISHED, &record, &result);
        return result;
    }

    // An application section: one AUTOSTART entry with HTTP and carousel transports.
    static Bytes autostartSection(uint8_t version = 1, uint16_t id = 1, const std::string& location = "index.html")
    {
        ApplicationDescriptorFields fields;
        fields.labels = {1, 2};
        return AITSection()
            .version(version)
            .application(App(0x10, id, 1)
                             .with(applicationDescriptor(fields))
                             .with(httpTransport(1, "http://app" + std::to_string(id) + ".tv/"))
                             .with(carouselTransport(2, 5))
                             .with(locationDescriptor(location)))
            .bytes();
    }

    // The browser window granted for the running application, once it was started.
    static DAXO_TesmoWindow* appWindow() { return platform().lastGrantedWindow(); }
};

}  // namespace tesmo_test

#endif
