// The functions the library resolves from its host: the platform's reach the TV platform,
// the browser core's reach whichever core the program runs.

#include "LibraryNumbers.h"
#include "TvPlatform.h"
#include "tesmo_hbbtv/browser_core.h"
#include "tesmo_hbbtv/platform.h"

namespace {

TvPlatform& tv()
{
    return TvPlatform::get();
}

BrowserCore& core()
{
    return TvPlatform::get().browserCore();
}

}  // namespace

extern "C" {

int tm_open_url(DAXO_TesmoWindow* window, const char* url)
{
    return core().openUrl(window, url);
}
void tm_clear_history(DAXO_TesmoWindow* window)
{
    core().clearHistory(window);
}
int tm_get_loading_url(DAXO_TesmoWindow* window, const char** url, int flags)
{
    return core().loadingUrl(window, url, flags);
}
int tm_get_window(DAXO_Tesmo*, long handle, DAXO_TesmoWindow** window)
{
    return core().windowOfHandle(handle, window);
}
int tm_resolve_relative_url(const char* base, const char* relative, char** result)
{
    return core().resolveRelative(base, relative, result);
}
void tm_protocol_set_mime_type(void* stream, const char* mime_type)
{
    core().protocolMimeType(stream, mime_type);
}
void tm_protocol_write(void* stream, const unsigned char* data, unsigned int length)
{
    core().protocolWrite(stream, data, length);
}
void tm_protocol_finished(void* stream, int status)
{
    core().protocolEnd(stream, status, true);
}
void tm_protocol_failed(void* stream, int status)
{
    core().protocolEnd(stream, status, false);
}
void tm_set_uastring_extension(DAXO_Tesmo*, const char* text)
{
    core().userAgent(text);
}
void daxo_keyboard_evt(int action, DAXO_KEY_SYM key, uint8_t modifiers)
{
    core().keyboard(action, key, modifiers);
}

void hbbtv_ait_start(void)
{
    tv().platformCall("hbbtv_ait_start");
}
void hbbtv_ait_stop(void)
{
    tv().platformCall("hbbtv_ait_stop");
}
void hbbtv_ait_completed(int version_number)
{
    tv().aitCompleted(version_number);
}
void hbbtv_ait_invalidate(void)
{
    tv().platformCall("hbbtv_ait_invalidate");
}
int hbbtv_keyset_get_supported_values(void)
{
    tv().platformCall("hbbtv_keyset_get_supported_values");
    return library::KEYSET_ALL;
}

void dsmcc_start(void)
{
    tv().platformCall("dsmcc_start");
}
void dsmcc_stop(void)
{
    tv().platformCall("dsmcc_stop");
}
void dsmcc_clear_cache(void)
{
    tv().platformCall("dsmcc_clear_cache");
}
int dsmcc_get_file(const char* path, void* id)
{
    return tv().carouselFiles().get(path, id);
}
int dsmcc_get_mime_type(void* id, char** mime_type)
{
    return tv().carouselFiles().mimeType(id, mime_type);
}
int dsmcc_read(void* id, const unsigned char** data, unsigned int* length)
{
    return tv().carouselFiles().read(id, data, length);
}
int dsmcc_close_file(void* id)
{
    return tv().carouselFiles().close(id);
}
int dsmcc_same_carousel(const char* url, const char* other_url, int* same)
{
    return tv().carouselFiles().sameCarousel(url, other_url, same);
}

int dsmcc_stream_event_subscribe(const char* path, void* a, void* b, void* c, void* d)
{
    tv().streamEventRelay().call(JsonLine()
                                     .field("call", "dsmcc_stream_event_subscribe")
                                     .field("path", path)
                                     .pointer("a", a)
                                     .pointer("b", b)
                                     .pointer("c", c)
                                     .pointer("d", d),
                                 std::string("stream events subscribed: ") + (path ? path : ""));
    tv().streamEventRelay().subscribe(path, a, static_cast<const char*>(b));
    return DSMCC_OK;
}

int dsmcc_xml_stream_event_subscribe(void* first, uint16_t a, uint16_t service_id, uint16_t b, void* x, void* y,
                                     void* z)
{
    tv().streamEventRelay().call(JsonLine()
                                     .field("call", "dsmcc_xml_stream_event_subscribe")
                                     .pointer("first", first)
                                     .field("a", a)
                                     .field("service_id", service_id)
                                     .field("b", b)
                                     .pointer("x", x)
                                     .pointer("y", y)
                                     .pointer("z", z),
                                 "stream events subscribed on service " + std::to_string(service_id));
    tv().streamEventRelay().subscribeXml(static_cast<const char*>(first), a, b, x);
    return DSMCC_OK;
}

int dsmcc_stream_event_unsubscribe(void* a, void* b)
{
    tv().streamEventRelay().call(
        JsonLine().field("call", "dsmcc_stream_event_unsubscribe").pointer("a", a).pointer("b", b),
        "stream events unsubscribed");
    tv().streamEventRelay().unsubscribe(a);
    return DSMCC_OK;
}

int dsmcc_stream_event_unsubscribe_all(void* a)
{
    tv().streamEventRelay().call(JsonLine().field("call", "dsmcc_stream_event_unsubscribe_all").pointer("a", a),
                                 "every stream event unsubscribed");
    return DSMCC_OK;
}

}  // extern "C"
