#include "PageView.h"

namespace {

std::string withoutFragment(const std::string& uri)
{
    return uri.substr(0, uri.find('#'));
}

// Workers of their own process, and connections opened ahead of a request, go outside the
// page's request check.
void withoutFeatures(WebKitSettings* settings, std::initializer_list<const char*> names)
{
    WebKitFeatureList* features = webkit_settings_get_all_features();
    for (gsize i = 0; i < webkit_feature_list_get_length(features); ++i) {
        WebKitFeature* feature = webkit_feature_list_get(features, i);
        for (const char* name : names)
            if (g_strcmp0(webkit_feature_get_identifier(feature), name) == 0)
                webkit_settings_set_feature_enabled(settings, feature, FALSE);
    }
    webkit_feature_list_unref(features);
}

const char* const COMPLETE = "tesmo-complete";  // a resource that has come whole

}  // namespace

PageView::PageView(WebKitWebContext* context, WebKitUserContentManager* content, DAXO_TesmoWindow* window,
                   PageLoad::Clock::duration quietLimit, bool webSockets)
    : browserWindow(window), view(WEBKIT_WEB_VIEW(g_object_ref_sink(
                                 g_object_new(WEBKIT_TYPE_WEB_VIEW, "web-context", context, "user-content-manager",
                                              content, "website-policies", tvPolicies(), nullptr)))),
      pageLoad(quietLimit), warmingUp(window == nullptr)
{
    g_signal_connect(view, "resource-load-started", G_CALLBACK(resourceStarted), this);
    g_signal_connect(view, "notify::estimated-load-progress", G_CALLBACK(progressed), this);
    const GdkRGBA transparent = {0, 0, 0, 0};
    webkit_web_view_set_background_color(view, &transparent);
    WebKitSettings* settings = webkit_web_view_get_settings(view);
    webkit_settings_set_allow_file_access_from_file_urls(settings, FALSE);
    webkit_settings_set_enable_page_cache(settings, FALSE);
    withoutFeatures(settings, {"ServiceWorkers", "SharedWorker", "LinkDNSPrefetch", "LinkPreconnect"});
    if (!webSockets)
        withoutFeatures(settings, {"WebSocket"});
    // A remote control's arrows move between the page's links, as on a TV, and its keys go
    // straight to the page, with no input method composing text from them.
    webkit_settings_set_enable_spatial_navigation(settings, TRUE);
    webkit_web_view_set_input_method_context(view, nullptr);
    if (!window) {
        // After the core's own handlers, which are to see the blank page as warming up.
        g_signal_connect_after(view, "load-changed", G_CALLBACK(warmUpChanged), this);
        webkit_web_view_load_uri(view, "about:blank");
    }
}

void PageView::warmUpChanged(WebKitWebView* webView, WebKitLoadEvent event, gpointer self)
{
    if (event != WEBKIT_LOAD_FINISHED)
        return;
    static_cast<PageView*>(self)->warmingUp = false;
    g_signal_handlers_disconnect_by_func(webView, reinterpret_cast<gpointer>(warmUpChanged), self);
}

WebKitWebsitePolicies* PageView::tvPolicies()
{
    static WebKitWebsitePolicies* const policies =
        webkit_website_policies_new_with_policies("autoplay", WEBKIT_AUTOPLAY_ALLOW, nullptr);
    return policies;
}

PageView::~PageView()
{
    g_signal_handlers_disconnect_by_data(view, this);
    webkit_web_view_terminate_web_process(view);
    g_object_unref(view);
}

std::string PageView::uri() const
{
    const char* current = webkit_web_view_get_uri(view);
    return current ? current : "";
}

void PageView::setUserAgentExtension(const std::string& extension)
{
    WebKitSettings* settings = webkit_web_view_get_settings(view);
    webkit_settings_set_user_agent(settings, nullptr);
    if (!extension.empty())
        webkit_settings_set_user_agent(
            settings, (std::string(webkit_settings_get_user_agent(settings)) + " " + extension).c_str());
}

