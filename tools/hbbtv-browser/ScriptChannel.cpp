#include "ScriptChannel.h"

#include <glib/gstdio.h>
#include <sys/random.h>
#include <unistd.h>

#include "DvbText.h"

namespace {

const char* const INTROSPECTION = R"(<node>
  <interface name="tv.tesmo.Browser">
    <method name="Hello">
      <arg type="s" name="key" direction="out"/>
    </method>
    <method name="Call">
      <arg type="t" name="page" direction="in"/>
      <arg type="s" name="name" direction="in"/>
      <arg type="s" name="arguments" direction="in"/>
      <arg type="s" name="answer" direction="out"/>
    </method>
    <signal name="Event">
      <arg type="t" name="page"/>
      <arg type="s" name="name"/>
      <arg type="s" name="payload"/>
    </signal>
  </interface>
</node>)";

const char* const OBJECT_PATH = "/tv/tesmo/Browser";
const char* const SOCKET_NAME = "channel";
// How long a call waits for its page's binding, which travels through WebKit meanwhile, and
// how many may wait on one connection (a page's process makes one call at a time).
const gint64 BINDING_WAIT_US = 2 * G_USEC_PER_SEC;
const size_t MAX_WAITING = 8;

std::string randomKey()
{
    unsigned char bytes[16] = {};
    size_t filled = 0;
    while (filled < sizeof bytes) {
        const ssize_t got = getrandom(bytes + filled, sizeof bytes - filled, 0);
        if (got > 0)
            filled += size_t(got);
    }
    static const char digits[] = "0123456789abcdef";
    std::string key;
    for (unsigned char byte : bytes) {
        key += digits[byte >> 4];
        key += digits[byte & 0xF];
    }
    return key;
}

}  // namespace

ScriptChannel::ScriptChannel(Handler callHandler, std::string unansweredReply)
    : handler(std::move(callHandler)), unanswered(std::move(unansweredReply))
{
    node = g_dbus_node_info_new_for_xml(INTROSPECTION, nullptr);
    observer = g_dbus_auth_observer_new();
    g_signal_connect(observer, "authorize-authenticated-peer", G_CALLBACK(authorize), nullptr);
    char* made = g_dir_make_tmp("hbbtv-browser-XXXXXX", nullptr);  // mode 0700: this user's only
    directory = made ? made : "";
    g_free(made);
    char* guid = g_dbus_generate_guid();
    const std::string listen = "unix:path=" + directory + "/" + SOCKET_NAME;
    GError* error = nullptr;
    if (!directory.empty())
        server = g_dbus_server_new_sync(listen.c_str(), G_DBUS_SERVER_FLAGS_NONE, guid, observer, nullptr, &error);
    g_free(guid);
    if (!server) {
        g_warning("no channel for the pages' scripts: %s", error ? error->message : "no private directory");
        g_clear_error(&error);
        return;
    }
    g_signal_connect(server, "new-connection", G_CALLBACK(newConnection), this);
    g_dbus_server_start(server);
}

ScriptChannel::~ScriptChannel()
{
    while (!waiting.empty())
        release(waiting.begin());
    if (expiry)
        g_source_remove(expiry);
    for (auto& entry : connections) {
        g_signal_handlers_disconnect_by_data(entry.first, this);
        g_dbus_connection_unregister_object(entry.first, entry.second.registration);
        g_dbus_connection_close_sync(entry.first, nullptr, nullptr);
        g_object_unref(entry.first);
    }
    if (server) {
        g_dbus_server_stop(server);
        g_object_unref(server);
    }
    if (!directory.empty()) {
        g_unlink((directory + "/" + SOCKET_NAME).c_str());
        g_rmdir(directory.c_str());
    }
    g_object_unref(observer);
    g_dbus_node_info_unref(node);
}

std::string ScriptChannel::address() const
{
    return server ? g_dbus_server_get_client_address(server) : "";
}

gboolean ScriptChannel::authorize(GDBusAuthObserver*, GIOStream*, GCredentials* credentials, gpointer)
{
    return credentials && g_credentials_get_unix_user(credentials, nullptr) == getuid();
}

gboolean ScriptChannel::newConnection(GDBusServer*, GDBusConnection* connection, gpointer data)
{
    auto* self = static_cast<ScriptChannel*>(data);
    static const GDBusInterfaceVTable vtable = {methodCall, nullptr, nullptr, {}};
    GError* error = nullptr;
    const guint registration = g_dbus_connection_register_object(connection, OBJECT_PATH, self->node->interfaces[0],
                                                                 &vtable, self, nullptr, &error);
    if (!registration) {
        g_warning("a page's channel could not be set up: %s", error->message);
        g_clear_error(&error);
        return FALSE;
    }
    // The connection lives as long as its registration: until the web process goes.
    self->connections[G_DBUS_CONNECTION(g_object_ref(connection))] = {randomKey(), registration};
    g_signal_connect(connection, "closed", G_CALLBACK(closed), self);
    return TRUE;
}

