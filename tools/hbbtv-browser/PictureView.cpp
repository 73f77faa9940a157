#include "PictureView.h"

#include "PageView.h"

#include <json-glib/json-glib.h>

#include <cstdio>

namespace {

// The engine names a transport stream's audio tracks by their PIDs in hexadecimal; the
// player enables the one the TV chose (data-audio) whenever the stream's tracks appear.
const char* const PLAYER =
    "<!DOCTYPE html><html><body style=\"margin:0;background:#000;overflow:hidden\">"
    "<video id=\"picture\" loop style=\"position:absolute;left:0;top:0;width:1280px;height:720px;"
    "object-fit:fill\"></video><script>"
    "function pickAudio() { var v = document.getElementById('picture'), want = v.dataset.audio || '';"
    "  for (var i = 0; i < v.audioTracks.length; ++i)"
    "    v.audioTracks[i].enabled = want === '' ? i === 0 : v.audioTracks[i].id === want;"
    "  v.muted = want === 'none';"
    "  return Array.prototype.filter.call(v.audioTracks, function (t) { return t.enabled && !v.muted; })"
    "    .map(function (t) { return t.id; }).join(','); }"
    "document.getElementById('picture').audioTracks.addEventListener('addtrack', pickAudio);"
    "</script></body></html>";
const char* const FULL_SCREEN = "left:0;top:0;width:1280px;height:720px";

// Resolves once the player's picture plays ("playing") or fails ("error").
const char* const WATCH = "var v = document.getElementById('picture');"
                          "if (v.readyState >= HTMLMediaElement.HAVE_CURRENT_DATA) return 'playing';"
                          "if (v.error) return 'error';"
                          "return await new Promise(function (resolve) {"
                          "  v.addEventListener('loadeddata', function () { resolve('playing'); }, { once: true });"
                          "  v.addEventListener('error', function () { resolve('error'); }, { once: true });"
                          "});";

std::string quoted(const std::string& text)
{
    JsonNode* node = json_node_init_string(json_node_alloc(), text.c_str());
    char* json = json_to_string(node, FALSE);
    std::string result = json;
    g_free(json);
    json_node_unref(node);
    return result;
}

}  // namespace

PictureView::PictureView(WebKitWebContext* context, WebKitUserContentManager* content, StateChanged stateChanged,
                         AudioChanged audioHeard)
    : view(WEBKIT_WEB_VIEW(
          g_object_ref_sink(g_object_new(WEBKIT_TYPE_WEB_VIEW, "web-context", context, "user-content-manager", content,
                                         "website-policies", PageView::tvPolicies(), nullptr)))),
      changed(std::move(stateChanged)), audioChanged(std::move(audioHeard)), placement(FULL_SCREEN)
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
    g_cancellable_cancel(alive);
    g_object_unref(alive);
    if (watching) {
        g_cancellable_cancel(watching);
        g_object_unref(watching);
    }
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
    setState(source.empty() ? "none" : "connecting");
    apply();
}

void PictureView::show(bool visible)
{
    if (visible == shown)
        return;
    shown = visible;
    apply();
}

void PictureView::place(int x, int y, int width, int height)
{
    const std::string box = width <= 0 || height <= 0 ? FULL_SCREEN
                                                      : "left:" + std::to_string(x) + "px;top:" + std::to_string(y) +
                                                            "px;width:" + std::to_string(width) +
                                                            "px;height:" + std::to_string(height) + "px";
    if (box == placement)
        return;
    placement = box;
    apply();
}

void PictureView::setAudio(int pid)
{
    char id[12] = "";
    if (pid >= 0)
        std::snprintf(id, sizeof id, "%x", unsigned(pid));
    const std::string wanted = pid == -1 ? "none" : id;
    if (wanted == audio)
        return;
    audio = wanted;
    if (!ready)
        return;
    const std::string script =
        "document.getElementById('picture').dataset.audio = " + quoted(audio) + "; return pickAudio();";
    webkit_web_view_call_async_javascript_function(view, script.c_str(), -1, nullptr, nullptr, nullptr, alive,
                                                   audioApplied, this);
}

void PictureView::audioApplied(GObject* source, GAsyncResult* result, gpointer data)
{
    GError* error = nullptr;
    JSCValue* value = webkit_web_view_call_async_javascript_function_finish(WEBKIT_WEB_VIEW(source), result, &error);
    if (g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED)) {
        g_error_free(error);
        return;  // the view is gone
    }
    char* pids = value && jsc_value_is_string(value) ? jsc_value_to_string(value) : nullptr;
    if (pids && static_cast<PictureView*>(data)->audioChanged)
        static_cast<PictureView*>(data)->audioChanged(pids);
    g_free(pids);
    g_clear_error(&error);
    if (value)
        g_object_unref(value);
}

// The player follows: the stream while shown, nothing (and no decoding) while hidden.
void PictureView::apply()
{
    gtk_widget_set_visible(widget(), shown && hasSource());
    if (!ready)
        return;
    const std::string wanted = shown ? source : "";
    const std::string script = "var v = document.getElementById('picture'), url = " + quoted(wanted) +
                               "; v.dataset.audio = " + quoted(audio) +
                               "; v.style.cssText = 'position:absolute;object-fit:fill;' + " + quoted(placement) +
                               "; if (!url) { v.pause(); v.removeAttribute('src'); v.load(); }"
                               " else if (v.getAttribute('src') !== url) { v.src = url; v.play(); }";
    webkit_web_view_evaluate_javascript(view, script.c_str(), -1, nullptr, nullptr, nullptr, nullptr, nullptr);
    if (wanted == playing)
        return;
    playing = wanted;
    setState(source.empty() ? "none" : "connecting");
    if (!wanted.empty())
        watch();
}

// One watch at a time, for the source the player has now.
void PictureView::watch()
{
    if (watching) {
        g_cancellable_cancel(watching);
        g_object_unref(watching);
    }
    watching = g_cancellable_new();
    webkit_web_view_call_async_javascript_function(view, WATCH, -1, nullptr, nullptr, nullptr, watching, watched, this);
}

void PictureView::watched(GObject* source, GAsyncResult* result, gpointer data)
{
    GError* error = nullptr;
    JSCValue* value = webkit_web_view_call_async_javascript_function_finish(WEBKIT_WEB_VIEW(source), result, &error);
    if (g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED)) {
        g_error_free(error);
        return;  // the view is gone, or watches another source
    }
    auto* self = static_cast<PictureView*>(data);
    char* state = value && jsc_value_is_string(value) ? jsc_value_to_string(value) : nullptr;
    self->setState(state && g_strcmp0(state, "playing") == 0 ? "playing" : "error");
    g_free(state);
    g_clear_error(&error);
    if (value)
        g_object_unref(value);
}

void PictureView::setState(const std::string& state)
{
    if (state == playState)
        return;
    playState = state;
    if (changed)
        changed(state);
}
