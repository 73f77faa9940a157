#include "api/ExternalEvent.h"

#include <cstdlib>
#include <memory>
#include <string>

#include "api/ConfigurationManager.h"
#include "bindings/ApplicationManagerBindings.h"
#include "carousel/OCDownloadManager.h"
#include "lifecycle/Application.h"
#include "lifecycle/Window.h"
#include "lifecycle/WindowManager.h"
#include "notify/AITUpdateNotification.h"
#include "notify/NotificationManager.h"
#include "si/AIT.h"
#include "support/LogEntry.h"
#include "tesmo_hbbtv/platform.h"

namespace TesmoHbbTV {

namespace {

struct FreeDeleter {
    void operator()(void* p) const { std::free(p); }
};

template <typename T> using PlatformOwned = std::unique_ptr<T, FreeDeleter>;

LogEntry eventLog(LogLevel level)
{
    return LogEntry(level, "ExternalEvent");
}

Window* broadcastWindow()
{
    WindowManager* manager = WindowManager::existingInstance();
    return manager ? manager->getBroadcastWindow() : nullptr;
}

// The window a platform event names, when the window manager still holds it.
Window* existingWindow(HBBTV_Window* window)
{
    WindowManager* manager = WindowManager::existingInstance();
    return window && manager && manager->windowExists(window) ? window : nullptr;
}

}  // namespace

ExternalEvent::ExternalEvent(int type, HBBTV_EventData* data) : type(type), data(data) {}

ExternalEvent::~ExternalEvent()
{
    std::free(data);
}

void ExternalEvent::execute()
{
    PlatformOwned<HBBTV_EventData> owned(data);
    data = nullptr;
    dispatch(owned.get());
}

bool ExternalEvent::forgetWindow(const Window* window)
{
    if (!data)
        return false;
    switch (type) {
    case HBBTV_EVENT_START_APPLICATION:
        return data->start_application.window == window;
    case HBBTV_EVENT_TERMINATE_APPLICATION:
        return data->terminate_application.window == window;
    case HBBTV_EVENT_START_BROADCAST_INDEPENDENT:
        if (data->start_broadcast_independent.window != window)
            return false;
        std::free(data->start_broadcast_independent.url);
        data->start_broadcast_independent.url = nullptr;
        return true;
    default:
        return false;
    }
}

void ExternalEvent::dispatch(HBBTV_EventData* event)
{
    switch (type) {
    case HBBTV_EVENT_AIT_SECTION:
        return handleAitSection(event);
    case HBBTV_EVENT_AIT_WITHDRAWN:
        return handleAitWithdrawn();
    case HBBTV_EVENT_START_APPLICATION:
        return handleStartApplication(event);
    case HBBTV_EVENT_START_BROADCAST_INDEPENDENT:
        return handleStartBroadcastIndependent(event);
    case HBBTV_EVENT_TERMINATE_APPLICATION:
        return handleTerminateApplication(event);
    case HBBTV_EVENT_DSMCC_FILE_READY:
        return handleCarouselFile(event, true);
    case HBBTV_EVENT_DSMCC_FILE_ERROR:
        return handleCarouselFile(event, false);
    case HBBTV_EVENT_BROADBAND_UP:
        return handleBroadband(true);
    case HBBTV_EVENT_BROADBAND_DOWN:
        return handleBroadband(false);
    case HBBTV_EVENT_DSMCC_STREAM_EVENT:
        return handleStreamEvent(event);
    case HBBTV_EVENT_LOW_MEMORY:
        return call_low_memory_listener();
    case HBBTV_EVENT_TERMINAL_IDENTITY:
        return handleTerminalIdentity(event);
    case HBBTV_EVENT_PLATFORM_PROFILES:
        return handlePlatformProfiles(event);
    default:
        return;
    }
}

void ExternalEvent::handleAitSection(HBBTV_EventData* event)
{
    if (!event)
        return;
    PlatformOwned<unsigned char> section(event->ait_section.section);
    eventLog(LOG_LEVEL_DEBUG) << "Retrieving AIT...";
    Window* window = broadcastWindow();
    if (!window || !NotificationManager::existingInstance())
        return;

    // No section and a zero word: the service carries no AIT.
    if (!section && event->ait_section.ait_present == 0) {
        Application* running = window->getRunningApplication();
        if (running && running->getAITApplication() && running->getAITApplication()->isSignalledAsServiceBound())
            window->terminateRunningApplication(true);
        return;
    }
    feedSection(*window, section.get(), *event);
}

void ExternalEvent::feedSection(Window& window, const unsigned char* section, const HBBTV_EventData& event)
{
    const ref_ptr<AIT> current = window.getAIT();
    if (!window.getNextAIT())
        window.setNextAIT(
            ref_ptr<AIT>(new AIT(event.ait_section.original_network_id, event.ait_section.transport_stream_id,
                                 event.ait_section.service_id, event.ait_section.channel)));
    const ref_ptr<AIT> next = window.getNextAIT();
    if (!next->parse(section))
        return;
    if (current && !current->isInvalid() && current->getVersionNumber() == next->getVersionNumber()) {
        window.setNextAIT(ref_ptr<AIT>());
        return;
    }
    if (!next->isComplete())
        return;
    window.setNextAIT(ref_ptr<AIT>());
    NotificationManager::raise<AITUpdateNotification>(&window, next.get());
    hbbtv_ait_completed(next->getVersionNumber());
    window.setAIT(next);
    window.activateAIT();
    next->printAIT();
}

void ExternalEvent::handleAitWithdrawn()
{
    dsmcc_clear_cache();
    hbbtv_ait_invalidate();
    if (Window* window = broadcastWindow()) {
        window->setAIT(ref_ptr<AIT>());
        window->setNextAIT(ref_ptr<AIT>());
    }
}

void ExternalEvent::handleStartApplication(HBBTV_EventData* event)
{
    if (!event)
        return;
    if (Window* window = existingWindow(event->start_application.window))
        window->startApplication(event->start_application.organisation_id, event->start_application.application_id,
                                 HbbTVURL(""));
}

void ExternalEvent::handleStartBroadcastIndependent(HBBTV_EventData* event)
{
    if (!event)
        return;
    PlatformOwned<char> url(event->start_broadcast_independent.url);
    Window* window = existingWindow(event->start_broadcast_independent.window);
    if (!window || !url)
        return;
    if (Application* app = window->startBroadcastIndependentApplication(HbbTVURL(url.get())))
        app->setXMLAITAllowed();
}

void ExternalEvent::handleTerminateApplication(HBBTV_EventData* event)
{
    if (!event)
        return;
    if (Window* window = existingWindow(event->terminate_application.window)) {
        eventLog(LOG_LEVEL_LOG) << "Terminate app!";
        window->terminateRunningApplication(true);
    }
}

void ExternalEvent::handleCarouselFile(HBBTV_EventData* event, bool ready)
{
    eventLog(LOG_LEVEL_DEBUG) << (ready ? "E_DSMCC_FILE_READY" : "E_DSMCC_FILE_ERROR");
    ConfigurationManager* config = ConfigurationManager::getInstance();
    OCDownloadManager* downloads = config ? config->getDownloadManager() : nullptr;
    if (!event || !downloads)
        return;
    if (ready)
        downloads->reportDownloadSucceeded(event->dsmcc_file.handle);
    else
        downloads->reportDownloadFailed(event->dsmcc_file.handle);
}

void ExternalEvent::handleBroadband(bool up)
{
    if (WindowManager* manager = WindowManager::existingInstance())
        manager->setBroadbandOperational(up);
}

void ExternalEvent::handleStreamEvent(HBBTV_EventData* event)
{
    eventLog(LOG_LEVEL_DEBUG) << "E_DSMCC_STREAM_EVENT";
    if (!event)
        return;
    auto& stream = event->stream_event;
    if (stream.callback)
        stream.callback(stream.a, stream.b, stream.c, stream.d, stream.e);
    for (char* text : {stream.a, stream.b, stream.c, stream.d})
        std::free(text);
}

void ExternalEvent::handleTerminalIdentity(HBBTV_EventData* event)
{
    if (!event)
        return;
    auto& identity = event->terminal_identity;
    ConfigurationManager* config = ConfigurationManager::getInstance();

    const bool version121 = identity.version == 2;
    std::string text = version121 ? "HbbTV/1.2.1 (" : "HbbTV/1.1.1 (";
    config->setHbbTVVersion(version121 ? ConfigurationManager::HbbTVVersion{1, 2, 1}
                                       : ConfigurationManager::HbbTVVersion{1, 1, 1});
    for (int i = 0; i < 6; ++i) {
        if (identity.strings[i])
            text += identity.strings[i];
        text += i < 5 ? "; " : ")";
    }
    tm_set_uastring_extension(config->getTesmo(), text.c_str());

    for (char* s : identity.strings)
        std::free(s);
}

void ExternalEvent::handlePlatformProfiles(HBBTV_EventData* event)
{
    if (event)
        ConfigurationManager::getInstance()->setSupportedPlatformProfiles(event->platform_profiles.profiles);
}

}  // namespace TesmoHbbTV
