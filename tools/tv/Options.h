#ifndef TESMO_TV_OPTIONS_H
#define TESMO_TV_OPTIONS_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

struct KeyPress {
    std::string name;
    int32_t code;
    uint64_t tick;
};

struct StatusRule {
    std::string pattern;
    int code;
};

struct TimedText {
    std::string text;
    uint64_t tick;
};

struct Options {
    // The program: hbbtv-sim, or hbbtv-browser (which takes the options of a real browser core).
    std::string product = "hbbtv-sim";
    std::string capture;  // empty: the bundled sample
    std::optional<uint16_t> service;
    uint16_t profiles = 0;
    bool hbbtv121 = false;
    bool noBroadband = false;
    bool timeShift = false;
    std::vector<std::string> failPatterns;
    std::vector<StatusRule> statusRules;
    std::vector<std::string> refusedRequests;  // the platform refuses pages' requests for these
    std::string carouselDir;  // empty: the service's own object carousel
    std::optional<uint16_t> carouselPid;  // instead of the PMT's carousel stream
    bool carouselList = false;
    std::string carouselExtract;  // a directory to write the carousel's files into
    std::vector<KeyPress> keys;
    std::string script;
    uint64_t sectionInterval = 5;
    uint64_t idleTicks = 30;
    bool json = false;
    int verbosity = 0;
    bool dumpAit = false;

    // hbbtv-browser only
    std::string startUrl;  // a broadcast-independent application started at tick 0
    std::vector<TimedText> screenshots;  // PNG files of the screen
    std::vector<TimedText> evaluations;  // JavaScript evaluated in the active page
    uint64_t exitAfter = 0;  // 0: runs until its window is closed
    uint64_t tickMs = 20;
    unsigned pageMemoryMb = 400;
    unsigned loadTimeoutMs = 10000;  // a load or a media source that receives nothing this long has failed
    unsigned carouselMemoryMb = 32;  // a TV's browser has some hundreds of megabytes for its pages

    bool isBrowser() const { return product == "hbbtv-browser"; }
};

// False with a message on a bad option; help sets wantHelp.
bool parseOptions(int argc, char** argv, Options& options, std::string& error, bool& wantHelp);
// The help text; scriptActions lists what --script files may hold.
std::string usage(const Options& options, const std::string& scriptActions = "");

// The command line of the program options.product names: -1 to go on, else the exit status
// (0 after --help, 2 after a bad option, both reported).
int readCommandLine(int argc, char** argv, Options& options, const std::string& scriptActions = "");

// PATTERN=CODE (an HTTP status up to 999); false when the text is not one.
bool parseStatusRule(const std::string& text, StatusRule& rule);

// A key by name (RED, GREEN, 0-9, A-Z, UP, ENTER, ...) or number; false when unknown.
bool keyCode(const std::string& name, int32_t& code);

#endif
