#include "Options.h"

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

} // namespace

std::string commonUsage();

std::string usage(const Options& options)
{
    if (options.isBrowser())
        return "usage: hbbtv-browser [options] [CAPTURE.ts]\n"
               "Plays a broadcast capture through libtesmo_hbbtv with WebKit as the browser core:\n"
               "the HbbTV applications run, draw and take keys (r g y b or F1-F4, arrows, Return,\n"
               "BackSpace, 0-9, p). Without a capture, plays the bundled sample.\n"
               "\n"
               "  --start-url URL         no capture: start a broadcast-independent application\n"
               "  --screenshot FILE@TICK  write a PNG of the screen once the tick has come and\n"
               "                          the pages have loaded (at most 250 ticks later); repeatable\n"
               "  --eval SCRIPT@TICK      print what SCRIPT gives in the active page; repeatable\n"
               "  --exit-after TICK       quit after that tick (default: when the window closes)\n"
               "  --tick-ms N             milliseconds between ticks (default 20)\n"
               "  --page-memory MB        a page's web process is stopped above this (default 400)\n"
               "  --load-timeout SECONDS  a page load or media source that receives nothing this\n"
               "                          long has failed: the server is not reachable (default 10)\n"
               "\n"
               "and, as hbbtv-sim takes them:\n" + commonUsage();
    return "usage: hbbtv-sim [options] [CAPTURE.ts]\n"
           "Plays a broadcast capture through libtesmo_hbbtv and shows what the TV would do.\n"
           "Without a capture, plays the bundled sample with its scenario.\n"
           "\n" + commonUsage();
}

