// The hosts' command lines: what each option sets, what each program accepts, and which
// values are refused.

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "Options.h"

namespace {

const char* const SIM = "hbbtv-sim";
const char* const BROWSER = "hbbtv-browser";

struct Parsed {
    bool ok = false;
    bool wantHelp = false;
    std::string error;
    Options options;
};

Parsed parse(const char* product, std::vector<std::string> args)
{
    Parsed parsed;
    parsed.options.product = product;
    args.insert(args.begin(), product);
    std::vector<char*> argv;
    for (std::string& arg : args)
        argv.push_back(arg.data());
    argv.push_back(nullptr);
    parsed.ok = parseOptions(int(args.size()), argv.data(), parsed.options, parsed.error, parsed.wantHelp);
    return parsed;
}

// The fields that differ from a fresh Options of the same program, as "name=value" words.
std::string changes(const Options& o)
{
    Options d;
    d.product = o.product;
    std::ostringstream out;
    auto note = [&out](bool differs, const std::string& word) {
        if (differs)
            out << (out.tellp() > 0 ? " " : "") << word;
    };
    note(o.capture != d.capture, "capture=" + o.capture);
    note(o.service != d.service, "service=" + (o.service ? std::to_string(*o.service) : ""));
    note(o.profiles != d.profiles, "profiles=" + std::to_string(o.profiles));
    note(o.hbbtv121 != d.hbbtv121, "hbbtv121");
    note(o.noBroadband != d.noBroadband, "noBroadband");
    note(o.timeShift != d.timeShift, "timeShift");
    for (const std::string& pattern : o.failPatterns)
        note(true, "fail=" + pattern);
    for (const StatusRule& rule : o.statusRules)
        note(true, "status=" + rule.pattern + "|" + std::to_string(rule.code));
    for (const std::string& pattern : o.refusedRequests)
        note(true, "refuse=" + pattern);
    note(o.carouselDir != d.carouselDir, "carousel=" + o.carouselDir);
    note(o.carouselPid != d.carouselPid, "carouselPid=" + (o.carouselPid ? std::to_string(*o.carouselPid) : ""));
    note(o.carouselList != d.carouselList, "carouselList");
    note(o.carouselExtract != d.carouselExtract, "carouselExtract=" + o.carouselExtract);
    note(o.carouselMemoryMb != d.carouselMemoryMb, "carouselMemoryMb=" + std::to_string(o.carouselMemoryMb));
    for (const KeyPress& key : o.keys)
        note(true, "key=" + key.name + "|" + std::to_string(key.code) + "|" + std::to_string(key.tick));
    note(o.script != d.script, "script=" + o.script);
    note(o.sectionInterval != d.sectionInterval, "sectionInterval=" + std::to_string(o.sectionInterval));
    note(o.idleTicks != d.idleTicks, "idleTicks=" + std::to_string(o.idleTicks));
    note(o.json != d.json, "json");
    note(o.verbosity != d.verbosity, "verbosity=" + std::to_string(o.verbosity));
    note(o.dumpAit != d.dumpAit, "dumpAit");
    note(o.startUrl != d.startUrl, "startUrl=" + o.startUrl);
    for (const TimedText& shot : o.screenshots)
        note(true, "screenshot=" + shot.text + "|" + std::to_string(shot.tick));
    for (const TimedText& evaluation : o.evaluations)
        note(true, "eval=" + evaluation.text + "|" + std::to_string(evaluation.tick));
    note(o.exitAfter != d.exitAfter, "exitAfter=" + std::to_string(o.exitAfter));
    note(o.tickMs != d.tickMs, "tickMs=" + std::to_string(o.tickMs));
    note(o.pageMemoryMb != d.pageMemoryMb, "pageMemoryMb=" + std::to_string(o.pageMemoryMb));
    note(o.loadTimeoutMs != d.loadTimeoutMs, "loadTimeoutMs=" + std::to_string(o.loadTimeoutMs));
    return out.str();
}

struct Accepted {
    const char* product;
    std::vector<std::string> args;
    const char* changes;
};

TEST(OptionsTest, Accepted)
{
    const Accepted cases[] = {
        {SIM, {}, ""},
        {SIM, {"cap.ts"}, "capture=cap.ts"},
        {SIM, {"--service", "0x1F"}, "service=31"},
        {SIM, {"--service", "0"}, "service=0"},
        {SIM, {"--service", "65535"}, "service=65535"},
        {SIM, {"--profiles", "0x0003"}, "profiles=3"},
        {SIM, {"--hbbtv-version", "1.2.1"}, "hbbtv121"},
        {SIM, {"--hbbtv-version", "1.1.1"}, ""},
        {SIM,
         {"--no-broadband", "--time-shift", "--json", "--carousel-list", "--dump-ait"},
         "noBroadband timeShift carouselList json dumpAit"},
        {SIM, {"-v"}, "verbosity=1"},
        {SIM, {"-v", "-vv"}, "verbosity=2"},
        {SIM, {"-vv", "-v"}, "verbosity=1"},
        {SIM, {"--fail", "http://a/*", "--fail", "dvb:*"}, "fail=http://a/* fail=dvb:*"},
        {SIM, {"--status", "http://*=404"}, "status=http://*|404"},
        {SIM, {"--status", "http://a/?q=1=500"}, "status=http://a/?q=1|500"},
        {SIM, {"--refuse", "ws://*", "--refuse", "*.js"}, "refuse=ws://* refuse=*.js"},
        {SIM, {"--carousel", "dir", "--carousel-pid", "0x1FFF"}, "carousel=dir carouselPid=8191"},
        {SIM, {"--carousel-memory", "4096", "--carousel-extract", "out"}, "carouselExtract=out carouselMemoryMb=4096"},
        {SIM, {"--key", "RED@40"}, "key=RED|403|40"},
        {SIM, {"--key", "OK@1", "--key", "ENTER@2"}, "key=OK|461|1 key=ENTER|461|2"},
        {SIM, {"--key", "5@0"}, "key=5|53|0"},  // the digit key, not the code 5
        {SIM, {"--key", "Q@3"}, "key=Q|81|3"},
        {SIM, {"--key", "403@1"}, "key=403|403|1"},
        {SIM, {"--key", "0x1CD@1073741824"}, "key=0x1CD|461|1073741824"},
        {SIM, {"--script", "s.txt"}, "script=s.txt"},
        {SIM, {"--section-interval", "1", "--idle-ticks", "100000"}, "sectionInterval=1 idleTicks=100000"},
        {BROWSER, {"--start-url", "http://a.test/", "--exit-after", "150"}, "startUrl=http://a.test/ exitAfter=150"},
        {BROWSER,
         {"--screenshot", "a.png@100", "--screenshot", "b@c.png@0"},
         "screenshot=a.png|100 screenshot=b@c.png|0"},
        {BROWSER, {"--eval", "document.title@7"}, "eval=document.title|7"},
        {BROWSER, {"--tick-ms", "1"}, "tickMs=1"},
        {BROWSER, {"--tick-ms", "10000"}, "tickMs=10000"},
        {BROWSER, {"--page-memory", "32"}, "pageMemoryMb=32"},
        {BROWSER, {"--page-memory", "65536"}, "pageMemoryMb=65536"},
        {BROWSER, {"--load-timeout", "1"}, "loadTimeoutMs=1000"},
        {BROWSER, {"--load-timeout", "600"}, "loadTimeoutMs=600000"},
        {BROWSER, {"--exit-after", "1073741824"}, "exitAfter=1073741824"},
        // The browser takes the simulator's options too.
        {BROWSER, {"--service", "5", "--refuse", "ws://*", "cap.ts"}, "capture=cap.ts service=5 refuse=ws://*"},
    };
    for (const Accepted& c : cases) {
        const Parsed parsed = parse(c.product, c.args);
        SCOPED_TRACE(::testing::PrintToString(c.args));
        ASSERT_TRUE(parsed.ok) << parsed.error;
        EXPECT_FALSE(parsed.wantHelp);
        EXPECT_EQ(changes(parsed.options), c.changes);
    }
}

struct Refused {
    const char* product;
    std::vector<std::string> args;
    const char* mentioned;  // what the message names
};

TEST(OptionsTest, Refused)
{
    const Refused cases[] = {
        {SIM, {"--bogus"}, "--bogus"},
        {SIM, {"-vvv"}, "-vvv"},
        {SIM, {"a.ts", "b.ts"}, "b.ts"},
        {SIM, {"--service"}, "--service"},
        {SIM, {"--service", ""}, "--service"},
        {SIM, {"--service", "65536"}, "--service"},
        {SIM, {"--service", "-1"}, "--service"},
        {SIM, {"--service", "12abc"}, "--service"},
        {SIM, {"--service", "0x"}, "--service"},
        {SIM, {"--service", "99999999999999999999999"}, "--service"},
        {SIM, {"--profiles", "0x10000"}, "--profiles"},
        {SIM, {"--hbbtv-version", "2.0"}, "--hbbtv-version"},
        {SIM, {"--status", "http://*"}, "--status"},
        {SIM, {"--status", "=404"}, "--status"},
        {SIM, {"--status", "x="}, "--status"},
        {SIM, {"--status", "x=1000"}, "--status"},
        {SIM, {"--status", "x=abc"}, "--status"},
        {SIM, {"--carousel-pid", "0x2000"}, "--carousel-pid"},
        {SIM, {"--carousel-memory", "0"}, "--carousel-memory"},
        {SIM, {"--carousel-memory", "4097"}, "--carousel-memory"},
        {SIM, {"--key", "RED"}, "--key"},
        {SIM, {"--key", "red@1"}, "--key"},
        {SIM, {"--key", "NOPE@1"}, "--key"},
        {SIM, {"--key", "@1"}, "--key"},
        {SIM, {"--key", "RED@"}, "--key"},
        {SIM, {"--key", "RED@1@2"}, "--key"},
        {SIM, {"--key", "RED@1073741825"}, "--key"},
        {SIM, {"--section-interval", "0"}, "--section-interval"},
        {SIM, {"--idle-ticks", "100001"}, "--idle-ticks"},
        {SIM, {"--script"}, "--script"},
        {SIM, {"--json", "--fail"}, "--fail"},
        {BROWSER, {"--screenshot", "a.png"}, "--screenshot"},
        {BROWSER, {"--screenshot", "@100"}, "--screenshot"},
        {BROWSER, {"--screenshot", "a.png@"}, "--screenshot"},
        {BROWSER, {"--eval", "x@-1"}, "--eval"},
        {BROWSER, {"--exit-after", "1073741825"}, "--exit-after"},
        {BROWSER, {"--tick-ms", "0"}, "--tick-ms"},
        {BROWSER, {"--tick-ms", "10001"}, "--tick-ms"},
        {BROWSER, {"--page-memory", "31"}, "--page-memory"},
        {BROWSER, {"--page-memory", "65537"}, "--page-memory"},
        {BROWSER, {"--load-timeout", "0"}, "--load-timeout"},
        {BROWSER, {"--load-timeout", "601"}, "--load-timeout"},
        {BROWSER, {"--load-timeout", "ten"}, "--load-timeout"},
        {BROWSER, {"--load-timeout"}, "--load-timeout"},
        {BROWSER, {"--start-url"}, "--start-url"},
    };
    for (const Refused& c : cases) {
        const Parsed parsed = parse(c.product, c.args);
        SCOPED_TRACE(::testing::PrintToString(c.args));
        EXPECT_FALSE(parsed.ok);
        EXPECT_NE(parsed.error.find(c.mentioned), std::string::npos) << parsed.error;
    }
}

// hbbtv-sim has no browser engine, and says so for each of its options.
TEST(OptionsTest, BrowserOptionsRefusedBySimulator)
{
    const std::vector<std::vector<std::string>> browserOnly = {
        {"--start-url", "http://a.test/"},
        {"--screenshot", "a.png@1"},
        {"--eval", "1@1"},
        {"--exit-after", "5"},
        {"--tick-ms", "20"},
        {"--page-memory", "400"},
        {"--load-timeout", "10"},
    };
    for (const auto& args : browserOnly) {
        const Parsed parsed = parse(SIM, args);
        EXPECT_FALSE(parsed.ok) << args[0];
        EXPECT_NE(parsed.error.find(args[0]), std::string::npos) << parsed.error;
        EXPECT_NE(parsed.error.find("hbbtv-browser"), std::string::npos) << parsed.error;
        EXPECT_TRUE(parse(BROWSER, args).ok) << args[0];
    }
}

TEST(OptionsTest, Help)
{
    for (const char* product : {SIM, BROWSER}) {
        for (const char* help : {"-h", "--help"}) {
            const Parsed parsed = parse(product, {"--json", help});
            EXPECT_TRUE(parsed.ok);
            EXPECT_TRUE(parsed.wantHelp) << product << " " << help;
        }
        EXPECT_FALSE(parse(product, {"--json"}).wantHelp);
        EXPECT_FALSE(parse(product, {"--help", "--bogus"}).ok);
    }
}

}  // namespace
