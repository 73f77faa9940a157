#ifndef TESMO_BROWSER_PAGEVIEW_H
#define TESMO_BROWSER_PAGEVIEW_H

#include <webkit2/webkit2.h>

#include <cstdint>
#include <functional>
#include <set>
#include <string>

#include "PageLoad.h"
#include "tesmo_hbbtv/browser_core.h"

// The web view of one browser window, set up as a TV's: transparent where the page paints
// nothing, spatial navigation for the remote's arrows, no input method, the library's
// user-agent extension, none of the engine's ways to load behind the TV's back (service and
// shared workers, DNS prefetching, the page cache that would keep a page's process alive).
// Its web process goes with it, even one stuck in a loop.
class PageView {
public:
    // A view for no window yet starts its web process at once, so that the first window the
    // platform grants finds one ready.
    // A load that receives nothing for quietLimit has failed.
    PageView(WebKitWebContext* context, WebKitUserContentManager* content, DAXO_TesmoWindow* window,
             PageLoad::Clock::duration quietLimit, bool webSockets = true);
    void assign(DAXO_TesmoWindow* window) { browserWindow = window; }
    // The blank page that starts the process of a view made for no window is no load of the
    // core's (it may finish after the core's first load was asked for).
    bool isWarmingUp() const { return warmingUp; }
    ~PageView();
    PageView(const PageView&) = delete;
    PageView& operator=(const PageView&) = delete;

    DAXO_TesmoWindow* window() const { return browserWindow; }
    WebKitWebView* webView() const { return view; }
    GtkWidget* widget() const { return GTK_WIDGET(view); }
    guint64 pageId() const { return webkit_web_view_get_page_id(view); }
    std::string uri() const;

    // WebKit's own user agent with the extension after it (none when empty).
    void setUserAgentExtension(const std::string& extension);
    void load(const std::string& url);
    // Stops what is loading (the core has given up on it).
    void stopLoading();
    // A page's bytes under a type the engine shows, with the page's own URL.
    void showBytes(GBytes* bytes, const std::string& type, const std::string& url);
    // A key as the engine's own input, through GTK's dispatch to the focused view.
    void sendKey(bool press, unsigned keyval);
    // A script's value as JSON text, or the error.
    void evaluate(const std::string& script, std::function<void(const std::string&)> done);

    // A TV has no user to make a gesture: media plays when the page says so.
    static WebKitWebsitePolicies* tvPolicies();

    // The loads of this view: what became of each. Every byte that arrives counts as progress.
    PageLoad& loads() { return pageLoad; }
    // The main document: its HTTP status (0 where there is none), whether it has come whole.
    unsigned documentStatus() const;
    bool isDocumentComplete() const;
    // The applications the document was given (its own, those it created): the only ones it may name.
    std::set<uintptr_t> applications;

private:
    static void warmUpChanged(WebKitWebView* webView, WebKitLoadEvent event, gpointer self);
    static void resourceStarted(WebKitWebView* webView, WebKitWebResource* resource, WebKitURIRequest*, gpointer self);
    static void progressed(WebKitWebView* webView, GParamSpec*, gpointer self);
    static void resourceFinished(WebKitWebResource* resource, gpointer webView);

    DAXO_TesmoWindow* browserWindow;
    WebKitWebView* view;  // owned through the screen's container once added
    PageLoad pageLoad;
    bool warmingUp;
};

#endif
