// What the browser core tells the library of a load, for the orders in which the engine reports.

#include <gtest/gtest.h>

#include <sstream>
#include <vector>

#include "PageLoad.h"

namespace {

using namespace std::chrono_literals;
using Clock = PageLoad::Clock;

std::string describe(const std::optional<LoadOutcome>& outcome)
{
    if (!outcome)
        return "";
    switch (outcome->end) {
    case LoadOutcome::LOADED:
        return "loaded " + std::to_string(outcome->status);
    case LoadOutcome::CONNECTION_FAILED:
        return "unreachable (" + outcome->reason + ")";
    default:
        return "failed (" + outcome->reason + ")";
    }
}

// Plays steps, one word each, a second apart, and lists the outcomes: "request URL",
// "start", "progress", "respond STATUS", "respond-empty", "hand-over", "settle",
// "fail-connection", "fail-other", "download-fail", "finish URL STATUS", "download BYTES STATUS",
// "check", "check-complete", "wait" (ten more seconds).
std::vector<std::string> play(const std::vector<std::string>& steps)
{
    PageLoad load(5s);
    Clock::time_point now{};
    std::vector<std::string> outcomes;
    for (const std::string& step : steps) {
        now += 1s;
        std::istringstream words(step);
        std::string verb, text;
        unsigned number = 0;
        words >> verb;
        std::optional<LoadOutcome> outcome;
        if (verb == "request" && words >> text)
            load.requested(text, now);
        else if (verb == "start")
            load.started(now);
        else if (verb == "progress")
            load.progressed(now);
        else if (verb == "respond" && words >> number)
            load.responded(number, false);
        else if (verb == "respond-empty")
            load.responded(200, true);
        else if (verb == "hand-over")
            load.handedOver(now);
        else if (verb == "settle")
            load.settled();
        else if (verb == "fail-connection")
            outcome = load.failed(true, "refused");
        else if (verb == "fail-other")
            outcome = load.failed(false, "interrupted");
        else if (verb == "download-fail")
            outcome = load.downloadFailed("reset");
        else if (verb == "finish" && words >> text >> number)
            outcome = load.finished(text, number);
        else if (verb == "download" && words >> number)
            outcome = load.downloaded(number, 200);
        else if (verb == "check")
            outcome = load.check(now, 0);
        else if (verb == "check-complete")
            outcome = load.check(now, 200);
        else if (verb == "wait")
            now += 10s;
        else
            ADD_FAILURE() << "unknown step " << step;
        if (outcome)
            outcomes.push_back(describe(outcome));
    }
    return outcomes;
}

TEST(PageLoadTest, EachNavigationEndsOnceWhateverTheEngineReports)
{
    const std::string page = "http://a.tv/index.html";
    const struct {
        const char* what;
        std::vector<std::string> steps;
        std::vector<std::string> outcomes;
    } cases[] = {
        {"warm-up before the core asks: nothing", {"start", "finish about:blank 0", "fail-connection"}, {}},
        {"the warm-up ends after the request: its end is not the core's",
         {"request " + page, "finish about:blank 0", "start", "finish " + page + " 200"},
         {"loaded 200"}},
        {"a plain page", {"request " + page, "start", "respond 200", "finish " + page + " 200"}, {"loaded 200"}},
        {"a 404 keeps its status",
         {"request " + page, "start", "respond 404", "finish " + page + " 404"},
         {"loaded 404"}},
        {"a page not over HTTP", {"request dvb://1.1.1.5/", "start", "finish dvb://1.1.1.5/ 0"}, {"loaded 200"}},
        {"fails before commit, then the view ends on the page before",
         {"request " + page, "start", "fail-connection", "finish about:blank 0"},
         {"unreachable (refused)"}},
        {"an address the engine will not load becomes about:blank",
         {"request " + page, "start", "finish about:blank 0"},
         {"unreachable (the engine does not load this address)"}},
        {"an empty 200",
         {"request " + page, "start", "respond-empty", "finish " + page + " 200"},
         {"failed (an empty page)"}},
        {"a page of HbbTV's type: downloaded, then shown with its status",
         {"request " + page, "start", "hand-over", "fail-other", "finish about:blank 0", "download 500", "start",
          "finish " + page + " 0"},
         {"loaded 200"}},
        {"a download that breaks off",
         {"request " + page, "start", "hand-over", "fail-other", "download-fail"},
         {"unreachable (reset)"}},
        {"an empty download", {"request " + page, "start", "hand-over", "download 0"}, {"failed (an empty page)"}},
        {"an XML AIT: nothing to report, and no bound",
         {"request " + page, "start", "hand-over", "settle", "wait", "check"},
         {}},
        {"a silent server",
         {"request " + page, "start", "check", "wait", "check", "check"},
         {"unreachable (nothing received for 5 s)"}},
        {"an engine that never starts the load is bounded too",
         {"request " + page, "wait", "check"},
         {"unreachable (nothing received for 5 s)"}},
        {"progress holds the bound off",
         {"request " + page, "start", "progress", "progress", "progress", "progress", "progress", "check",
          "finish " + page + " 200"},
         {"loaded 200"}},
        {"a document come whole whose subresource hangs is there",
         {"request " + page, "start", "wait", "check-complete"},
         {"loaded 200"}},
        {"a download that hangs is not a document",
         {"request " + page, "start", "hand-over", "wait", "check-complete"},
         {"unreachable (nothing received for 5 s)"}},
        {"the page's own navigation reports as well",
         {"request " + page, "start", "finish " + page + " 200", "start", "fail-connection", "check", "wait", "check"},
         {"loaded 200", "unreachable (refused)"}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(play(c.steps), c.outcomes) << c.what;
}

}  // namespace