void PageView::load(const std::string& url)
{
    pageLoad.requested(url, PageLoad::Clock::now());
    webkit_web_view_load_uri(view, url.c_str());
}

void PageView::stopLoading()
{
    webkit_web_view_stop_loading(view);
}

// A resource that starts, and the engine's estimate of the load that moves as bytes arrive,
// are progress of the load under way.
void PageView::resourceStarted(WebKitWebView*, WebKitWebResource* resource, WebKitURIRequest*, gpointer self)
{
    static_cast<PageView*>(self)->pageLoad.progressed(PageLoad::Clock::now());
    g_signal_connect(resource, "finished", G_CALLBACK(resourceFinished), nullptr);
}

void PageView::progressed(WebKitWebView*, GParamSpec*, gpointer self)
{
    static_cast<PageView*>(self)->pageLoad.progressed(PageLoad::Clock::now());
}

void PageView::resourceFinished(WebKitWebResource* resource, gpointer)
{
    g_object_set_data(G_OBJECT(resource), COMPLETE, GINT_TO_POINTER(1));
}

unsigned PageView::documentStatus() const
{
    WebKitWebResource* page = webkit_web_view_get_main_resource(view);
    WebKitURIResponse* response = page ? webkit_web_resource_get_response(page) : nullptr;
    return response ? webkit_uri_response_get_status_code(response) : 0;
}

bool PageView::isDocumentComplete() const
{
    WebKitWebResource* page = webkit_web_view_get_main_resource(view);
    return page && g_object_get_data(G_OBJECT(page), COMPLETE);
}

// WebKit takes a load of the document's own URL with a fragment for a jump within it, so a
// reload of such a page loads it without its fragment.
void PageView::showBytes(GBytes* bytes, const std::string& type, const std::string& url)
{
    const std::string target = withoutFragment(uri()) == withoutFragment(url) ? withoutFragment(url) : url;
    webkit_web_view_load_bytes(view, bytes, type.c_str(), nullptr, target.c_str());
}

void PageView::sendKey(bool press, unsigned keyval)
{
    GdkWindow* window = gtk_widget_get_window(widget());
    if (!window)
        return;
    GdkEvent* event = gdk_event_new(press ? GDK_KEY_PRESS : GDK_KEY_RELEASE);
    event->key.window = GDK_WINDOW(g_object_ref(window));
    event->key.send_event = TRUE;
    event->key.time = guint32(g_get_monotonic_time() / 1000);
    event->key.keyval = keyval;
    GdkKeymapKey* entries = nullptr;
    gint count = 0;
    if (gdk_keymap_get_entries_for_keyval(gdk_keymap_get_for_display(gdk_window_get_display(window)), keyval, &entries,
                                          &count) &&
        count > 0)
        event->key.hardware_keycode = guint16(entries[0].keycode);
    g_free(entries);
    GdkSeat* seat = gdk_display_get_default_seat(gdk_window_get_display(window));
    gdk_event_set_device(event, seat ? gdk_seat_get_keyboard(seat) : nullptr);
    if (!gtk_widget_has_focus(widget()))
        gtk_widget_grab_focus(widget());
    gtk_main_do_event(event);
    gdk_event_free(event);
}

void PageView::evaluate(const std::string& script, std::function<void(const std::string&)> done)
{
    auto* callback = new std::function<void(const std::string&)>(std::move(done));
    webkit_web_view_evaluate_javascript(
        view, script.c_str(), -1, nullptr, nullptr, nullptr,
        [](GObject* source, GAsyncResult* result, gpointer data) {
            auto* reply = static_cast<std::function<void(const std::string&)>*>(data);
            GError* error = nullptr;
            JSCValue* value = webkit_web_view_evaluate_javascript_finish(WEBKIT_WEB_VIEW(source), result, &error);
            char* json = value ? jsc_value_to_json(value, 0) : nullptr;
            (*reply)(json ? json : value ? "undefined" : std::string("error: ") + (error ? error->message : "?"));
            g_free(json);
            if (value)
                g_object_unref(value);
            g_clear_error(&error);
            delete reply;
        },
        callback);
}
