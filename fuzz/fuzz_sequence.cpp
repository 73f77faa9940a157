// The fuzz bytes choose a sequence of calls through the exported interface only: platform
// events of every type (records owned as a platform hands them over), browser
// notifications of every id, script bindings, ticks, windows made and released, and the
// listener's answers. Stale windows and identifiers are used on purpose. The platform's
// listener and the page's script listeners call back into the library as the bytes
// choose, from inside the calls that notify them, up to three deep.

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "FakeWorld.h"
#include "PlatformListener.h"
#include "SectionBuilder.h"
#include "tesmo_hbbtv/bindings.h"
#include "tesmo_hbbtv/tesmo_hbbtv.h"

using namespace tesmo_test;

namespace {

void streamCallback(char*, char*, char*, char*, void*);

DAXO_Tesmo* const CORE = reinterpret_cast<DAXO_Tesmo*>(0xC0DE);

char* maybeString(FuzzedDataProvider& in)
{
    return in.ConsumeBool() ? nullptr : strdup(in.ConsumeRandomLengthString(48).c_str());
}

class Sequence {
public:
    explicit Sequence(FuzzedDataProvider& in) : in(in)
    {
        current = this;
        PlatformListener::get().onNotice = [](HBBTV_NotificationType, HBBTV_NotificationData*) { callBack(); };
        native_ApplicationManagerSetListener([](uint32_t, uint32_t) { callBack(); });
        native_ApplicationManagerSetAppDestroyedListener([](uint32_t) { callBack(); });
    }
    ~Sequence()
    {
        current = nullptr;
        PlatformListener::get().onNotice = nullptr;
        native_ApplicationManagerSetListener(nullptr);
        native_ApplicationManagerSetAppDestroyedListener(nullptr);
    }

    void run()
    {
        while (in.remaining_bytes() > 0 && steps++ < MAX_STEPS)
            step();
    }

    // Runs queued events, callbacks included: a step queues a few events at most, and the
    // callbacks of the events run here count as steps too.
    void drain()
    {
        for (int ticks = 0; ticks < 4 * steps + 64; ++ticks)
            tesmo_hbbtv_tick();
    }

    // What a listener or stream-event callback may do besides answering: any call, or an
    // attempt to stop and restart the library, which must be refused.
    static void callBack()
    {
        Sequence* self = current;
        if (!self || self->nesting >= 3 || self->steps >= MAX_STEPS || self->in.remaining_bytes() == 0 ||
            !self->in.ConsumeBool())
            return;
        ++self->nesting;
        ++self->steps;
        if (self->in.ConsumeIntegralInRange<int>(0, 15) == 0) {
            tesmo_hbbtv_shutdown();
            tesmo_hbbtv_init(CORE);
        } else {
            self->step();
        }
        --self->nesting;
    }

private:
    // Anything the platform or the core may hold: live, released or never valid.
    HBBTV_Window* someWindow()
    {
        if (windows.empty() || in.ConsumeBool())
            return reinterpret_cast<HBBTV_Window*>(uintptr_t(in.ConsumeIntegralInRange<int>(0, 3)));
        return windows[in.ConsumeIntegralInRange<size_t>(0, windows.size() - 1)];
    }
    DAXO_TesmoWindow* someBrowserWindow()
    {
        DAXO_TesmoWindow* granted = PlatformListener::get().lastGrantedWindow();
        uintptr_t value = in.ConsumeBool() && granted ? reinterpret_cast<uintptr_t>(granted)
                                                      : 0x1000 + 0x100 * in.ConsumeIntegralInRange<uintptr_t>(0, 8);
        return reinterpret_cast<DAXO_TesmoWindow*>(value);
    }
    void* someApplicationId() { return reinterpret_cast<void*>(in.ConsumeIntegralInRange<uintptr_t>(0, 40)); }
    void* someStream() { return reinterpret_cast<void*>(in.ConsumeIntegralInRange<uintptr_t>(1, 4)); }
    std::string someUrl()
    {
        static const char* const urls[] = {"http://app1.tv/index.html",
                                           "dvb:/page.html",
                                           "dvb://1.2.3.5/x",
                                           "dvb://current.ait/10.1",
                                           "https://other.tv/",
                                           "relative.html",
                                           ""};
        return in.ConsumeBool() ? urls[in.ConsumeIntegralInRange<size_t>(0, 6)] : in.ConsumeRandomLengthString(40);
    }

