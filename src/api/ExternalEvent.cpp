#include "api/ExternalEvent.h"

#include <cstdlib>
#include <memory>
#include <string>

#include "api/ConfigurationManager.h"
#include "support/LogEntry.h"

namespace TesmoHbbTV {

namespace {

struct FreeDeleter {
    void operator()(void* p) const { std::free(p); }
};

using OwnedData = std::unique_ptr<HBBTV_EventData, FreeDeleter>;

const char* MODULE = "ExternalEvent";

} // namespace

ExternalEvent::ExternalEvent(int type, HBBTV_EventData* data) : type(type), data(data)
{
}

ExternalEvent::~ExternalEvent()
{
    std::free(data);
}

void ExternalEvent::execute()
{
    OwnedData owned(data);
    data = nullptr;

    switch (type) {
    case HBBTV_EVENT_DSMCC_STREAM_EVENT:
        handleStreamEvent(owned.get());
        break;
    case HBBTV_EVENT_TERMINAL_IDENTITY:
        handleTerminalIdentity(owned.get());
        break;
    case HBBTV_EVENT_PLATFORM_PROFILES:
        handlePlatformProfiles(owned.get());
        break;
    default:
        break;
    }
}

void ExternalEvent::handleStreamEvent(HBBTV_EventData* event)
{
    LogEntry(LOG_LEVEL_DEBUG, MODULE) << "E_DSMCC_STREAM_EVENT";
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

} // namespace TesmoHbbTV
