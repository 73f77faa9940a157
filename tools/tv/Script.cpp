#include "Script.h"

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace {

const ScriptVerb* verbNamed(const std::vector<ScriptVerb>& verbs, const std::string& name)
{
    for (const ScriptVerb& verb : verbs)
        if (name == verb.name)
            return &verb;
    return nullptr;
}

}  // namespace

bool loadScript(const std::string& path, const std::vector<ScriptVerb>& verbs, std::vector<ScriptAction>& actions,
                std::string& error)
{
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
        } else if (const ScriptVerb* known = verbNamed(verbs, verb)) {
            if (known->argument && argument.empty())
                return error = where + verb + " needs an argument", false;
            actions.push_back({clock, verb, known->argument ? argument : "", line});
        } else {
            return error = where + "unknown action '" + verb + "'", false;
        }
    }
    return true;
}
