// Stream-event subscriptions from page scripts, handed to the carousel client with the
// carousel path of the page's application. The opaque values pass through unchanged.

#include <cmath>
#include <cstdint>
#include <string>

#include "api/ConfigurationManager.h"
#include "lifecycle/Application.h"
#include "lifecycle/Window.h"
#include "lifecycle/WindowManager.h"
#include "support/EntryGuard.h"
#include "tesmo_hbbtv/bindings.h"
#include "tesmo_hbbtv/platform.h"

using namespace TesmoHbbTV;

namespace {

const int RESULT_OK = 0;
const int RESULT_NOT_FOUND = 3;

// The page's application, when it has an AIT entry.
Application* signalledApplicationOf(long handle)
{
    WindowManager* manager = WindowManager::existingInstance();
    DAXO_Tesmo* core = ConfigurationManager::getInstance()->getTesmo();
    if (!manager || !core)
        return nullptr;
    DAXO_TesmoWindow* browserWindow = nullptr;
    tm_get_window(core, handle, &browserWindow);
    Window* window = browserWindow ? manager->getWindow(browserWindow) : nullptr;
    Application* app = window ? window->getApplication(browserWindow) : nullptr;
    return app && app->getAITApplication() ? app : nullptr;
}

// The low 16 bits of the number taken as an unsigned 32-bit value; a number outside every
// integer range counts as 0.
uint16_t low16(double value)
{
    if (std::isnan(value) || value <= -9.2e18 || value >= 9.2e18)
        return 0;
    return static_cast<uint16_t>(static_cast<uint32_t>(static_cast<int64_t>(value)));
}

}  // namespace

extern "C" {

// A target holding "dvb://" anywhere loses its first six characters, wherever that text
// stands (pages rely on it); any other target is taken relative to the application's
// carousel.
int native_BroadcastAddStreamEventListener(const char* target, void* a, void* b, void* c, void* d, long window_handle)
{
    EntryGuard guard;
    Application* app = signalledApplicationOf(window_handle);
    if (!app)
        return RESULT_NOT_FOUND;
    const std::string text = target ? target : "";
    std::string path;
    if (text.size() >= 7 && text.find("dvb://") != std::string::npos)
        path = text.substr(6);
    else
        path = (app->getTransport() ? app->getTransport()->getHostname() : "") + "/" + text;
    dsmcc_stream_event_subscribe(path.c_str(), a, b, c, d);
    return RESULT_OK;
}

int native_BroadcastAddXMLStreamEventListener(void* first, double a, double b, void* x, void* y, void* z,
                                              long window_handle)
{
    EntryGuard guard;
    Application* app = signalledApplicationOf(window_handle);
    if (!app || !app->getTransport())
        return RESULT_NOT_FOUND;
    dsmcc_xml_stream_event_subscribe(first, low16(a), app->getTransport()->getServiceId(), low16(b), x, y, z);
    return RESULT_OK;
}

int native_BroadcastRemoveStreamEventListener(void*, void* a, void* b)
{
    EntryGuard guard;
    dsmcc_stream_event_unsubscribe(a, b);
    return RESULT_OK;
}

int native_BroadcastRemoveAllStreamEventListeners(void* a)
{
    EntryGuard guard;
    dsmcc_stream_event_unsubscribe_all(a);
    return RESULT_OK;
}

}  // extern "C"
