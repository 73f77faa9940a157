#include "DvbScheme.h"

#include <fcntl.h>
#include <gio/gunixinputstream.h>
#include <glib-unix.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

#include "PageTypes.h"
#include "tesmo_hbbtv/tesmo_hbbtv.h"

// A dvb: request and the library's protocol stream for it.
struct DvbScheme::Stream {
    WebKitURISchemeRequest* request;
    DAXO_TesmoWindow* window;
    std::string url;
    std::string mime;
    bool responded = false;
    bool ended = false;  // the library finished or failed it
    bool stopped = false;  // the core told the library it dropped it
    int pipeIn = -1;
    std::string pending;
    guint watch = 0;
};

namespace {

// The file's type, and the page's leave to read it: every request that gets here was vetted
// for its page (the library decides what lies within the application's boundaries).
SoupMessageHeaders* headersFor(WebKitURISchemeRequest* request, const std::string& type)
{
    SoupMessageHeaders* headers = soup_message_headers_new(SOUP_MESSAGE_HEADERS_RESPONSE);
    soup_message_headers_append(headers, "Content-Type", type.c_str());
    SoupMessageHeaders* asked = webkit_uri_scheme_request_get_http_headers(request);
    const char* origin = asked ? soup_message_headers_get_one(asked, "Origin") : nullptr;
    soup_message_headers_append(headers, "Access-Control-Allow-Origin", origin ? origin : "*");
    return headers;
}

}  // namespace

DvbScheme::DvbScheme(WebKitWebContext* context, WindowOf windowOfView, Say sayLine)
    : windowOf(std::move(windowOfView)), say(std::move(sayLine))
{
    webkit_web_context_register_uri_scheme(context, "dvb", request, this, nullptr);
    // A broadcast-related page of any scheme reads its carousel's files, as a TV's pages do:
    // the files answer cross-origin requests, and an https page may ask for them.
    WebKitSecurityManager* security = webkit_web_context_get_security_manager(context);
    webkit_security_manager_register_uri_scheme_as_cors_enabled(security, "dvb");
    webkit_security_manager_register_uri_scheme_as_secure(security, "dvb");
}

DvbScheme::~DvbScheme()
{
    for (auto& entry : streams) {
        if (entry.second->watch)
            g_source_remove(entry.second->watch);
        if (entry.second->pipeIn >= 0)
            close(entry.second->pipeIn);
        g_object_unref(entry.second->request);
    }
}

void DvbScheme::request(WebKitURISchemeRequest* request, gpointer data)
{
    auto* self = static_cast<DvbScheme*>(data);
    WebKitWebView* webView = webkit_uri_scheme_request_get_web_view(request);
    DAXO_TesmoWindow* window = webView ? self->windowOf(webView) : nullptr;
    if (!window) {
        GError* error = g_error_new_literal(G_IO_ERROR, G_IO_ERROR_NOT_FOUND, "not a page of an HbbTV application");
        webkit_uri_scheme_request_finish_error(request, error);
        g_error_free(error);
        return;
    }
    auto stream = std::make_unique<Stream>();
    stream->request = WEBKIT_URI_SCHEME_REQUEST(g_object_ref(request));
    stream->window = window;
    stream->url = webkit_uri_scheme_request_get_uri(request);
    void* handle = stream.get();
    self->streams[handle] = std::move(stream);
    DAXO_ProtocolRecord record{self->streams[handle]->url.c_str(), nullptr, handle};
    int result = 0;
    const bool handled =
        tesmo_hbbtv_handle_notification(nullptr, window, DAXO_TESMO_EVT_PROTOCOL_LOADING_START, &record, &result);
    auto found = self->streams.find(handle);
    if (found == self->streams.end() || found->second->ended)
        return;
    if (!handled || result != 0) {
        self->say("no carousel stream for " + found->second->url);
        self->respond(*found->second, 404);
        found->second->ended = true;
        found->second->stopped = !handled;  // a stream the library never took needs no stop
    }
}

void DvbScheme::mimeType(void* handle, const std::string& mime)
{
    auto found = streams.find(handle);
    if (found != streams.end())
        found->second->mime = mime;
}

