#include "Script.h"

#include <cstdlib>
#include <fstream>
#include <set>
#include <sstream>

bool loadScript(const std::string& path, std::vector<ScriptAction>& actions, std::string& error)
{
    static const std::set<std::string> withArgument = {"key",   "fail",      "status",  "broadband", "start-url",
                                                       "create-application", "xml-ait", "keyset", "time-shift", "channel"};
    static const std::set<std::string> withoutArgument = {"service-change", "terminate", "destroy-application",
                                                          "show",           "hide",      "low-memory", "load-fail"};
    std::ifstream in(path);
    if (!in) {
        error = "cannot read script " + path;
        return false;
    }
    uint64_t clock = 0;
    std::string text;
    for (int line = 1; std::getline(in, text); ++line) {
        const size_t hash = text.find('#');
        if (hash != std::string::npos)
            text.resize(hash);
        std::istringstream words(text);
        std::string verb, argument;
        if (!(words >> verb))
            continue;
        std::getline(words >> std::ws, argument);
        while (!argument.empty() && (argument.back() == ' ' || argument.back() == '\r'))
            argument.pop_back();
        const auto where = path + ":" + std::to_string(line) + ": ";
        if (verb == "tick") {
            char* end = nullptr;
            const unsigned long long n = std::strtoull(argument.c_str(), &end, 10);
            if (argument.empty() || *end != '\0' || n > 1000000)
                return error = where + "tick takes a number of ticks", false;
            clock += n;
        } else if (withArgument.count(verb)) {
            if (argument.empty())
                return error = where + verb + " needs an argument", false;
            actions.push_back({clock, verb, argument, line});
        } else if (withoutArgument.count(verb)) {
            actions.push_back({clock, verb, "", line});
        } else {
            return error = where + "unknown action '" + verb + "'", false;
        }
    }
    return true;
}
