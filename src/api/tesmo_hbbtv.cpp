// The flat C entry points: thin, null-checking fronts onto the library's singletons.

#include "tesmo_hbbtv/tesmo_hbbtv.h"

#include <cstring>
#include <memory>

#include "api/BrowserNotificationDispatcher.h"
#include "api/ConfigurationManager.h"
#include "api/ExternalEvent.h"
#include "api/ThreadsafeEventQueue.h"
#include "bindings/KeySet.h"
#include "lifecycle/Application.h"
#include "lifecycle/Window.h"
#include "lifecycle/WindowManager.h"
#include "notify/NotificationManager.h"
#include "support/EntryGuard.h"
#include "support/LogEntry.h"
#include "support/Logging.h"
#include "support/LoggingOutputFile.h"
#include "support/LoggingOutputStdout.h"
#include "tesmo_hbbtv/platform.h"

using namespace TesmoHbbTV;

namespace {

ThreadsafeEventQueue* eventQueue()
{
    ConfigurationManager* config = ConfigurationManager::getInstance();
    return config ? config->getEventQueue() : nullptr;
}

// A C caller may pass any int as the event type; loading an out-of-range value through the
// C++ enum type would be undefined, so the raw bits are read instead.
int rawEventType(const HBBTV_EventType& type)
{
    int raw;
    static_assert(sizeof raw == sizeof type, "the event type travels as an int");
    std::memcpy(&raw, &type, sizeof raw);
    return raw;
}

// Starting or stopping the library under a running call would pull its state from under
// the frames below the callback.
bool refusedInCallback(const char* function)
{
    if (!EntryGuard::isInside())
        return false;
    LogEntry(LOG_LEVEL_ERR, "tesmo_hbbtv") << function << " called from a callback: refused";
    return true;
}

}  // namespace

