#include "PictureView.h"

#include "PageView.h"

#include <json-glib/json-glib.h>

namespace {

const char* const PLAYER = "<!DOCTYPE html><html><body style=\"margin:0;background:#000;overflow:hidden\">"
                           "<video id=\"picture\" loop style=\"width:1280px;height:720px;object-fit:fill\"></video>"
                           "</body></html>";

}  // namespace

PictureView::PictureView(WebKitWebContext* context, WebKitUserContentManager* content)
    : view(WEBKIT_WEB_VIEW(
          g_object_ref_sink(g_object_new(WEBKIT_TYPE_WEB_VIEW, "web-context", context, "user-content-manager", content,
                                         "website-policies", PageView::tvPolicies(), nullptr))))
{
    g_signal_connect(view, "load-changed", G_CALLBACK(+[](WebKitWebView*, WebKitLoadEvent event, gpointer self) {
                         if (event != WEBKIT_LOAD_FINISHED)
                             return;
                         static_cast<PictureView*>(self)->ready = true;
                         static_cast<PictureView*>(self)->apply();
                     }),
                     this);
    gtk_widget_set_visible(widget(), FALSE);
}

PictureView::~PictureView()
{
    g_signal_handlers_disconnect_by_data(view, this);
    webkit_web_view_terminate_web_process(view);
    g_object_unref(view);
}

// The player's web process starts with the first service that has a picture.
void PictureView::setSource(const std::string& url)
{
    if (url == source)
        return;
    if (source.empty() && !url.empty() && !loading) {
        loading = true;
        webkit_web_view_load_html(view, PLAYER, "about:blank");
    }
    source = url;
    apply();
}

void PictureView::show(bool visible)
{
    if (visible == shown)
        return;
    shown = visible;
    apply();
}

// The player follows: the stream while shown, nothing (and no decoding) while hidden.
void PictureView::apply()
{
    gtk_widget_set_visible(widget(), shown && hasSource());
    if (!ready)
        return;
    JsonNode* url = json_node_init_string(json_node_alloc(), shown ? source.c_str() : "");
    char* quoted = json_to_string(url, FALSE);
    const std::string script = std::string("var v = document.getElementById('picture'), url = ") + quoted +
                               "; if (!url) { v.pause(); v.removeAttribute('src'); v.load(); }"
                               " else if (v.getAttribute('src') !== url) { v.src = url; v.play(); }";
    g_free(quoted);
    json_node_unref(url);
    webkit_web_view_evaluate_javascript(view, script.c_str(), -1, nullptr, nullptr, nullptr, nullptr, nullptr);
}