    Bytes someSection()
    {
        if (in.ConsumeBool())
            return in.ConsumeBytes<uint8_t>(in.ConsumeIntegralInRange<size_t>(3, 300));
        ApplicationDescriptorFields fields;
        fields.labels = {1, 2};
        fields.serviceBound = in.ConsumeBool();
        fields.priority = in.ConsumeIntegral<uint8_t>();
        AITSection section;
        section.version(in.ConsumeIntegralInRange<uint8_t>(0, 3))
            .number(in.ConsumeIntegralInRange<uint8_t>(0, 1), in.ConsumeIntegralInRange<uint8_t>(0, 1));
        const int apps = in.ConsumeIntegralInRange<int>(0, 3);
        for (int i = 0; i < apps; ++i)
            section.application(
                App(0x10, in.ConsumeIntegralInRange<uint16_t>(0, 4), in.ConsumeIntegralInRange<uint8_t>(0, 8))
                    .with(applicationDescriptor(fields))
                    .with(httpTransport(1, "http://app" + std::to_string(i) + ".tv/"))
                    .with(carouselTransport(2, 5))
                    .with(locationDescriptor("index.html")));
        return section.bytes();
    }

    void postEvent()
    {
        const int type = in.ConsumeIntegralInRange<int>(0, 14);
        HBBTV_EventData* data = in.ConsumeIntegralInRange<int>(0, 9) == 0
                                    ? nullptr
                                    : static_cast<HBBTV_EventData*>(calloc(1, sizeof(HBBTV_EventData)));
        if (data)
            fill(type, *data);
        HBBTV_EventType raw;
        std::memcpy(&raw, &type, sizeof raw);
        tesmo_hbbtv_send_event(raw, data);
    }

    void fill(int type, HBBTV_EventData& data)
    {
        switch (type) {
        case HBBTV_EVENT_AIT_SECTION:
            if (in.ConsumeBool()) {
                Bytes section = someSection();
                if (section.size() < 3)  // the input ran out
                    break;
                setSectionLength(section);
                data.ait_section.section = static_cast<unsigned char*>(malloc(section.size()));
                std::memcpy(data.ait_section.section, section.data(), section.size());
            }
            data.ait_section.original_network_id = 1;
            data.ait_section.service_id = in.ConsumeIntegralInRange<uint16_t>(3, 4);
            data.ait_section.ait_present = in.ConsumeBool();
            break;
        case HBBTV_EVENT_START_APPLICATION:
            data.start_application.window = someWindow();
            data.start_application.organisation_id = 0x10;
            data.start_application.application_id = in.ConsumeIntegralInRange<uint16_t>(0, 4);
            break;
        case HBBTV_EVENT_START_BROADCAST_INDEPENDENT:
            data.start_broadcast_independent.window = someWindow();
            data.start_broadcast_independent.url = in.ConsumeBool() ? strdup(someUrl().c_str()) : nullptr;
            break;
        case HBBTV_EVENT_TERMINATE_APPLICATION:
            data.terminate_application.window = someWindow();
            break;
        case HBBTV_EVENT_DSMCC_FILE_READY:
        case HBBTV_EVENT_DSMCC_FILE_ERROR:
            data.dsmcc_file.handle = someStream();
            break;
        case HBBTV_EVENT_DSMCC_STREAM_EVENT:
            data.stream_event.callback = in.ConsumeBool() ? streamCallback : nullptr;
            data.stream_event.a = maybeString(in);
            data.stream_event.b = maybeString(in);
            data.stream_event.c = maybeString(in);
            data.stream_event.d = maybeString(in);
            break;
        case HBBTV_EVENT_TERMINAL_IDENTITY:
            data.terminal_identity.version = in.ConsumeIntegralInRange<uint16_t>(0, 3);
            for (char*& s : data.terminal_identity.strings)
                s = maybeString(in);
            break;
        case HBBTV_EVENT_PLATFORM_PROFILES:
            data.platform_profiles.profiles = in.ConsumeIntegral<uint16_t>();
            break;
        default:
            break;
        }
    }