extern "C" {

void tesmo_hbbtv_init(DAXO_Tesmo* core)
{
    if (refusedInCallback("tesmo_hbbtv_init"))
        return;
    EntryGuard guard;
    if (ConfigurationManager* config = ConfigurationManager::getInstance())
        config->init(core);
    if (WindowManager* manager = WindowManager::getInstance())
        manager->init();
    hbbtv_ait_start();
    dsmcc_start();
    if (NotificationManager* notifications = NotificationManager::getInstance())
        notifications->init();
}

void tesmo_hbbtv_shutdown(void)
{
    if (refusedInCallback("tesmo_hbbtv_shutdown"))
        return;
    EntryGuard guard;
    WindowManager* manager = WindowManager::getInstance();
    if (manager)
        manager->removeAllWindows();
    // Windows that listeners released meanwhile go while the managers they use still exist.
    EntryGuard::deleteDisposed();
    hbbtv_ait_stop();
    dsmcc_stop();
    if (NotificationManager* notifications = NotificationManager::getInstance())
        notifications->shutdown();
    delete manager;
    ConfigurationManager::destroyInstance();
}

void tesmo_hbbtv_tick(void)
{
    EntryGuard guard;
    if (ThreadsafeEventQueue* queue = eventQueue())
        queue->executeFirst();
}

void tesmo_hbbtv_send_event(HBBTV_EventType type, HBBTV_EventData* data)
{
    std::lock_guard<std::mutex> lock(ConfigurationManager::queueLock());
    if (ThreadsafeEventQueue* queue = ConfigurationManager::existingEventQueue())
        queue->add(new ExternalEvent(rawEventType(type), data));
}

bool tesmo_hbbtv_handle_notification(void*, DAXO_TesmoWindow* window, int id, void* data, int* result)
{
    EntryGuard guard;
    return BrowserNotificationDispatcher(window, data, result).dispatch(id);
}

bool tesmo_hbbtv_key_input(DAXO_TesmoWindow* window, int query_only, DAXO_KEY_SYM key, uint8_t modifiers)
{
    EntryGuard guard;
    WindowManager* manager = WindowManager::getInstance();
    Window* managed = manager ? manager->getWindow(window) : nullptr;
    Application* app = managed ? managed->getApplication(window) : nullptr;
    if (!app || !app->getKeySet()->matchesKey(key))
        return false;
    if (!query_only) {
        daxo_keyboard_evt(0, key, modifiers);
        daxo_keyboard_evt(1, key, modifiers);
    }
    return true;
}

bool tesmo_hbbtv_add_notification_listener(HBBTV_NotificationListener listener)
{
    EntryGuard guard;
    NotificationManager* notifications = listener ? NotificationManager::getInstance() : nullptr;
    if (!notifications)
        return false;
    notifications->addListener(listener);
    return true;
}

HBBTV_Window* tesmo_hbbtv_create_window(void)
{
    EntryGuard guard;
    WindowManager* manager = WindowManager::getInstance();
    return manager ? manager->createWindow() : nullptr;
}

void tesmo_hbbtv_release_window(HBBTV_Window* window)
{
    EntryGuard guard;
    if (WindowManager* manager = WindowManager::getInstance())
        manager->removeWindow(window);
}

HBBTV_Window* tesmo_hbbtv_get_window_identifier(DAXO_TesmoWindow* daxo_window)
{
    EntryGuard guard;
    WindowManager* manager = WindowManager::getInstance();
    return manager ? manager->getWindow(daxo_window) : nullptr;
}

bool tesmo_hbbtv_is_hbbtv_window(DAXO_TesmoWindow* daxo_window)
{
    EntryGuard guard;
    WindowManager* manager = daxo_window ? WindowManager::getInstance() : nullptr;
    return manager && manager->getWindow(daxo_window);
}

void tesmo_hbbtv_set_broadcast_window(HBBTV_Window* window)
{
    EntryGuard guard;
    if (WindowManager* manager = WindowManager::getInstance())
        manager->setBroadcastWindow(window);
}

HBBTV_Window* tesmo_hbbtv_get_broadcast_window(void)
{
    EntryGuard guard;
    WindowManager* manager = WindowManager::getInstance();
    return manager ? manager->getBroadcastWindow() : nullptr;
}

DAXO_TesmoWindow* tesmo_hbbtv_get_daxo_window(HBBTV_Window* window)
{
    EntryGuard guard;
    WindowManager* manager = window ? WindowManager::getInstance() : nullptr;
    if (!manager || !manager->handledWindow(window))
        return nullptr;
    return manager->getDaxoWindow(window);
}

bool tesmo_hbbtv_is_within_boundaries(HBBTV_Window* window, const char* url)
{
    EntryGuard guard;
    WindowManager* manager = window && url ? WindowManager::getInstance() : nullptr;
    // A window the manager does not hold is gone, or was never a window: nothing to ask.
    if (!manager || !manager->handledWindow(window))
        return false;
    Application* running = window->getRunningApplication();
    return running && running->isWithinApplicationBoundaries(url);
}

HBBTV_STATUS tesmo_hbbtv_set_time_shifted(HBBTV_Window* window, int time_shifted)
{
    EntryGuard guard;
    WindowManager* manager = window ? WindowManager::getInstance() : nullptr;
    if (!manager || !manager->handledWindow(window))
        return HBBTV_STATUS_FAILED;
    return window->setTimeShifted(time_shifted > 0) ? HBBTV_STATUS_OK : HBBTV_STATUS_FAILED;
}

bool tesmo_hbbtv_add_log_output(int min_level, const char* path)
{
    const auto level = static_cast<LogLevel>(min_level);
    if (!path) {
        Logging::getInstance()->addOutput(std::make_unique<LoggingOutputStdout>(level));
        return true;
    }
    auto file = std::make_unique<LoggingOutputFile>(level);
    if (!file->openFile(path))
        return false;
    Logging::getInstance()->addOutput(std::move(file));
    return true;
}

}  // extern "C"
