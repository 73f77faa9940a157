#include "PageDownloads.h"

#include <unistd.h>

#include <cstdio>

#include "PageTypes.h"

namespace {

std::string contentTypeOf(WebKitDownload* download)
{
    WebKitURIResponse* response = webkit_download_get_response(download);
    const char* type = response ? webkit_uri_response_get_mime_type(response) : nullptr;
    return type ? type : "";
}

}  // namespace

PageDownloads::PageDownloads(WebKitWebContext* webContext, Handlers downloadHandlers)
    : context(webContext), handlers(std::move(downloadHandlers))
{
    g_signal_connect(context, "download-started", G_CALLBACK(started), this);
}

PageDownloads::~PageDownloads()
{
    for (WebKitDownload* download : active)
        g_signal_handlers_disconnect_by_data(download, this);
    g_signal_handlers_disconnect_by_data(context, this);
}

bool PageDownloads::isXmlAit(const std::string& contentType)
{
    return PageTypes::essence(contentType) == "application/vnd.dvb.ait+xml";
}

bool PageDownloads::take(WebKitResponsePolicyDecision* decision)
{
    const char* type = webkit_uri_response_get_mime_type(webkit_response_policy_decision_get_response(decision));
    const std::string contentType = type ? type : "";
    const bool pageOfATv =
        PageTypes::needsHandOver(contentType) && webkit_response_policy_decision_is_main_frame_main_resource(decision);
    if (!isXmlAit(contentType) && !pageOfATv)
        return false;
    webkit_policy_decision_download(WEBKIT_POLICY_DECISION(decision));
    return true;
}

void PageDownloads::started(WebKitWebContext*, WebKitDownload* download, gpointer self)
{
    static_cast<PageDownloads*>(self)->active.insert(download);
    g_signal_connect(download, "decide-destination", G_CALLBACK(decideDestination), nullptr);
    g_signal_connect(download, "received-data", G_CALLBACK(receivedData), self);
    g_signal_connect(download, "finished", G_CALLBACK(finished), self);
    g_signal_connect(download, "failed", G_CALLBACK(failed), self);
}

// Into a file of our own, removed once it has been read.
gboolean PageDownloads::decideDestination(WebKitDownload* download, const char*, gpointer)
{
    char* path = g_build_filename(g_get_tmp_dir(), "hbbtv-browser-XXXXXX", nullptr);
    const int fd = g_mkstemp(path);
    if (fd >= 0)
        close(fd);
    char* uri = g_filename_to_uri(path, nullptr, nullptr);
    webkit_download_set_allow_overwrite(download, TRUE);
    webkit_download_set_destination(download, uri);
    g_free(uri);
    g_free(path);
    return TRUE;
}

void PageDownloads::finished(WebKitDownload* download, gpointer data)
{
    auto* self = static_cast<PageDownloads*>(data);
    self->active.erase(download);
    WebKitWebView* webView = webkit_download_get_web_view(download);
    const char* destination = webkit_download_get_destination(download);
    char* path = destination ? g_filename_from_uri(destination, nullptr, nullptr) : nullptr;
    const bool complete = !g_object_get_data(G_OBJECT(download), "tesmo-failed");
    if (path && webView && complete) {
        const std::string contentType = contentTypeOf(download);
        if (isXmlAit(contentType)) {
            self->handlers.xmlAit(webView, path);
        } else {
            char* contents = nullptr;
            gsize length = 0;
            if (g_file_get_contents(path, &contents, &length, nullptr)) {
                const std::string bytes(contents, length);
                GBytes* body = g_bytes_new_take(contents, length);
                WebKitURIResponse* response = webkit_download_get_response(download);
                self->handlers.page(webView, body, PageTypes::forEngine(contentType, bytes),
                                    webkit_uri_response_get_uri(response),
                                    webkit_uri_response_get_status_code(response));
                g_bytes_unref(body);
            }
        }
    }
    if (path)
        std::remove(path);
    g_free(path);
}

void PageDownloads::receivedData(WebKitDownload* download, guint64, gpointer data)
{
    if (WebKitWebView* webView = webkit_download_get_web_view(download))
        static_cast<PageDownloads*>(data)->handlers.progress(webView);
}

void PageDownloads::cancel(WebKitWebView* webView)
{
    const std::set<WebKitDownload*> downloads = active;
    for (WebKitDownload* download : downloads)
        if (webkit_download_get_web_view(download) == webView)
            webkit_download_cancel(download);
}

void PageDownloads::failed(WebKitDownload* download, GError* error, gpointer data)
{
    auto* self = static_cast<PageDownloads*>(data);
    g_object_set_data(G_OBJECT(download), "tesmo-failed", GINT_TO_POINTER(1));  // "finished" follows
    WebKitWebView* webView = webkit_download_get_web_view(download);
    WebKitURIRequest* request = webkit_download_get_request(download);
    if (webView)
        self->handlers.failed(webView, request ? webkit_uri_request_get_uri(request) : "", error ? error->message : "");
}
