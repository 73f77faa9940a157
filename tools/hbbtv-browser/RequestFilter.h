#ifndef TESMO_BROWSER_REQUESTFILTER_H
#define TESMO_BROWSER_REQUESTFILTER_H

#include <webkit2/webkit2.h>

#include <string>
#include <vector>

// The platform's refusals for the loads that never reach the extension's request check
// (WebSocket handshakes, pings and violation reports): WebKit's own content rules, made
// from the same patterns, so the engine blocks them before they leave.
class RequestFilter {
public:
    // Compiles the rules before the first page (a few milliseconds); no patterns, no rules.
    explicit RequestFilter(const std::vector<std::string>& refusedPatterns);
    ~RequestFilter();
    RequestFilter(const RequestFilter&) = delete;
    RequestFilter& operator=(const RequestFilter&) = delete;

    // What every page's view is made with.
    WebKitUserContentManager* contentManager() const { return manager; }

    // A glob (*, ?, [set]) as a content rule's URL expression of the whole URL.
    static std::string globToRule(const std::string& glob);

private:
    WebKitUserContentManager* manager;
    std::string directory;  // the compiled rules, for this run only
};

#endif
