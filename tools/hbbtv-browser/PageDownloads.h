#ifndef TESMO_BROWSER_PAGEDOWNLOADS_H
#define TESMO_BROWSER_PAGEDOWNLOADS_H

#include <webkit2/webkit2.h>

#include <functional>
#include <set>
#include <string>

// Responses a TV takes that WebKit does not show: an XML AIT, which goes to the library, and
// a page of HbbTV's own type (or CE-HTML), whose bytes are shown under the type WebKit
// knows with the page's own URL. Both are fetched through WebKit's network stack, as the
// response that was already under way, so cookies, TLS and redirects stay WebKit's.
class PageDownloads {
public:
    struct Handlers {
        std::function<void(WebKitWebView*, const std::string& file)> xmlAit;
        // The page's bytes, the type WebKit is to show them as, its URL and HTTP status.
        std::function<void(WebKitWebView*, GBytes* bytes, const std::string& type, const std::string& uri,
                           unsigned status)>
            page;
        std::function<void(WebKitWebView*, const std::string& uri, const std::string& error)> failed;
        std::function<void(WebKitWebView*)> progress;  // bytes arrived
    };

    PageDownloads(WebKitWebContext* context, Handlers handlers);
    ~PageDownloads();
    PageDownloads(const PageDownloads&) = delete;
    PageDownloads& operator=(const PageDownloads&) = delete;

    // A main-frame response that is one of these becomes a download; true when it did.
    static bool take(WebKitResponsePolicyDecision* decision);
    static bool isXmlAit(const std::string& contentType);
    // Downloads under way: a page still on its way.
    bool busy() const { return !active.empty(); }
    // Gives up the view's downloads; each fails.
    void cancel(WebKitWebView* webView);

private:
    static void started(WebKitWebContext*, WebKitDownload* download, gpointer self);
    static gboolean decideDestination(WebKitDownload* download, const char*, gpointer);
    static void finished(WebKitDownload* download, gpointer self);
    static void failed(WebKitDownload* download, GError* error, gpointer self);
    static void receivedData(WebKitDownload* download, guint64 length, gpointer self);

    WebKitWebContext* context;
    Handlers handlers;
    std::set<WebKitDownload*> active;
};

#endif
