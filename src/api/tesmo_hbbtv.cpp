// The flat C entry points: thin, null-checking fronts onto the library's singletons.

#include "tesmo_hbbtv/tesmo_hbbtv.h"

#include <cstring>
#include <memory>

#include "api/ConfigurationManager.h"
#include "api/ExternalEvent.h"
#include "api/ThreadsafeEventQueue.h"
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

} // namespace

extern "C" {

void tesmo_hbbtv_init(DAXO_Tesmo* core)
{
    if (ConfigurationManager* config = ConfigurationManager::getInstance())
        config->init(core);
    hbbtv_ait_start();
    dsmcc_start();
}

void tesmo_hbbtv_shutdown(void)
{
    hbbtv_ait_stop();
    dsmcc_stop();
    ConfigurationManager::destroyInstance();
}

void tesmo_hbbtv_tick(void)
{
    if (ThreadsafeEventQueue* queue = eventQueue())
        queue->executeFirst();
}

void tesmo_hbbtv_send_event(HBBTV_EventType type, HBBTV_EventData* data)
{
    if (ThreadsafeEventQueue* queue = eventQueue())
        queue->add(new ExternalEvent(rawEventType(type), data));
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

} // extern "C"
