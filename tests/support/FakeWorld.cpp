#include "FakeWorld.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ostream>

namespace tesmo_test {

std::ostream& operator<<(std::ostream& out, const Call& call)
{
    out << call.name << "(";
    for (size_t i = 0; i < call.args.size(); ++i)
        out << (i ? ", " : "") << call.args[i];
    return out << ")";
}

std::string ptr(const void* p)
{
    if (!p)
        return "null";
    char text[32];
    std::snprintf(text, sizeof text, "%p", p);
    return text;
}

FakeWorld& FakeWorld::get()
{
    static FakeWorld world;
    return world;
}

void FakeWorld::reset()
{
    std::lock_guard<std::mutex> lock(mutex);
    recorded.clear();
    supportedKeys = 0;
    openUrlResult = 0;
    loadingUrlResult = 0;
    loadingUrl.clear();
    getWindowResult = 0;
    windowsByHandle.clear();
    resolveRelativeUrl = nullptr;
    getFileResult = DSMCC_PENDING;
    mimeTypeResult = DSMCC_OK;
    mimeType.reset();
    filePieces.clear();
    readFailsAtPiece = -1;
    readCursor.clear();
    sameCarouselResult = 0;
    sameCarousel = 1;
    subscribeResult = 0;
}

std::vector<Call> FakeWorld::calls() const
{
    std::lock_guard<std::mutex> lock(mutex);
    return recorded;
}

std::vector<std::string> FakeWorld::callNames() const
{
    std::vector<std::string> names;
    for (const Call& call : calls())
        names.push_back(call.name);
    return names;
}

std::vector<Call> FakeWorld::callsTo(const std::string& name) const
{
    std::vector<Call> matching;
    for (const Call& call : calls())
        if (call.name == name)
            matching.push_back(call);
    return matching;
}

void FakeWorld::record(std::string name, std::vector<std::string> args)
{
    std::lock_guard<std::mutex> lock(mutex);
    recorded.push_back(Call{std::move(name), std::move(args)});
}

}  // namespace tesmo_test

using tesmo_test::FakeWorld;
using tesmo_test::ptr;

namespace {

FakeWorld& world()
{
    return FakeWorld::get();
}
std::string text(const char* s)
{
    return s ? s : "(null)";
}
std::string num(long long n)
{
    return std::to_string(n);
}

}  // namespace

