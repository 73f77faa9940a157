#include "ScriptChannel.h"

#include <unistd.h>

namespace {

const char* const INTROSPECTION = R"(<node>
  <interface name="tv.tesmo.Browser">
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

} // namespace

ScriptChannel::ScriptChannel(Handler callHandler) : handler(std::move(callHandler))
{
    node = g_dbus_node_info_new_for_xml(INTROSPECTION, nullptr);
    observer = g_dbus_auth_observer_new();
    g_signal_connect(observer, "authorize-authenticated-peer", G_CALLBACK(authorize), nullptr);
    char* guid = g_dbus_generate_guid();
    GError* error = nullptr;
    server = g_dbus_server_new_sync("unix:tmpdir=/tmp", G_DBUS_SERVER_FLAGS_NONE, guid, observer, nullptr, &error);
    g_free(guid);
    if (!server) {
        g_warning("no channel for the pages' scripts: %s", error->message);
        g_clear_error(&error);
        return;
    }
    g_signal_connect(server, "new-connection", G_CALLBACK(newConnection), this);
    g_dbus_server_start(server);
}

ScriptChannel::~ScriptChannel()
{
    for (GDBusConnection* connection : connections) {
        g_signal_handlers_disconnect_by_data(connection, this);
        g_object_unref(connection);
    }
    if (server) {
        g_dbus_server_stop(server);
        g_object_unref(server);
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
    // The connection lives as long as its registration: until the web process goes.
    self->connections.insert(G_DBUS_CONNECTION(g_object_ref(connection)));
    g_signal_connect(connection, "closed", G_CALLBACK(+[](GDBusConnection* closed, gboolean, GError*, gpointer channel) {
                         static_cast<ScriptChannel*>(channel)->connections.erase(closed);
                         g_object_unref(closed);
                     }),
                     self);
    if (!g_dbus_connection_register_object(connection, OBJECT_PATH, self->node->interfaces[0], &vtable, self, nullptr,
                                           &error)) {
        g_warning("a page's channel could not be set up: %s", error->message);
        g_clear_error(&error);
    }
    return TRUE;
}

void ScriptChannel::methodCall(GDBusConnection*, const char*, const char*, const char*, const char*,
                               GVariant* parameters, GDBusMethodInvocation* invocation, gpointer data)
{
    auto* self = static_cast<ScriptChannel*>(data);
    guint64 page = 0;
    const char* name = nullptr;
    const char* arguments = nullptr;
    g_variant_get(parameters, "(t&s&s)", &page, &name, &arguments);
    const std::string answer = self->handler(page, name, arguments);
    g_dbus_method_invocation_return_value(invocation, g_variant_new("(s)", answer.c_str()));
}

void ScriptChannel::emitEvent(guint64 pageId, const std::string& name, const std::string& payloadJson)
{
    for (GDBusConnection* connection : connections)
        g_dbus_connection_emit_signal(connection, nullptr, OBJECT_PATH, "tv.tesmo.Browser", "Event",
                                      g_variant_new("(tss)", pageId, name.c_str(), payloadJson.c_str()), nullptr);
}
