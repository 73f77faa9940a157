// The web-process half of hbbtv-browser, thin glue. WebKit loads it into every web process;
// for each page's main frame it runs the bridge script with a native function that carries
// calls to the TV's main process over a D-Bus peer connection (blocking until the answer
// comes, as a TV's script bindings do), then each object script with what the bridge
// returns. The scripts are built into this module (a GResource); the TV names them in the
// order they run. Calls and events cross as JSON and become JavaScript values; nothing of
// the bridge is a page global. Every request the page's engine makes, from any frame or worker
// and at each redirect, is put to the TV here before it leaves. The answer is asked each time:
// what a page may request changes with the application in its window, which only the TV knows.

#include <jsc/jsc.h>
#include <json-glib/json-glib.h>
#include <webkit2/webkit-web-extension.h>

#include <map>
#include <string>
#include <vector>

namespace {

const char* const OBJECT_PATH = "/tv/tesmo/Browser";
const char* const INTERFACE = "tv.tesmo.Browser";
const int CALL_TIMEOUT_MS = 5000;
const char* const SCRIPTS = "/tv/tesmo/js/";
// What the TV answers a request it lets go.
const char* const YES = "{\"value\":true}";

struct Script {
    std::string uri;
    std::string source;
};

GDBusConnection* channel = nullptr;
std::string channelKey;  // proves to the TV, through a page's view, which connection is ours
std::vector<Script> scripts;  // the bridge first, then the objects
std::map<guint64, JSCValue*> deliverers;  // page id -> the bridge's deliver function

// Call(page, name, arguments as JSON) in the TV: its answer as JSON text, or null on failure.
GVariant* callTv(guint64 pageId, const char* name, const char* json, GError** error)
{
    if (!channel)
        return nullptr;
    return g_dbus_connection_call_sync(channel, nullptr, OBJECT_PATH, INTERFACE, "Call",
                                       g_variant_new("(tss)", pageId, name, json), G_VARIANT_TYPE("(s)"),
                                       G_DBUS_CALL_FLAGS_NONE, CALL_TIMEOUT_MS, nullptr, error);
}

// native(name, args) -> the TV's answer as a value; a failed call throws.
JSCValue* nativeCall(const char* name, JSCValue* args, gpointer pageId)
{
    JSCContext* context = jsc_context_get_current();
    char* json = jsc_value_to_json(args, 0);
    GError* error = nullptr;
    GVariant* reply = callTv(guint64(GPOINTER_TO_SIZE(pageId)), name ? name : "", json ? json : "[]", &error);
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
    const guint64 id = guint64(GPOINTER_TO_SIZE(pageId));
    auto found = deliverers.find(id);
    if (found != deliverers.end()) {
        g_object_unref(found->second);
        deliverers.erase(found);
    }
}

// The page tells its own view which connection is ours; WebKit carries that message only
// from the process that holds the page, so the TV can trust it.
void announce(WebKitWebPage* page)
{
    if (channelKey.empty())
        return;
    WebKitUserMessage* message = webkit_user_message_new(
        "tesmo.channel", g_variant_new("(ts)", webkit_web_page_get_id(page), channelKey.c_str()));
    webkit_web_page_send_message_to_view(page, message, nullptr, nullptr, nullptr);
}

// Runs one script, which is a function expression, with the argument; its result.
JSCValue* runScript(JSCContext* context, const Script& script, JSCValue* argument)
{
    JSCValue* function =
        jsc_context_evaluate_with_source_uri(context, script.source.c_str(), -1, script.uri.c_str(), 1);
    JSCValue* result = jsc_value_is_function(function)
                           ? jsc_value_function_call(function, JSC_TYPE_VALUE, argument, G_TYPE_NONE)
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
    announce(page);
    JSCContext* context = webkit_frame_get_js_context_for_script_world(frame, world);
    JSCValue* native = jsc_value_new_function(context, nullptr, G_CALLBACK(nativeCall), GSIZE_TO_POINTER(gsize(pageId)),
                                              nullptr, JSC_TYPE_VALUE, 2, G_TYPE_STRING, JSC_TYPE_VALUE);
    JSCValue* tv = runScript(context, scripts.front(), native);
    if (tv && jsc_value_is_object(tv)) {
        for (size_t i = 1; i < scripts.size(); ++i)
            if (JSCValue* done = runScript(context, scripts[i], tv))
                g_object_unref(done);
        if (deliverers.count(pageId) != 0)
            g_object_unref(deliverers[pageId]);
        deliverers[pageId] = jsc_value_object_get_property(tv, "deliver");
    }
    if (tv)
        g_object_unref(tv);
    g_object_unref(native);
    g_object_unref(context);
}

// Loads that never leave the engine.
bool staysInTheEngine(const char* uri)
{
    for (const char* scheme : {"about:", "data:", "blob:"})
        if (g_str_has_prefix(uri, scheme))
            return true;
    return false;
}

// Only the TV's explicit yes lets a request go: no answer, or no TV, refuses it.
bool allowed(guint64 pageId, const std::string& url)
{
    JsonBuilder* builder = json_builder_new();
    json_builder_begin_array(builder);
    json_builder_add_string_value(builder, url.c_str());
    json_builder_end_array(builder);
    JsonNode* arguments = json_builder_get_root(builder);
    char* json = json_to_string(arguments, FALSE);
    GVariant* reply = callTv(pageId, "Requests.vet", json, nullptr);
    g_free(json);
    json_node_unref(arguments);
    g_object_unref(builder);
    const char* answer = nullptr;
    if (reply)
        g_variant_get(reply, "(&s)", &answer);
    const bool allow = g_strcmp0(answer, YES) == 0;
    if (reply)
        g_variant_unref(reply);
    return allow;
}

// WebKit's last step before a request (or a redirect's next hop) goes out, whatever made
// it: a script in any frame or worker, a subresource, a form, a beacon, a module import.
// The URL is the one the engine is about to request. Returning TRUE cancels it.
gboolean onSendRequest(WebKitWebPage* page, WebKitURIRequest* request, WebKitURIResponse*, gpointer)
{
    const char* uri = webkit_uri_request_get_uri(request);
    if (!uri)
        return TRUE;
    if (staysInTheEngine(uri))
        return FALSE;
    return !allowed(webkit_web_page_get_id(page), uri);
}

void onPageCreated(WebKitWebExtension*, WebKitWebPage* page, gpointer)
{
    g_object_weak_ref(G_OBJECT(page), forgetPage, GSIZE_TO_POINTER(gsize(webkit_web_page_get_id(page))));
    g_signal_connect(page, "send-request", G_CALLBACK(onSendRequest), nullptr);
    announce(page);
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
    if (!value || jsc_context_get_exception(context)) {
        // The TV's payloads are its own JSON; one that does not parse is dropped, not
        // handed to the bridge as null.
        g_warning("event %s: a payload that is not JSON", name);
        jsc_context_clear_exception(context);
        g_clear_object(&value);
        return;
    }
    JSCValue* done = jsc_value_function_call(found->second, G_TYPE_STRING, name, JSC_TYPE_VALUE, value, G_TYPE_NONE);
    if (JSCException* exception = jsc_context_get_exception(context)) {
        g_warning("event %s: %s", name, jsc_exception_get_message(exception));
        jsc_context_clear_exception(context);
    }
    if (done)
        g_object_unref(done);
    g_object_unref(value);
}

void connectToTv(const char* address)
{
    GError* error = nullptr;
    channel = g_dbus_connection_new_for_address_sync(address, G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT, nullptr,
                                                     nullptr, &error);
    GVariant* hello = channel ? g_dbus_connection_call_sync(channel, nullptr, OBJECT_PATH, INTERFACE, "Hello", nullptr,
                                                            G_VARIANT_TYPE("(s)"), G_DBUS_CALL_FLAGS_NONE,
                                                            CALL_TIMEOUT_MS, nullptr, &error)
                              : nullptr;
    if (!hello) {
        g_warning("no channel to the TV at %s: %s", address, error ? error->message : "?");
        g_clear_error(&error);
        g_clear_object(&channel);  // calls then fail at once, and every request is refused
        return;
    }
    const char* key = nullptr;
    g_variant_get(hello, "(&s)", &key);
    channelKey = key;
    g_variant_unref(hello);
    g_dbus_connection_signal_subscribe(channel, nullptr, INTERFACE, "Event", OBJECT_PATH, nullptr,
                                       G_DBUS_SIGNAL_FLAGS_NONE, onEvent, nullptr, nullptr);
}

// A script built into this module, with the URI its errors name; empty when there is none.
Script builtIn(const char* name)
{
    const std::string path = std::string(SCRIPTS) + name;
    GBytes* bytes = g_resources_lookup_data(path.c_str(), G_RESOURCE_LOOKUP_FLAGS_NONE, nullptr);
    if (!bytes) {
        g_warning("no page script %s", name);
        return {};
    }
    gsize size = 0;
    const auto* data = static_cast<const char*>(g_bytes_get_data(bytes, &size));
    Script script{"resource://" + path, std::string(data, size)};
    g_bytes_unref(bytes);
    return script;
}

}  // namespace

// The TV hands over (address of its D-Bus server, [script name], the bridge first).
extern "C" G_MODULE_EXPORT void webkit_web_extension_initialize_with_user_data(WebKitWebExtension* extension,
                                                                               const GVariant* userData)
{
    const char* address = nullptr;
    GVariantIter* iter = nullptr;
    g_variant_get(const_cast<GVariant*>(userData), "(&sas)", &address, &iter);
    // All of them or none: a script may use what those before it gave the bridge.
    const char* name = nullptr;
    while (g_variant_iter_next(iter, "&s", &name)) {
        Script script = builtIn(name);
        if (script.uri.empty()) {
            scripts.clear();
            break;
        }
        scripts.push_back(std::move(script));
    }
    g_variant_iter_free(iter);
    connectToTv(address);
    g_signal_connect(extension, "page-created", G_CALLBACK(onPageCreated), nullptr);
    g_signal_connect(webkit_script_world_get_default(), "window-object-cleared", G_CALLBACK(onWindowObjectCleared),
                     nullptr);
}