extern "C" {

// ---- browser core ----

int tm_open_url(DAXO_TesmoWindow* window, const char* url)
{
    world().record("tm_open_url", {ptr(window), text(url)});
    return world().openUrlResult;
}

void tm_clear_history(DAXO_TesmoWindow* window)
{
    world().record("tm_clear_history", {ptr(window)});
}

int tm_get_loading_url(DAXO_TesmoWindow* window, const char** url, int flags)
{
    world().record("tm_get_loading_url", {ptr(window), num(flags)});
    if (url)
        *url = world().loadingUrl.c_str();
    return world().loadingUrlResult;
}

int tm_get_window(DAXO_Tesmo* core, long handle, DAXO_TesmoWindow** window)
{
    world().record("tm_get_window", {ptr(core), num(handle)});
    auto found = world().windowsByHandle.find(handle);
    *window = found == world().windowsByHandle.end() ? nullptr : found->second;
    return world().getWindowResult;
}

int tm_resolve_relative_url(const char* base, const char* relative, char** result)
{
    world().record("tm_resolve_relative_url", {text(base), text(relative)});
    if (world().resolveRelativeUrl)
        return world().resolveRelativeUrl(base, relative, result);
    return 0;
}

void tm_protocol_set_mime_type(void* stream, const char* mime_type)
{
    world().record("tm_protocol_set_mime_type", {ptr(stream), text(mime_type)});
}

void tm_protocol_write(void* stream, const unsigned char* data, unsigned int length)
{
    world().record("tm_protocol_write", {ptr(stream), std::string(reinterpret_cast<const char*>(data), length)});
}

void tm_protocol_finished(void* stream, int status)
{
    world().record("tm_protocol_finished", {ptr(stream), num(status)});
}

void tm_protocol_failed(void* stream, int status)
{
    world().record("tm_protocol_failed", {ptr(stream), num(status)});
}

void tm_set_uastring_extension(DAXO_Tesmo* core, const char* extension)
{
    world().record("tm_set_uastring_extension", {ptr(core), text(extension)});
}

void daxo_keyboard_evt(int action, DAXO_KEY_SYM key, uint8_t modifiers)
{
    world().record("daxo_keyboard_evt", {num(action), num(key), num(modifiers)});
}

// ---- platform ----

void hbbtv_ait_start(void)
{
    world().record("hbbtv_ait_start", {});
}
void hbbtv_ait_stop(void)
{
    world().record("hbbtv_ait_stop", {});
}
void hbbtv_ait_invalidate(void)
{
    world().record("hbbtv_ait_invalidate", {});
}

void hbbtv_ait_completed(int version_number)
{
    world().record("hbbtv_ait_completed", {num(version_number)});
}

int hbbtv_keyset_get_supported_values(void)
{
    world().record("hbbtv_keyset_get_supported_values", {});
    return world().supportedKeys;
}

void dsmcc_start(void)
{
    world().record("dsmcc_start", {});
}
void dsmcc_stop(void)
{
    world().record("dsmcc_stop", {});
}
void dsmcc_clear_cache(void)
{
    world().record("dsmcc_clear_cache", {});
}

int dsmcc_get_file(const char* path, void* id)
{
    world().record("dsmcc_get_file", {text(path), ptr(id)});
    return world().getFileResult;
}

int dsmcc_get_mime_type(void* id, char** mime_type)
{
    world().record("dsmcc_get_mime_type", {ptr(id)});
    *mime_type = world().mimeType ? strdup(world().mimeType->c_str()) : nullptr;
    return world().mimeTypeResult;
}

int dsmcc_read(void* id, const unsigned char** data, unsigned int* length)
{
    world().record("dsmcc_read", {ptr(id)});
    size_t& piece = world().readCursor[id];
    if (static_cast<int>(piece) == world().readFailsAtPiece)
        return DSMCC_FILE_ERROR_CODE;
    if (piece >= world().filePieces.size()) {
        *data = nullptr;
        *length = 0;
        return DSMCC_OK;
    }
    const std::string& bytes = world().filePieces[piece++];
    *data = reinterpret_cast<const unsigned char*>(bytes.data());
    *length = static_cast<unsigned int>(bytes.size());
    return DSMCC_OK;
}

int dsmcc_close_file(void* id)
{
    world().record("dsmcc_close_file", {ptr(id)});
    world().readCursor.erase(id);
    return DSMCC_OK;
}

int dsmcc_same_carousel(const char* url, const char* other_url, int* same)
{
    world().record("dsmcc_same_carousel", {text(url), text(other_url)});
    *same = world().sameCarousel;
    return world().sameCarouselResult;
}

int dsmcc_stream_event_subscribe(const char* path, void* a, void* b, void* c, void* d)
{
    world().record("dsmcc_stream_event_subscribe", {text(path), ptr(a), ptr(b), ptr(c), ptr(d)});
    return world().subscribeResult;
}

int dsmcc_xml_stream_event_subscribe(void* first, uint16_t a, uint16_t service_id, uint16_t b, void* x, void* y,
                                     void* z)
{
    world().record("dsmcc_xml_stream_event_subscribe",
                   {ptr(first), num(a), num(service_id), num(b), ptr(x), ptr(y), ptr(z)});
    return world().subscribeResult;
}

int dsmcc_stream_event_unsubscribe(void* a, void* b)
{
    world().record("dsmcc_stream_event_unsubscribe", {ptr(a), ptr(b)});
    return DSMCC_OK;
}

int dsmcc_stream_event_unsubscribe_all(void* a)
{
    world().record("dsmcc_stream_event_unsubscribe_all", {ptr(a)});
    return DSMCC_OK;
}

// For tests written in C.
int fake_world_call_count(const char* name)
{
    return static_cast<int>(world().callsTo(name).size());
}

void fake_world_reset(void)
{
    world().reset();
}

}  // extern "C"
