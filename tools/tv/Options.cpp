#include "Options.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "RemoteKeys.h"

namespace {

bool parseNumber(const std::string& text, unsigned long long max, unsigned long long& value)
{
    if (text.empty())
        return false;
    char* end = nullptr;
    value = std::strtoull(text.c_str(), &end, 0);
    return *end == '\0' && value <= max && text[0] != '-';
}

}  // namespace

bool parseStatusRule(const std::string& text, StatusRule& rule)
{
    unsigned long long code = 0;
    const size_t equals = text.rfind('=');
    if (equals == std::string::npos || equals == 0 || !parseNumber(text.substr(equals + 1), 999, code))
        return false;
    rule = {text.substr(0, equals), int(code)};
    return true;
}

bool keyCode(const std::string& name, int32_t& code)
{
    if (const RemoteKey* key = remoteKeyByName(name)) {
        code = key->receiverCode;
        return true;
    }
    if (name.size() == 1 && name[0] >= 'A' && name[0] <= 'Z') {
        code = name[0];
        return true;
    }
    unsigned long long number = 0;
    if (parseNumber(name, 0x7FFFFFFF, number)) {
        code = int32_t(number);
        return true;
    }
    return false;
}

namespace {

// The value as a whole number from min to max, or what is wrong with it.
std::string readNumber(const std::string& name, const std::string& value, unsigned long long min,
                       unsigned long long max, const char* what, unsigned long long& number)
{
    return parseNumber(value, max, number) && number >= min ? "" : name + " takes " + what;
}

template <typename Field>
std::string readInto(const std::string& name, const std::string& value, unsigned long long min, unsigned long long max,
                     const char* what, Field& field, unsigned long long scale = 1)
{
    unsigned long long number = 0;
    std::string wrong = readNumber(name, value, min, max, what, number);
    if (wrong.empty())
        field = Field(number * scale);
    return wrong;
}

// TEXT@TICK; the text may hold '@' itself.
std::string readTimed(const std::string& name, const std::string& value, std::vector<TimedText>& list)
{
    unsigned long long tick = 0;
    const size_t at = value.rfind('@');
    if (at == std::string::npos || at == 0 || !parseNumber(value.substr(at + 1), 1u << 30, tick))
        return name + " takes TEXT@TICK, for example shot.png@100";
    list.push_back({value.substr(0, at), tick});
    return "";
}

std::string readStatus(const std::string&, const std::string& value, Options& options)
{
    StatusRule rule;
    if (!parseStatusRule(value, rule))
        return "--status takes PATTERN=CODE, for example 'http://*=404'";
    options.statusRules.push_back(rule);
    return "";
}

std::string readKey(const std::string&, const std::string& value, Options& options)
{
    const size_t at = value.find('@');
    int32_t code = 0;
    unsigned long long tick = 0;
    if (at == std::string::npos || !keyCode(value.substr(0, at), code) ||
        !parseNumber(value.substr(at + 1), 1u << 30, tick))
        return "--key takes NAME@TICK with a known key, for example RED@40";
    options.keys.push_back({value.substr(0, at), code, tick});
    return "";
}

std::string readVersion(const std::string&, const std::string& value, Options& options)
{
    if (value != "1.1.1" && value != "1.2.1")
        return "--hbbtv-version is 1.1.1 or 1.2.1";
    options.hbbtv121 = value == "1.2.1";
    return "";
}

const char* const TICKS = "a number of ticks from 1 to 100000";

// One option: its names, its value (null: it takes none), whose it is, its help (a line
// each), and what it does with its value; "" or what is wrong.
struct OptionRow {
    const char* name;
    const char* alias;
    const char* argument;
    bool browserOnly;
    const char* help;
    std::string (*apply)(const std::string& name, const std::string& value, Options& options);
};

const OptionRow OPTIONS[] = {
    {"--start-url", nullptr, "URL", true, "no capture: start a broadcast-independent application",
     [](const std::string&, const std::string& v, Options& o) { return o.startUrl = v, std::string(); }},
    {"--screenshot", nullptr, "FILE@TICK", true,
     "write a PNG of the screen once the tick has come and\nthe pages have loaded (at most 250 ticks later); repeatable",
     [](const std::string& n, const std::string& v, Options& o) { return readTimed(n, v, o.screenshots); }},
    {"--eval", nullptr, "SCRIPT@TICK", true, "print what SCRIPT gives in the active page; repeatable",
     [](const std::string& n, const std::string& v, Options& o) { return readTimed(n, v, o.evaluations); }},
    {"--exit-after", nullptr, "TICK", true, "quit after that tick (default: when the window closes)",
     [](const std::string& n, const std::string& v, Options& o) {
         return readInto(n, v, 0, 1u << 30, "a tick", o.exitAfter);
     }},
    {"--tick-ms", nullptr, "N", true, "milliseconds between ticks (default 20)",
     [](const std::string& n, const std::string& v, Options& o) {
         return readInto(n, v, 1, 10000, "milliseconds from 1 to 10000", o.tickMs);
     }},
    {"--page-memory", nullptr, "MB", true, "a page's web process is stopped above this (default 400)",
     [](const std::string& n, const std::string& v, Options& o) {
         return readInto(n, v, 32, 65536, "megabytes from 32 to 65536", o.pageMemoryMb);
     }},
    {"--load-timeout", nullptr, "SECONDS", true,
     "a page load or media source that receives nothing this\nlong has failed: the server is not reachable (default 10)",
     [](const std::string& n, const std::string& v, Options& o) {
         return readInto(n, v, 1, 600, "seconds from 1 to 600", o.loadTimeoutMs, 1000);
     }},
    {"--service", nullptr, "ID", false, "the service to play (default: the first with an HbbTV AIT)",
     [](const std::string& n, const std::string& v, Options& o) {
         return readInto(n, v, 0, 0xFFFF, "a service id (0 to 0xFFFF)", o.service);
     }},
    {"--profiles", nullptr, "MASK", false, "platform profiles the terminal supports (default 0)",
     [](const std::string& n, const std::string& v, Options& o) {
         return readInto(n, v, 0, 0xFFFF, "a 16-bit mask", o.profiles);
     }},
    {"--hbbtv-version", nullptr, "V", false, "1.1.1 or 1.2.1 (default 1.1.1)", readVersion},
    {"--no-broadband", nullptr, nullptr, false, "broadband is not usable",
     [](const std::string&, const std::string&, Options& o) { return o.noBroadband = true, std::string(); }},
    {"--time-shift", nullptr, nullptr, false, "the service plays time-shifted",
     [](const std::string&, const std::string&, Options& o) { return o.timeShift = true, std::string(); }},
    {"--fail", nullptr, "PATTERN", false, "loads of URLs matching PATTERN (a glob) fail; repeatable",
     [](const std::string&, const std::string& v, Options& o) { return o.failPatterns.push_back(v), std::string(); }},
    {"--status", nullptr, "PATTERN=CODE", false, "loads of matching URLs finish with that HTTP status", readStatus},
    {"--refuse", nullptr, "PATTERN", false,
     "the platform refuses every request of a page (scripts,\nsubresources, frames, forms, sockets) for URLs matching\n"
     "PATTERN (a glob); repeatable",
     [](const std::string&, const std::string& v, Options& o) {
         return o.refusedRequests.push_back(v), std::string();
     }},
    {"--carousel", nullptr, "DIR", false,
     "serve dvb: files from DIR (the URL's path inside it) instead\nof the service's object carousel",
     [](const std::string&, const std::string& v, Options& o) { return o.carouselDir = v, std::string(); }},
    {"--carousel-pid", nullptr, "PID", false, "the object carousel on PID (the capture may hold no PMT)",
     [](const std::string& n, const std::string& v, Options& o) {
         return readInto(n, v, 0, 0x1FFF, "a PID (0 to 0x1FFF)", o.carouselPid);
     }},
    {"--carousel-memory", nullptr, "MB", false, "what one carousel's modules may take, inflated (default 32)",
     [](const std::string& n, const std::string& v, Options& o) {
         return readInto(n, v, 1, 4096, "megabytes from 1 to 4096", o.carouselMemoryMb);
     }},
    {"--carousel-list", nullptr, nullptr, false, "print the carousel's tree and what is missing, and exit",
     [](const std::string&, const std::string&, Options& o) { return o.carouselList = true, std::string(); }},
    {"--carousel-extract", nullptr, "DIR", false, "write the carousel's files into DIR, and exit",
     [](const std::string&, const std::string& v, Options& o) { return o.carouselExtract = v, std::string(); }},
    {"--key", nullptr, "NAME@TICK", false,
     "press a key at a tick: RED, GREEN, YELLOW, BLUE, 0-9, A-Z,\nUP, DOWN, LEFT, RIGHT, ENTER, BACK, PLAY, PAUSE, STOP, ...",
     readKey},
    {"--script", nullptr, "FILE", false, "run a scenario script",
     [](const std::string&, const std::string& v, Options& o) { return o.script = v, std::string(); }},
    {"--section-interval", nullptr, "N", false, "ticks between the capture's AIT sections (default 5)",
     [](const std::string& n, const std::string& v, Options& o) {
         return readInto(n, v, 1, 100000, TICKS, o.sectionInterval);
     }},
    {"--idle-ticks", nullptr, "N", false, "ticks to go on once nothing is left to do (default 30)",
     [](const std::string& n, const std::string& v, Options& o) {
         return readInto(n, v, 1, 100000, TICKS, o.idleTicks);
     }},
    {"--json", nullptr, nullptr, false, "one JSON object a line: every notification and every call",
     [](const std::string&, const std::string&, Options& o) { return o.json = true, std::string(); }},
    {"-v", "-vv", nullptr, false,
     "more of the library's own log lines: from LOG, or all\n(readable output shows its warnings and errors anyway)",
     [](const std::string& n, const std::string&, Options& o) {
         return o.verbosity = int(n.size() - 1), std::string();
     }},
    {"--dump-ait", nullptr, nullptr, false, "print the decoded AITs of the service and exit",
     [](const std::string&, const std::string&, Options& o) { return o.dumpAit = true, std::string(); }},
    {"-h", "--help", nullptr, false, "this text", nullptr},
};

const int HELP_COLUMN = 26;

std::string helpOf(bool browserOnly)
{
    std::string text;
    for (const OptionRow& row : OPTIONS) {
        if (row.browserOnly != browserOnly)
            continue;
        std::string label = std::string("  ") + row.name + (row.alias ? std::string(", ") + row.alias : "") +
                            (row.argument ? std::string(" ") + row.argument : "");
        label.resize(std::max<size_t>(label.size() + 1, HELP_COLUMN), ' ');
        std::string help = row.help;
        for (size_t line = help.find('\n'); line != std::string::npos; line = help.find('\n', line + 1))
            help.insert(line + 1, std::string(HELP_COLUMN, ' '));
        text += label + help + "\n";
    }
    return text;
}

const OptionRow* optionNamed(const std::string& name)
{
    for (const OptionRow& row : OPTIONS)
        if (name == row.name || (row.alias && name == row.alias))
            return &row;
    return nullptr;
}

}  // namespace