std::string commonUsage()
{
    return
           "  --service ID            the service to play (default: the first with an HbbTV AIT)\n"
           "  --profiles MASK         platform profiles the terminal supports (default 0)\n"
           "  --hbbtv-version V       1.1.1 or 1.2.1 (default 1.1.1)\n"
           "  --no-broadband          broadband is not usable\n"
           "  --time-shift            the service plays time-shifted\n"
           "  --fail PATTERN          loads of URLs matching PATTERN (a glob) fail; repeatable\n"
           "  --status PATTERN=CODE   loads of matching URLs finish with that HTTP status\n"
           "  --refuse PATTERN        the platform refuses every request of a page (scripts,\n"
           "                          subresources, frames, forms, sockets) for URLs matching\n"
           "                          PATTERN (a glob); repeatable\n"
           "  --carousel DIR          serve dvb: files from DIR (the URL's path inside it) instead\n"
           "                          of the service's object carousel\n"
           "  --carousel-pid PID      the object carousel on PID (the capture may hold no PMT)\n"
           "  --carousel-memory MB    what one carousel's modules may take, inflated (default 32)\n"
           "  --carousel-list         print the carousel's tree and what is missing, and exit\n"
           "  --carousel-extract DIR  write the carousel's files into DIR, and exit\n"
           "  --key NAME@TICK         press a key at a tick: RED, GREEN, YELLOW, BLUE, 0-9, A-Z,\n"
           "                          UP, DOWN, LEFT, RIGHT, ENTER, BACK, PLAY, PAUSE, STOP, ...\n"
           "  --script FILE           run a scenario script\n"
           "  --section-interval N    ticks between the capture's AIT sections (default 5)\n"
           "  --idle-ticks N          ticks to go on once nothing is left to do (default 30)\n"
           "  --json                  one JSON object a line: every notification and every call\n"
           "  -v, -vv                 more of the library's own log lines: from LOG, or all\n"
           "                          (readable output shows its warnings and errors anyway)\n"
           "  --dump-ait              print the decoded AITs of the service and exit\n"
           "  -h, --help              this text\n";
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

// Reads the options one by one; the first problem is kept in error.
class OptionReader {
public:
    OptionReader(int argc, char** argv, Options& options) : argc(argc), argv(argv), options(options) {}

    bool read(std::string& error, bool& wantHelp);

private:
    bool option(const std::string& arg, bool& wantHelp);
    bool value(const std::string& arg, std::string& out);
    bool number(const std::string& arg, unsigned long long max, unsigned long long& out, const char* what);
    bool browserOption(const std::string& arg);
    bool timed(const std::string& arg, std::vector<TimedText>& list);
    bool refuse(const std::string& message)
    {
        problem = message;
        return false;
    }

    int argc;
    char** argv;
    Options& options;
    int i = 1;
    std::string problem;
};

bool OptionReader::value(const std::string& arg, std::string& out)
{
    if (i + 1 >= argc)
        return refuse(arg + " needs a value");
    out = argv[++i];
    return true;
}

bool OptionReader::number(const std::string& arg, unsigned long long max, unsigned long long& out, const char* what)
{
    std::string text;
    if (!value(arg, text))
        return false;
    return parseNumber(text, max, out) || refuse(arg + " takes " + what);
}

// TEXT@TICK; the text may hold '@' itself.
bool OptionReader::timed(const std::string& arg, std::vector<TimedText>& list)
{
    std::string text;
    unsigned long long n = 0;
    if (!value(arg, text))
        return false;
    const size_t at = text.rfind('@');
    if (at == std::string::npos || at == 0 || !parseNumber(text.substr(at + 1), 1u << 30, n))
        return refuse(arg + " takes TEXT@TICK, for example shot.png@100");
    list.push_back({text.substr(0, at), n});
    return true;
}

bool OptionReader::browserOption(const std::string& arg)
{
    unsigned long long n = 0;
    if (arg == "--start-url")
        return value(arg, options.startUrl);
    if (arg == "--screenshot")
        return timed(arg, options.screenshots);
    if (arg == "--eval")
        return timed(arg, options.evaluations);
    if (arg == "--exit-after") {
        if (!number(arg, 1u << 30, n, "a tick"))
            return false;
        options.exitAfter = n;
        return true;
    }
    if (arg == "--page-memory") {
        if (!number(arg, 65536, n, "megabytes from 32 to 65536") || n < 32)
            return refuse(arg + " takes megabytes from 32 to 65536");
        options.pageMemoryMb = unsigned(n);
        return true;
    }
    if (arg == "--load-timeout") {
        if (!number(arg, 600, n, "seconds from 1 to 600") || n == 0)
            return refuse(arg + " takes seconds from 1 to 600");
        options.loadTimeoutMs = unsigned(n * 1000);
        return true;
    }
    if (!number(arg, 10000, n, "milliseconds from 1 to 10000") || n == 0)
        return refuse(arg + " takes milliseconds from 1 to 10000");
    options.tickMs = n;
    return true;
}

bool OptionReader::option(const std::string& arg, bool& wantHelp)
{
    static const char* const browserOptions[] = {"--start-url", "--screenshot", "--eval", "--exit-after", "--tick-ms",
                                                 "--page-memory", "--load-timeout"};
    for (const char* name : browserOptions)
        if (arg == name)
            return options.isBrowser() ? browserOption(arg) : refuse(arg + " is an option of hbbtv-browser");
    std::string text;
    unsigned long long n = 0;
    if (arg == "-h" || arg == "--help") {
        wantHelp = true;
    } else if (arg == "--service") {
        if (!number(arg, 0xFFFF, n, "a service id (0 to 0xFFFF)"))
            return false;
        options.service = uint16_t(n);
    } else if (arg == "--profiles") {
        if (!number(arg, 0xFFFF, n, "a 16-bit mask"))
            return false;
        options.profiles = uint16_t(n);
    } else if (arg == "--hbbtv-version") {
        if (!value(arg, text))
            return false;
        if (text != "1.1.1" && text != "1.2.1")
            return refuse("--hbbtv-version is 1.1.1 or 1.2.1");
        options.hbbtv121 = text == "1.2.1";
    } else if (arg == "--no-broadband") {
        options.noBroadband = true;
    } else if (arg == "--time-shift") {
        options.timeShift = true;
    } else if (arg == "--fail") {
        if (!value(arg, text))
            return false;
        options.failPatterns.push_back(text);
    } else if (arg == "--status") {
        if (!value(arg, text))
            return false;
        const size_t equals = text.rfind('=');
        if (equals == std::string::npos || equals == 0 || !parseNumber(text.substr(equals + 1), 999, n))
            return refuse("--status takes PATTERN=CODE, for example 'http://*=404'");
        options.statusRules.push_back({text.substr(0, equals), int(n)});
    } else if (arg == "--refuse") {
        if (!value(arg, text))
            return false;
        options.refusedRequests.push_back(text);
    } else if (arg == "--carousel") {
        return value(arg, options.carouselDir);
    } else if (arg == "--carousel-pid") {
        if (!number(arg, 0x1FFF, n, "a PID (0 to 0x1FFF)"))
            return false;
        options.carouselPid = uint16_t(n);
    } else if (arg == "--carousel-memory") {
        if (!number(arg, 4096, n, "megabytes from 1 to 4096") || n == 0)
            return refuse("--carousel-memory takes megabytes from 1 to 4096");
        options.carouselMemoryMb = unsigned(n);
    } else if (arg == "--carousel-list") {
        options.carouselList = true;
    } else if (arg == "--carousel-extract") {
        return value(arg, options.carouselExtract);
    } else if (arg == "--key") {
        if (!value(arg, text))
            return false;
        const size_t at = text.find('@');
        int32_t code = 0;
        if (at == std::string::npos || !keyCode(text.substr(0, at), code) || !parseNumber(text.substr(at + 1), 1u << 30, n))
            return refuse("--key takes NAME@TICK with a known key, for example RED@40");
        options.keys.push_back({text.substr(0, at), code, n});
    } else if (arg == "--script") {
        return value(arg, options.script);
    } else if (arg == "--section-interval" || arg == "--idle-ticks") {
        const char* ticks = "a number of ticks from 1 to 100000";
        if (!number(arg, 100000, n, ticks))
            return false;
        if (n == 0)
            return refuse(arg + " takes " + ticks);
        (arg == "--idle-ticks" ? options.idleTicks : options.sectionInterval) = n;
    } else if (arg == "--json") {
        options.json = true;
    } else if (arg == "-v" || arg == "-vv") {
        options.verbosity = int(arg.size() - 1);
    } else if (arg == "--dump-ait") {
        options.dumpAit = true;
    } else if (!arg.empty() && arg[0] == '-') {
        return refuse("unknown option " + arg);
    } else if (options.capture.empty()) {
        options.capture = arg;
    } else {
        return refuse("one capture only (" + options.capture + " and " + arg + ")");
    }
    return true;
}

bool OptionReader::read(std::string& error, bool& wantHelp)
{
    wantHelp = false;
    for (; i < argc; ++i) {
        if (!option(argv[i], wantHelp)) {
            error = problem;
            return false;
        }
    }
    return true;
}

} // namespace

bool parseOptions(int argc, char** argv, Options& options, std::string& error, bool& wantHelp)
{
    return OptionReader(argc, argv, options).read(error, wantHelp);
}

int readCommandLine(int argc, char** argv, Options& options)
{
    std::string error;
    bool wantHelp = false;
    if (!parseOptions(argc, argv, options, error, wantHelp)) {
        std::fprintf(stderr, "%s: %s (see --help)\n", options.product.c_str(), error.c_str());
        return 2;
    }
    if (wantHelp) {
        std::fputs(usage(options).c_str(), stdout);
        return 0;
    }
    return -1;
}
