// The web-process half of hbbtv-browser. WebKit loads it into every web process; it gives
// each page's main script world the HbbTV objects (the script the TV hands over at start)
// and carries their calls to the TV's main process over a D-Bus peer connection, blocking
// until the answer comes, as a TV's script bindings do.

#include <jsc/jsc.h>
#include <webkit2/webkit-web-extension.h>

namespace {

const char* const OBJECT_PATH = "/tv/tesmo/Browser";
const char* const INTERFACE = "tv.tesmo.Browser";
const int CALL_TIMEOUT_MS = 5000;

GDBusConnection* channel = nullptr;
char* apiScript = nullptr;

// native(name, text, a, b) -> [result, number, text], for the page whose id comes as data.
JSCValue* nativeCall(const char* name, const char* text, double a, double b, gpointer pageId)
{
    JSCContext* context = jsc_context_get_current();
    GError* error = nullptr;
    GVariant* reply = channel ? g_dbus_connection_call_sync(channel, nullptr, OBJECT_PATH, INTERFACE, "Call",
                                                            g_variant_new("(stsdd)", name ? name : "",
                                                                          guint64(GPOINTER_TO_SIZE(pageId)),
                                                                          text ? text : "", a, b),
                                                            G_VARIANT_TYPE("(ids)"), G_DBUS_CALL_FLAGS_NONE,
                                                            CALL_TIMEOUT_MS, nullptr, &error)
                              : nullptr;
    if (!reply) {
        jsc_context_throw(context, error ? error->message : "the TV is not reachable");
        g_clear_error(&error);
        return jsc_value_new_undefined(context);
    }
    gint32 result = 0;
    double number = 0;
    const char* answer = nullptr;
    g_variant_get(reply, "(id&s)", &result, &number, &answer);
    JSCValue* value = jsc_value_new_array(context, G_TYPE_INT, result, G_TYPE_DOUBLE, number, G_TYPE_STRING, answer,
                                          G_TYPE_NONE);
    g_variant_unref(reply);
    return value;
}

void onWindowObjectCleared(WebKitScriptWorld* world, WebKitWebPage* page, WebKitFrame* frame, gpointer)
{
    if (!webkit_frame_is_main_frame(frame) || !apiScript)
        return;
    JSCContext* context = webkit_frame_get_js_context_for_script_world(frame, world);
    JSCValue* native = jsc_value_new_function(context, "__tesmoNative", G_CALLBACK(nativeCall),
                                              GSIZE_TO_POINTER(gsize(webkit_web_page_get_id(page))), nullptr,
                                              JSC_TYPE_VALUE, 4, G_TYPE_STRING, G_TYPE_STRING, G_TYPE_DOUBLE,
                                              G_TYPE_DOUBLE);
    jsc_context_set_value(context, "__tesmoNative", native);
    JSCValue* done = jsc_context_evaluate(context, apiScript, -1);
    if (JSCException* exception = jsc_context_get_exception(context)) {
        g_warning("the HbbTV objects could not be made: %s", jsc_exception_get_message(exception));
        jsc_context_clear_exception(context);
    }
    g_object_unref(done);
    g_object_unref(native);
    g_object_unref(context);
}

} // namespace

// The TV hands over (address of its D-Bus server, the script of the HbbTV objects).
extern "C" G_MODULE_EXPORT void webkit_web_extension_initialize_with_user_data(WebKitWebExtension*,
                                                                               const GVariant* userData)
{
    const char* address = nullptr;
    const char* script = nullptr;
    g_variant_get(const_cast<GVariant*>(userData), "(&s&s)", &address, &script);
    apiScript = g_strdup(script);
    GError* error = nullptr;
    channel = g_dbus_connection_new_for_address_sync(address, G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT, nullptr,
                                                     nullptr, &error);
    if (!channel) {
        g_warning("no channel to the TV at %s: %s", address, error->message);
        g_clear_error(&error);
    }
    g_signal_connect(webkit_script_world_get_default(), "window-object-cleared", G_CALLBACK(onWindowObjectCleared),
                     nullptr);
}