    void notifyCore()
    {
        static const int ids[] = {2, 9, 11, 12, 49, 116, 124, 149, 157, 3, -1};
        const int id = ids[in.ConsumeIntegralInRange<size_t>(0, 10)];
        DAXO_TesmoWindow* browser = someBrowserWindow();
        int result = 0;
        const std::string url = someUrl();
        const std::string base = someUrl();
        DAXO_LoadRecord load{};
        load.outcome = in.ConsumeIntegralInRange<int32_t>(0, 4);
        load.http_status = in.PickValueInArray<int16_t>({200, 404, 500});
        DAXO_ProtocolRecord protocol{url.c_str(), nullptr, someStream()};
        DAXO_RequestRecord request{in.ConsumeBool() ? base.c_str() : nullptr, in.ConsumeBool() ? url.c_str() : nullptr,
                                   0};
        DAXO_AITProfile profile{0, 1, 1, 1};
        DAXO_AITApplicationTransport transport{in.PickValueInArray({1, 3}), "http://xml.tv/", 0, 1, 2, 3, 4};
        DAXO_AITApplication app{"x", 0x10,       in.ConsumeIntegralInRange<uint32_t>(0, 4),
                                1,   3,          0,
                                1,   1,          &profile,
                                1,   &transport, "a.html",
                                0,   nullptr,    0};
        DAXO_AITData ait{in.ConsumeIntegralInRange<int32_t>(0, 1), &app};
        void* data = nullptr;
        switch (id) {
        case 11:
            data = &load;
            break;
        case 49:
        case 116:
            data = &protocol;
            break;
        case 149:
            data = &request;
            break;
        case 157:
            data = &ait;
            break;
        default:
            break;
        }
        if (in.ConsumeIntegralInRange<int>(0, 15) == 0)
            data = nullptr;
        tesmo_hbbtv_handle_notification(nullptr, browser, id, data, in.ConsumeBool() ? &result : nullptr);
    }

    void callBinding()
    {
        const long page = in.ConsumeIntegralInRange<long>(0, 3);
        FakeWorld::get().windowsByHandle[page] = someBrowserWindow();
        void* out = nullptr;
        double number = 0;
        const std::string url = someUrl();
        switch (in.ConsumeIntegralInRange<int>(0, 16)) {
        case 0:
            native_AppManGetApplicationId(page, &out);
            break;
        case 1:
            native_AppManNotifySetChannelCalled(page, url.c_str(), in.ConsumeBool() ? nullptr : &number);
            break;
        case 2:
            native_ApplicationShow(someApplicationId());
            break;
        case 3:
            native_ApplicationHide(someApplicationId());
            break;
        case 4:
            native_ApplicationCreateApplication(url.c_str(), 0, someApplicationId(), &out);
            break;
        case 5:
            native_ApplicationDestroyApplication(someApplicationId());
            break;
        case 6:
            native_AppPrivateDataGetFreeMem(nullptr, nullptr, nullptr, &number);
            break;
        case 7:
            native_AppPrivateDataGetCurrentChannel(someApplicationId(), &out);
            break;
        case 8:
            native_PermissionsIsTrusted(page, url.c_str());
            break;
        case 9:
            native_PermissionsIsBroadcastRelated(page, url.c_str());
            break;
        case 10:
            native_KeySetGetValue(someApplicationId(), &number);
            break;
        case 11:
            native_KeySetGetMaximumValue(nullptr, &number);
            break;
        case 12:
            native_KeySetSetValue(someApplicationId(), in.ConsumeFloatingPoint<double>(), &number);
            break;
        case 13:
            native_BroadcastAddStreamEventListener(url.c_str(), nullptr, nullptr, nullptr, nullptr, page);
            break;
        case 14:
            native_BroadcastAddXMLStreamEventListener(nullptr, in.ConsumeFloatingPoint<double>(),
                                                      in.ConsumeFloatingPoint<double>(), nullptr, nullptr, nullptr,
                                                      page);
            break;
        case 15:
            native_BroadcastRemoveStreamEventListener(nullptr, someStream(), someStream());
            break;
        default:
            native_BroadcastRemoveAllStreamEventListeners(someStream());
            break;
        }
    }

