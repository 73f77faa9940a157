#ifndef TESMO_BROWSER_SCRIPTCHANNEL_H
#define TESMO_BROWSER_SCRIPTCHANNEL_H

#include <gio/gio.h>

#include <functional>
#include <set>
#include <string>

// The main process's end of the pages' calls: a D-Bus server on a private socket that each
// web process's extension connects to. A call ("Object.method" with its arguments as JSON)
// blocks the page until the handler, run on the main thread between two ticks, has
// answered it with JSON. Events go the other way as a signal. Only this user's processes
// get in.
class ScriptChannel {
public:
    using Handler = std::function<std::string(guint64 pageId, const std::string& name, const std::string& argumentsJson)>;

    explicit ScriptChannel(Handler handler);
    ~ScriptChannel();
    ScriptChannel(const ScriptChannel&) = delete;
    ScriptChannel& operator=(const ScriptChannel&) = delete;

    // Where the extensions connect; empty when the server could not start.
    std::string address() const;
    // An event for a page, its payload a JSON value.
    void emitEvent(guint64 pageId, const std::string& name, const std::string& payloadJson);

private:
    static gboolean newConnection(GDBusServer*, GDBusConnection* connection, gpointer self);
    static gboolean authorize(GDBusAuthObserver*, GIOStream*, GCredentials* credentials, gpointer);
    static void methodCall(GDBusConnection*, const char*, const char*, const char*, const char* method,
                           GVariant* parameters, GDBusMethodInvocation* invocation, gpointer self);

    Handler handler;
    GDBusNodeInfo* node = nullptr;
    GDBusAuthObserver* observer = nullptr;
    GDBusServer* server = nullptr;
    std::set<GDBusConnection*> connections;  // one per web process, each held until it closes
};

#endif
