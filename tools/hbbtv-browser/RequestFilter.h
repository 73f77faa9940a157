#ifndef TESMO_BROWSER_REQUESTFILTER_H
#define TESMO_BROWSER_REQUESTFILTER_H

#include <webkit2/webkit2.h>

#include <string>
#include <vector>

// The platform's refusals for WebSocket handshakes, the one load that never reaches the
// extension's request check: WebKit's own content rules, made from the same patterns, so the
// engine blocks them before they leave. Where a pattern has no exact rule, every WebSocket is
// refused; where WebKit takes no rule at all, WebSockets are switched off.
class RequestFilter {
public:
    // Compiles the rules before the first page (a few milliseconds); no patterns, no rules.
    explicit RequestFilter(const std::vector<std::string>& refusedPatterns);
    ~RequestFilter();
    RequestFilter(const RequestFilter&) = delete;
    RequestFilter& operator=(const RequestFilter&) = delete;

    // What every page's view is made with.
    WebKitUserContentManager* contentManager() const { return manager; }
    // Whether the views must have no WebSockets at all.
    bool refusesEveryWebSocket() const { return webSocketsOff; }

    // A glob as fnmatch reads it (*, ?, [set], [!set], \ escapes) as a content rule's URL
    // expression of the whole URL; "" when it has none that matches exactly the same URLs.
    static std::string globToRule(const std::string& glob);

private:
    bool compile(const std::string& json);

    WebKitUserContentManager* manager;
    bool webSocketsOff = false;
    std::string directory;  // the compiled rules, for this run only
};

#endif