void ScriptChannel::closed(GDBusConnection* connection, gboolean, GError*, gpointer data)
{
    auto* self = static_cast<ScriptChannel*>(data);
    for (auto page = self->pages.begin(); page != self->pages.end();)
        page = page->second == connection ? self->pages.erase(page) : std::next(page);
    for (auto call = self->waiting.begin(); call != self->waiting.end();) {
        if (call->connection == connection)
            call = self->release(call);
        else
            ++call;
    }
    g_signal_handlers_disconnect_by_data(connection, self);
    auto found = self->connections.find(connection);
    if (found != self->connections.end()) {
        g_dbus_connection_unregister_object(connection, found->second.registration);
        self->connections.erase(found);
    }
    g_object_unref(connection);
}

void ScriptChannel::methodCall(GDBusConnection* connection, const char*, const char*, const char*, const char* method,
                               GVariant* parameters, GDBusMethodInvocation* invocation, gpointer data)
{
    auto* self = static_cast<ScriptChannel*>(data);
    auto known = self->connections.find(connection);
    if (known == self->connections.end())
        return g_dbus_method_invocation_return_value(invocation, g_variant_new("(s)", self->unanswered.c_str()));
    if (g_strcmp0(method, "Hello") == 0)
        return g_dbus_method_invocation_return_value(invocation, g_variant_new("(s)", known->second.key.c_str()));
    guint64 page = 0;
    const char* name = nullptr;
    const char* arguments = nullptr;
    g_variant_get(parameters, "(t&s&s)", &page, &name, &arguments);
    if (self->connectionOf(page) == connection)
        return self->answer(page, name, arguments, invocation);
    if (self->waitingOn(connection) >= MAX_WAITING)
        return g_dbus_method_invocation_return_value(invocation, g_variant_new("(s)", self->unanswered.c_str()));
    self->waiting.push_back({connection, page, name, arguments, invocation, g_get_monotonic_time() + BINDING_WAIT_US});
    if (!self->expiry)
        self->expiry = g_timeout_add(100, expireWaiting, self);
}

void ScriptChannel::answer(guint64 pageId, const std::string& name, const std::string& arguments,
                           GDBusMethodInvocation* invocation)
{
    const std::string reply = validUtf8(handler(pageId, name, arguments));  // D-Bus carries only UTF-8
    g_dbus_method_invocation_return_value(invocation, g_variant_new("(s)", reply.c_str()));
}

gboolean ScriptChannel::expireWaiting(gpointer data)
{
    auto* self = static_cast<ScriptChannel*>(data);
    const gint64 now = g_get_monotonic_time();
    for (auto call = self->waiting.begin(); call != self->waiting.end();) {
        if (call->deadline > now) {
            ++call;
            continue;
        }
        call = self->release(call);
    }
    if (!self->waiting.empty())
        return G_SOURCE_CONTINUE;
    self->expiry = 0;
    return G_SOURCE_REMOVE;
}

std::vector<ScriptChannel::Waiting>::iterator ScriptChannel::release(std::vector<Waiting>::iterator call)
{
    g_dbus_method_invocation_return_value(call->invocation, g_variant_new("(s)", unanswered.c_str()));
    return waiting.erase(call);
}

size_t ScriptChannel::waitingOn(GDBusConnection* connection) const
{
    size_t count = 0;
    for (const Waiting& call : waiting)
        count += call.connection == connection;
    return count;
}

GDBusConnection* ScriptChannel::connectionOf(guint64 pageId) const
{
    auto found = pages.find(pageId);
    return found == pages.end() ? nullptr : found->second;
}

void ScriptChannel::bind(guint64 pageId, const std::string& connectionKey)
{
    GDBusConnection* connection = nullptr;
    for (const auto& entry : connections)
        if (!connectionKey.empty() && entry.second.key == connectionKey)
            connection = entry.first;
    if (!connection)
        return;
    pages[pageId] = connection;
    std::vector<Waiting> due;
    for (auto call = waiting.begin(); call != waiting.end();) {
        if (call->pageId == pageId && call->connection == connection) {
            due.push_back(*call);
            call = waiting.erase(call);
        } else {
            ++call;
        }
    }
    for (const Waiting& call : due)
        answer(call.pageId, call.name, call.arguments, call.invocation);
}

void ScriptChannel::forget(guint64 pageId)
{
    pages.erase(pageId);
}

// D-Bus carries only UTF-8: an event with anything else in it would never leave.
void ScriptChannel::emitEvent(guint64 pageId, const std::string& name, const std::string& payloadJson)
{
    if (GDBusConnection* connection = connectionOf(pageId))
        g_dbus_connection_emit_signal(
            connection, nullptr, OBJECT_PATH, "tv.tesmo.Browser", "Event",
            g_variant_new("(tss)", pageId, validUtf8(name).c_str(), validUtf8(payloadJson).c_str()), nullptr);
}