void DvbScheme::data(void* handle, const unsigned char* bytes, unsigned int length)
{
    auto found = streams.find(handle);
    if (found == streams.end() || found->second->ended)
        return;
    Stream& stream = *found->second;
    stream.pending.append(reinterpret_cast<const char*>(bytes), length);
    if (PageTypes::isXhtml(stream.mime))
        return;  // the whole page decides its type
    if (!stream.responded)
        respond(stream, 200);
    flush(stream);
}

void DvbScheme::ended(void* handle, int status, bool finished)
{
    auto found = streams.find(handle);
    if (found == streams.end() || found->second->ended)
        return;
    Stream& stream = *found->second;
    if (!stream.responded)
        respond(stream, finished ? 200 : (status >= 400 ? status : 404));
    stream.ended = true;
    flush(stream);
}

// The response head: a 200 whose body is the pipe, or an empty error.
void DvbScheme::respond(Stream& stream, int status)
{
    stream.responded = true;
    GInputStream* body = nullptr;
    int ends[2];
    if (status == 200 && g_unix_open_pipe(ends, FD_CLOEXEC, nullptr)) {
        g_unix_set_fd_nonblocking(ends[1], TRUE, nullptr);
        stream.pipeIn = ends[1];
        body = g_unix_input_stream_new(ends[0], TRUE);
    } else {
        status = status == 200 ? 500 : status;
        stream.pending.clear();
        body = g_memory_input_stream_new();
    }
    WebKitURISchemeResponse* response = webkit_uri_scheme_response_new(body, -1);
    webkit_uri_scheme_response_set_status(response, guint(status), nullptr);
    const std::string type = PageTypes::forEngine(stream.mime, stream.pending);
    webkit_uri_scheme_response_set_content_type(response, type.c_str());
    webkit_uri_scheme_response_set_http_headers(response, headersFor(stream.request, type));
    webkit_uri_scheme_request_finish_with_response(stream.request, response);
    g_object_unref(response);
    g_object_unref(body);
}

// Writes what the pipe takes now; the rest when it can take more. The pipe closes once the
// library has finished and everything is through.
void DvbScheme::flush(Stream& stream)
{
    while (stream.pipeIn >= 0 && !stream.pending.empty()) {
        const ssize_t written = write(stream.pipeIn, stream.pending.data(), stream.pending.size());
        if (written > 0) {
            stream.pending.erase(0, size_t(written));
        } else if (written < 0 && errno == EAGAIN) {
            if (!stream.watch)
                stream.watch = g_unix_fd_add(
                    stream.pipeIn, G_IO_OUT,
                    [](int, GIOCondition, gpointer data) -> gboolean {
                        auto* s = static_cast<Stream*>(data);
                        s->watch = 0;
                        flush(*s);
                        return G_SOURCE_REMOVE;
                    },
                    &stream);
            return;
        } else {
            stream.pending.clear();  // the page went away
        }
    }
    if (stream.ended && stream.pipeIn >= 0 && stream.pending.empty()) {
        close(stream.pipeIn);
        stream.pipeIn = -1;
    }
}

void DvbScheme::windowGone(DAXO_TesmoWindow* window)
{
    for (auto& entry : streams)
        if (entry.second->window == window && !entry.second->ended) {
            entry.second->ended = true;
            if (!entry.second->responded)
                respond(*entry.second, 404);
        }
}

void DvbScheme::afterTick()
{
    std::vector<void*> dropped;
    for (auto& entry : streams)
        if (entry.second->ended && !entry.second->stopped)
            dropped.push_back(entry.first);
    for (void* handle : dropped)
        stop(handle);
    for (auto it = streams.begin(); it != streams.end();) {
        Stream& stream = *it->second;
        if (stream.stopped && stream.pipeIn < 0 && !stream.watch) {
            g_object_unref(stream.request);
            it = streams.erase(it);
        } else {
            ++it;
        }
    }
}

bool DvbScheme::busy() const
{
    for (const auto& entry : streams)
        if (!entry.second->stopped)
            return true;
    return false;
}

// The core drops a stream the library has ended (or whose page went), and says so; the
// stream is forgotten once its pipe has drained.
void DvbScheme::stop(void* handle)
{
    Stream& stream = *streams[handle];
    stream.stopped = true;
    const std::string url = stream.url;
    DAXO_ProtocolRecord record{url.c_str(), nullptr, handle};
    int result = 0;
    tesmo_hbbtv_handle_notification(nullptr, stream.window, DAXO_TESMO_EVT_PROTOCOL_LOADING_STOP, &record, &result);
}