std::string usage(const Options& options, const std::string& scriptActions)
{
    if (options.isBrowser())
        return "usage: hbbtv-browser [options] [CAPTURE.ts]\n"
               "Plays a broadcast capture through libtesmo_hbbtv with WebKit as the browser core:\n"
               "the HbbTV applications run, draw and take keys (r g y b or F1-F4, arrows, Return,\n"
               "BackSpace, 0-9, p). Without a capture, plays the bundled sample.\n"
               "\n" +
               helpOf(true) + "\nand, as hbbtv-sim takes them:\n" + helpOf(false) + scriptActions;
    return "usage: hbbtv-sim [options] [CAPTURE.ts]\n"
           "Plays a broadcast capture through libtesmo_hbbtv and shows what the TV would do.\n"
           "Without a capture, plays the bundled sample with its scenario.\n"
           "\n" +
           helpOf(false) + scriptActions;
}

bool parseOptions(int argc, char** argv, Options& options, std::string& error, bool& wantHelp)
{
    wantHelp = false;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        const OptionRow* row = optionNamed(arg);
        if (!row && !arg.empty() && arg[0] == '-')
            error = "unknown option " + arg;
        else if (!row && !options.capture.empty())
            error = "one capture only (" + options.capture + " and " + arg + ")";
        else if (!row)
            options.capture = arg;
        else if (row->browserOnly && !options.isBrowser())
            error = arg + " is an option of hbbtv-browser";
        else if (!row->apply)
            wantHelp = true;
        else if (row->argument && i + 1 >= argc)
            error = arg + " needs a value";
        else
            error = row->apply(arg, row->argument ? argv[++i] : "", options);
        if (!error.empty())
            return false;
    }
    return true;
}

int readCommandLine(int argc, char** argv, Options& options, const std::string& scriptActions)
{
    std::string error;
    bool wantHelp = false;
    if (!parseOptions(argc, argv, options, error, wantHelp)) {
        std::fprintf(stderr, "%s: %s (see --help)\n", options.product.c_str(), error.c_str());
        return 2;
    }
    if (wantHelp) {
        std::fputs(usage(options, scriptActions).c_str(), stdout);
        return 0;
    }
    return -1;
}
