#ifndef TESMO_BROWSER_SCRIPTCHANNEL_H
#define TESMO_BROWSER_SCRIPTCHANNEL_H

#include <gio/gio.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

// The main process's end of the pages' calls: a D-Bus server on a private socket that each
// web process's extension connects to. A call ("Object.method" with its arguments as JSON)
// blocks the page until the handler, run on the main thread between two ticks, has
// answered it with JSON. Events go the other way as a signal, to the page's connection only.
//
// Who is calling is fixed by the host, not by the caller. A connection gets a random key when
// it says Hello; a page proves that it lives on a connection by sending that key to its own
// view through WebKit (which only the page's web process can do), and the core then binds
// the page to the connection. A call for a page that is not bound to the caller's connection
// waits a moment for the binding, then gets null (a connection may have only a few waiting);
// only this user's processes may connect.
class ScriptChannel {
public:
    using Handler =
        std::function<std::string(guint64 pageId, const std::string& name, const std::string& argumentsJson)>;

    // unanswered: the reply to a call no page's handler takes (an unknown connection, too many
    // calls waiting, a page that never named its connection).
    ScriptChannel(Handler handler, std::string unanswered);
    ~ScriptChannel();
    ScriptChannel(const ScriptChannel&) = delete;
    ScriptChannel& operator=(const ScriptChannel&) = delete;

    // Where the extensions connect; empty when the server could not start.
    std::string address() const;
    // The directory that holds the server's socket (the web processes' sandbox must reach it).
    const std::string& socketDirectory() const { return directory; }
    // The page said, through its view, that it lives on the connection with this key.
    void bind(guint64 pageId, const std::string& connectionKey);
    // The page's view has gone.
    void forget(guint64 pageId);
    // An event for a page, its payload a JSON value.
    void emitEvent(guint64 pageId, const std::string& name, const std::string& payloadJson);

private:
    struct Waiting {
        GDBusConnection* connection;
        guint64 pageId;
        std::string name;
        std::string arguments;
        GDBusMethodInvocation* invocation;
        gint64 deadline;
    };

    static gboolean newConnection(GDBusServer*, GDBusConnection* connection, gpointer self);
    static gboolean authorize(GDBusAuthObserver*, GIOStream*, GCredentials* credentials, gpointer);
    static void methodCall(GDBusConnection* connection, const char*, const char*, const char*, const char* method,
                           GVariant* parameters, GDBusMethodInvocation* invocation, gpointer self);
    static void closed(GDBusConnection* connection, gboolean, GError*, gpointer self);
    static gboolean expireWaiting(gpointer self);
    void answer(guint64 pageId, const std::string& name, const std::string& arguments,
                GDBusMethodInvocation* invocation);
    // Gives up a call that waited for a binding: it gets null. The next call.
    std::vector<Waiting>::iterator release(std::vector<Waiting>::iterator call);
    size_t waitingOn(GDBusConnection* connection) const;
    GDBusConnection* connectionOf(guint64 pageId) const;

    Handler handler;
    std::string unanswered;
    std::string directory;
    GDBusNodeInfo* node = nullptr;
    GDBusAuthObserver* observer = nullptr;
    GDBusServer* server = nullptr;
    struct Connection {
        std::string key;
        guint registration;
    };
    std::map<GDBusConnection*, Connection> connections;  // one per web process, each held until it closes
    std::map<guint64, GDBusConnection*> pages;  // page -> the connection it proved it lives on
    std::vector<Waiting> waiting;  // calls that came before their page's binding
    guint expiry = 0;
};

#endif
