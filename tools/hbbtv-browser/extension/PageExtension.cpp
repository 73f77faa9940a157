// The web-process half of hbbtv-browser, thin glue. WebKit loads it into every web process;
// for each page's main frame it runs the bridge script with a native function that carries
// calls to the TV's main process over a D-Bus peer connection (blocking until the answer
// comes, as a TV's script bindings do), then each object script with what the bridge
// returns. Calls and events cross as JSON and become JavaScript values; nothing of the
// bridge is a page global.

#include <jsc/jsc.h>
#include <webkit2/webkit-web-extension.h>

#include <map>
#include <string>
#include <vector>

namespace {

const char* const OBJECT_PATH = "/tv/tesmo/Browser";
const char* const INTERFACE = "tv.tesmo.Browser";
const int CALL_TIMEOUT_MS = 5000;

struct Script {
    std::string uri;
    std::string source;
};

GDBusConnection* channel = nullptr;
std::vector<Script> scripts;                   // the bridge first, then the objects
std::map<guint64, JSCValue*> deliverers;       // page id -> the bridge's deliver function

// native(name, args) -> the TV's answer as a value; a failed call throws.
JSCValue* nativeCall(const char* name, JSCValue* args, gpointer pageId)
{
    JSCContext* context = jsc_context_get_current();
    char* json = jsc_value_to_json(args, 0);
    GError* error = nullptr;
    GVariant* reply = channel ? g_dbus_connection_call_sync(channel, nullptr, OBJECT_PATH, INTERFACE, "Call",
                                                            g_variant_new("(tss)", guint64(GPOINTER_TO_SIZE(pageId)),
                                                                          name ? name : "", json ? json : "[]"),
                                                            G_VARIANT_TYPE("(s)"), G_DBUS_CALL_FLAGS_NONE,
                                                            CALL_TIMEOUT_MS, nullptr, &error)
                              : nullptr;
    g_free(json);
    if (!reply) {
        jsc_context_throw(context, error ? error->message : "the TV is not reachable");
        g_clear_error(&error);
        return jsc_value_new_undefined(context);
    }
    const char* answer = nullptr;
    g_variant_get(reply, "(&s)", &answer);
    JSCValue* value = jsc_value_new_from_json(context, answer);
    g_variant_unref(reply);
    return value ? value : jsc_value_new_null(context);
}

void forgetPage(gpointer pageId, GObject*)
{
    auto found = deliverers.find(guint64(GPOINTER_TO_SIZE(pageId)));
    if (found != deliverers.end()) {
        g_object_unref(found->second);
        deliverers.erase(found);
    }
}

// Runs one script, which is a function expression, with the argument; its result.
JSCValue* runScript(JSCContext* context, const Script& script, JSCValue* argument)
{
    JSCValue* function = jsc_context_evaluate_with_source_uri(context, script.source.c_str(), -1, script.uri.c_str(), 1);
    JSCValue* result = jsc_value_is_function(function) ? jsc_value_function_call(function, JSC_TYPE_VALUE, argument, G_TYPE_NONE)
                                                        : nullptr;
    if (JSCException* exception = jsc_context_get_exception(context)) {
        g_warning("%s: %s", script.uri.c_str(), jsc_exception_get_message(exception));
        jsc_context_clear_exception(context);
    }
    g_object_unref(function);
    return result;
}

void onWindowObjectCleared(WebKitScriptWorld* world, WebKitWebPage* page, WebKitFrame* frame, gpointer)
{
    if (!webkit_frame_is_main_frame(frame) || scripts.empty())
        return;
    const guint64 pageId = webkit_web_page_get_id(page);
    JSCContext* context = webkit_frame_get_js_context_for_script_world(frame, world);
    JSCValue* native = jsc_value_new_function(context, nullptr, G_CALLBACK(nativeCall), GSIZE_TO_POINTER(gsize(pageId)),
                                              nullptr, JSC_TYPE_VALUE, 2, G_TYPE_STRING, JSC_TYPE_VALUE);
    JSCValue* tv = runScript(context, scripts.front(), native);
    if (tv && jsc_value_is_object(tv)) {
        for (size_t i = 1; i < scripts.size(); ++i)
            if (JSCValue* done = runScript(context, scripts[i], tv))
                g_object_unref(done);
        if (deliverers.count(pageId) == 0)
            g_object_weak_ref(G_OBJECT(page), forgetPage, GSIZE_TO_POINTER(gsize(pageId)));
        else
            g_object_unref(deliverers[pageId]);
        deliverers[pageId] = jsc_value_object_get_property(tv, "deliver");
    }
    if (tv)
        g_object_unref(tv);
    g_object_unref(native);
    g_object_unref(context);
}

// The TV's event for a page: deliver(name, payload) in the page's world.
void onEvent(GDBusConnection*, const char*, const char*, const char*, const char*, GVariant* parameters, gpointer)
{
    guint64 pageId = 0;
    const char* name = nullptr;
    const char* payload = nullptr;
    g_variant_get(parameters, "(t&s&s)", &pageId, &name, &payload);
    auto found = deliverers.find(pageId);
    if (found == deliverers.end())
        return;
    JSCContext* context = jsc_value_get_context(found->second);
    JSCValue* value = jsc_value_new_from_json(context, payload);
    if (!value)
        value = jsc_value_new_null(context);
    JSCValue* done = jsc_value_function_call(found->second, G_TYPE_STRING, name, JSC_TYPE_VALUE, value, G_TYPE_NONE);
    if (JSCException* exception = jsc_context_get_exception(context)) {
        g_warning("event %s: %s", name, jsc_exception_get_message(exception));
        jsc_context_clear_exception(context);
    }
    if (done)
        g_object_unref(done);
    g_object_unref(value);
}

} // namespace

// The TV hands over (address of its D-Bus server, [(script URI, source)], bridge first).
extern "C" G_MODULE_EXPORT void webkit_web_extension_initialize_with_user_data(WebKitWebExtension*,
                                                                               const GVariant* userData)
{
    const char* address = nullptr;
    GVariantIter* iter = nullptr;
    g_variant_get(const_cast<GVariant*>(userData), "(&sa(ss))", &address, &iter);
    const char* uri = nullptr;
    const char* source = nullptr;
    while (g_variant_iter_next(iter, "(&s&s)", &uri, &source))
        scripts.push_back({uri, source});
    g_variant_iter_free(iter);
    GError* error = nullptr;
    channel = g_dbus_connection_new_for_address_sync(address, G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT, nullptr,
                                                     nullptr, &error);
    if (!channel) {
        g_warning("no channel to the TV at %s: %s", address, error->message);
        g_clear_error(&error);
    } else {
        g_dbus_connection_signal_subscribe(channel, nullptr, INTERFACE, "Event", OBJECT_PATH, nullptr,
                                           G_DBUS_SIGNAL_FLAGS_NONE, onEvent, nullptr, nullptr);
    }
    g_signal_connect(webkit_script_world_get_default(), "window-object-cleared", G_CALLBACK(onWindowObjectCleared),
                     nullptr);
}
