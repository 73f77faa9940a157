#ifndef TESMO_BROWSER_DVBSCHEME_H
#define TESMO_BROWSER_DVBSCHEME_H

#include <webkit2/webkit2.h>

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "tesmo_hbbtv/browser_core.h"

// dvb: as a URI scheme of WebKit's: each request becomes the library's protocol stream, and
// what the library writes is the response, passed on as it comes through a pipe without
// blocking the main thread. An XHTML page is held until it is complete, so that its bytes
// decide the type WebKit gets.
class DvbScheme {
public:
    using WindowOf = std::function<DAXO_TesmoWindow*(WebKitWebView*)>;
    using Say = std::function<void(const std::string&)>;

    DvbScheme(WebKitWebContext* context, WindowOf windowOf, Say say);
    ~DvbScheme();
    DvbScheme(const DvbScheme&) = delete;
    DvbScheme& operator=(const DvbScheme&) = delete;

    // The library's protocol stream calls.
    void mimeType(void* stream, const std::string& mime);
    void data(void* stream, const unsigned char* bytes, unsigned int length);
    void ended(void* stream, int status, bool finished);

    // A window's streams end with it; the library hears of it at the next tick.
    void windowGone(DAXO_TesmoWindow* window);
    // After each tick: ended streams are dropped and the library told; drained ones forgotten.
    void afterTick();
    bool busy() const;

private:
    struct Stream;

    static void request(WebKitURISchemeRequest* request, gpointer self);
    void respond(Stream& stream, int status);
    static void flush(Stream& stream);
    void stop(void* handle);

    WindowOf windowOf;
    Say say;
    std::map<void*, std::unique_ptr<Stream>> streams;
};

#endif
