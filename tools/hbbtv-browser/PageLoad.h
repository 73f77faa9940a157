#ifndef TESMO_BROWSER_PAGELOAD_H
#define TESMO_BROWSER_PAGELOAD_H

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "LoadOutcome.h"

// What became of the loads in one browser window, as the library must hear it: one outcome
// for each navigation, within a bound. The engine's reports come in many shapes: a load that
// fails before its page commits leaves the view on the page before it; a page of HbbTV's type
// becomes a download, then bytes shown; an address the engine will not load becomes
// about:blank; a server that accepts and answers nothing reports nothing at all. This turns
// them into one outcome each, and a load that receives nothing for the quiet limit into a
// connection failure.
class PageLoad {
public:
    using Clock = std::chrono::steady_clock;

    explicit PageLoad(Clock::duration quietLimit) : quietLimit(quietLimit) {}

    // The core opens url; the engine's next navigation is its. Before the first, nothing the
    // engine does is reported (the blank page that starts a web process).
    void requested(const std::string& url, Clock::time_point now);
    // The engine starts a navigation: the core's, or one the page makes.
    void started(Clock::time_point now);
    // Bytes or a step of the load arrived.
    void progressed(Clock::time_point now);
    // The engine names the page it is on (a redirect, a commit); about:blank names nothing.
    void isAt(const std::string& url);
    // The engine has the main document's response: its HTTP status, and whether it says its
    // body is empty.
    void responded(unsigned status, bool emptyBody);
    // The response became a download; what the download brings decides.
    void handedOver(Clock::time_point now);
    // The download ended in something that is not a page (an XML AIT): nothing to report.
    void settled() { awaiting = false; }

    // The engine's failure: one of the connection (the server was not reached or broke off),
    // or another (the engine would not show the response). While a download holds the
    // response, the engine's own failure of the navigation is how it let go.
    std::optional<LoadOutcome> failed(bool connection, const std::string& reason);
    std::optional<LoadOutcome> downloadFailed(const std::string& reason);
    // The engine finished: the URL it shows, the main resource's HTTP status (0 where there is
    // none).
    std::optional<LoadOutcome> finished(const std::string& shownUrl, unsigned status);
    // A downloaded page, about to be shown with its HTTP status; an empty one fails here.
    std::optional<LoadOutcome> downloaded(uint64_t bytes, unsigned status);
    // The bound: a navigation that received nothing for the quiet limit. completeStatus is the
    // main document's HTTP status once it has arrived whole (a subresource still hangs: the
    // page is there), 0 while it has not.
    std::optional<LoadOutcome> check(Clock::time_point now, unsigned completeStatus);

    // A navigation whose outcome is still to come.
    bool isAwaiting() const { return awaiting; }
    // The core has asked for a page: the engine's loads are reported from now on.
    bool isActive() const { return active; }
    // The page of the navigation under way, or of the last one.
    const std::string& url() const { return current; }
    std::chrono::milliseconds limit() const
    {
        return std::chrono::duration_cast<std::chrono::milliseconds>(quietLimit);
    }

private:
    std::optional<LoadOutcome> report(LoadOutcome::End end, unsigned status, const std::string& reason);

    Clock::duration quietLimit;
    std::string wanted;  // the URL the core asked for last
    std::string current;
    bool active = false;  // the core has asked for a page
    bool awaiting = false;
    bool awaitingStart = false;  // what the engine ends before then is the navigation before
    bool downloading = false;
    unsigned shownStatus = 0;  // a downloaded page's HTTP status, for the bytes shown
    bool emptyResponse = false;
    Clock::time_point lastActivity;
};

#endif
