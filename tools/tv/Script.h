#ifndef TESMO_TV_SCRIPT_H
#define TESMO_TV_SCRIPT_H

#include <cstdint>
#include <string>
#include <vector>

// A scenario: one action a line, each at the script's clock, which "tick N" moves on. The
// actions are ScriptRunner's verbs; "#" starts a comment.
struct ScriptAction {
    uint64_t tick;
    std::string verb;
    std::string argument;
    int line;
};

// An action a script may name, with its argument (null: it takes none) and what it does.
struct ScriptVerb {
    const char* name;
    const char* argument;
    const char* help;
};

// False with a message naming the line when the file cannot be read or holds an unknown
// action, or one without the argument it takes.
bool loadScript(const std::string& path, const std::vector<ScriptVerb>& verbs, std::vector<ScriptAction>& actions,
                std::string& error);

#endif