    void answer()
    {
        PlatformListener& listener = PlatformListener::get();
        listener.grantWindows = in.ConsumeIntegralInRange<int>(0, 5) != 0;
        listener.startAction = in.ConsumeIntegralInRange<int32_t>(0, 3);
        listener.reactivateAit = in.ConsumeBool();
        listener.trusted = in.ConsumeBool();
        FakeWorld& world = FakeWorld::get();
        world.getFileResult = in.ConsumeIntegralInRange<int>(0, 3);
        world.mimeTypeResult = in.ConsumeIntegralInRange<int>(0, 1);
        world.filePieces = {in.ConsumeRandomLengthString(16), in.ConsumeRandomLengthString(16)};
        world.readFailsAtPiece = in.ConsumeIntegralInRange<int>(-1, 2);
        world.loadingUrlResult = in.ConsumeIntegralInRange<int>(0, 1);
        world.loadingUrl = someUrl();
    }

    void step()
    {
        switch (in.ConsumeIntegralInRange<int>(0, 11)) {
        case 0:
        case 1:
            postEvent();
            break;
        case 2:
        case 3:
            tesmo_hbbtv_tick();
            break;
        case 4:
            notifyCore();
            break;
        case 5:
            callBinding();
            break;
        case 6:
            windows.push_back(tesmo_hbbtv_create_window());
            break;
        case 7:
            tesmo_hbbtv_release_window(someWindow());
            break;
        case 8:
            tesmo_hbbtv_set_broadcast_window(someWindow());
            break;
        case 9:
            answer();
            break;
        case 10:
            tesmo_hbbtv_key_input(someBrowserWindow(), in.ConsumeBool(), in.ConsumeIntegral<int32_t>(), 0);
            tesmo_hbbtv_set_time_shifted(someWindow(), in.ConsumeIntegralInRange<int>(-1, 1));
            break;
        default:
            tesmo_hbbtv_is_within_boundaries(someWindow(), someUrl().c_str());
            tesmo_hbbtv_get_daxo_window(someWindow());
            tesmo_hbbtv_is_hbbtv_window(someBrowserWindow());
            break;
        }
    }

    static const int MAX_STEPS = 400;
    static Sequence* current;

    FuzzedDataProvider& in;
    std::vector<HBBTV_Window*> windows;
    int steps = 0;
    int nesting = 0;
};

Sequence* Sequence::current = nullptr;

void streamCallback(char*, char*, char*, char*, void*)
{
    Sequence::callBack();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider in(data, size);
    FakeWorld::get().reset();
    PlatformListener::get().reset();
    FakeWorld::get().supportedKeys = 0x3FF;
    tesmo_hbbtv_init(CORE);
    PlatformListener::get().install();
    {
        Sequence sequence(in);
        sequence.run();
        // An event still queued at shutdown is freed without its strings, by contract: run
        // them all first.
        sequence.drain();
    }
    for (int i = 0; i < 64; ++i)  // what the last callbacks queued
        tesmo_hbbtv_tick();
    tesmo_hbbtv_shutdown();
    return 0;
}
