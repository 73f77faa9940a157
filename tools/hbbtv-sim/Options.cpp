#include "Options.h"

#include <cstdlib>
#include <map>

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

std::string usage()
{
    return "usage: hbbtv-sim [options] [CAPTURE.ts]\n"
           "Plays a broadcast capture through libtesmo_hbbtv and shows what the TV would do.\n"
           "Without a capture, plays the bundled sample with its scenario.\n"
           "\n"
           "  --service ID            the service to play (default: the first with an HbbTV AIT)\n"
           "  --profiles MASK         platform profiles the terminal supports (default 0)\n"
           "  --hbbtv-version V       1.1.1 or 1.2.1 (default 1.1.1)\n"
           "  --no-broadband          broadband is not usable\n"
           "  --time-shift            the service plays time-shifted\n"
           "  --fail PATTERN          loads of URLs matching PATTERN (a glob) fail; repeatable\n"
           "  --status PATTERN=CODE   loads of matching URLs finish with that HTTP status\n"
           "  --carousel DIR          serve dvb: files from DIR (the URL's path inside it)\n"
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
    static const std::map<std::string, int32_t> keys = {
        {"RED", 403},      {"GREEN", 404},      {"YELLOW", 502},   {"BLUE", 406},     {"UP", 57385},
        {"DOWN", 57386},   {"LEFT", 57387},     {"RIGHT", 57388},  {"ENTER", 461},    {"OK", 461},
        {"BACK", 57399},   {"REWIND", 412},     {"STOP", 413},     {"PAUSE", 19},     {"PLAY", 415},
        {"PLAY_PAUSE", 463}, {"FAST_FORWARD", 473}, {"PAGE_UP", 57383}, {"PAGE_DOWN", 57384}, {"INFO", 457}};
    auto found = keys.find(name);
    if (found != keys.end()) {
        code = found->second;
        return true;
    }
    if (name.size() == 1 && ((name[0] >= '0' && name[0] <= '9') || (name[0] >= 'A' && name[0] <= 'Z'))) {
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

bool parseOptions(int argc, char** argv, Options& options, std::string& error, bool& wantHelp)
{
    wantHelp = false;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        auto value = [&](std::string& out) {
            if (i + 1 >= argc) {
                error = arg + " needs a value";
                return false;
            }
            out = argv[++i];
            return true;
        };
        std::string text;
        unsigned long long number = 0;
        if (arg == "-h" || arg == "--help") {
            wantHelp = true;
        } else if (arg == "--service") {
            if (!value(text) || !parseNumber(text, 0xFFFF, number))
                return error.empty() ? (error = "--service takes a service id (0 to 0xFFFF)", false) : false;
            options.service = uint16_t(number);
        } else if (arg == "--profiles") {
            if (!value(text) || !parseNumber(text, 0xFFFF, number))
                return error.empty() ? (error = "--profiles takes a 16-bit mask", false) : false;
            options.profiles = uint16_t(number);
        } else if (arg == "--hbbtv-version") {
            if (!value(text))
                return false;
            if (text != "1.1.1" && text != "1.2.1")
                return error = "--hbbtv-version is 1.1.1 or 1.2.1", false;
            options.hbbtv121 = text == "1.2.1";
        } else if (arg == "--no-broadband") {
            options.noBroadband = true;
        } else if (arg == "--time-shift") {
            options.timeShift = true;
        } else if (arg == "--fail") {
            if (!value(text))
                return false;
            options.failPatterns.push_back(text);
        } else if (arg == "--status") {
            if (!value(text))
                return false;
            const size_t equals = text.rfind('=');
            if (equals == std::string::npos || equals == 0 || !parseNumber(text.substr(equals + 1), 999, number))
                return error = "--status takes PATTERN=CODE, for example 'http://*=404'", false;
            options.statusRules.push_back({text.substr(0, equals), int(number)});
        } else if (arg == "--carousel") {
            if (!value(options.carouselDir))
                return false;
        } else if (arg == "--key") {
            if (!value(text))
                return false;
            const size_t at = text.find('@');
            int32_t code = 0;
            if (at == std::string::npos || !keyCode(text.substr(0, at), code) ||
                !parseNumber(text.substr(at + 1), 1u << 30, number))
                return error = "--key takes NAME@TICK with a known key, for example RED@40", false;
            options.keys.push_back({text.substr(0, at), code, number});
        } else if (arg == "--script") {
            if (!value(options.script))
                return false;
        } else if (arg == "--section-interval" || arg == "--idle-ticks") {
            if (!value(text) || !parseNumber(text, 100000, number) || number == 0)
                return error.empty() ? (error = arg + " takes a number of ticks from 1 to 100000", false) : false;
            (arg == "--idle-ticks" ? options.idleTicks : options.sectionInterval) = number;
        } else if (arg == "--json") {
            options.json = true;
        } else if (arg == "-v" || arg == "-vv") {
            options.verbosity = int(arg.size() - 1);
        } else if (arg == "--dump-ait") {
            options.dumpAit = true;
        } else if (!arg.empty() && arg[0] == '-') {
            error = "unknown option " + arg;
            return false;
        } else if (options.capture.empty()) {
            options.capture = arg;
        } else {
            error = "one capture only (" + options.capture + " and " + arg + ")";
            return false;
        }
    }
    return true;
}
