#ifndef TESMO_TV_SCRIPTRUNNER_H
#define TESMO_TV_SCRIPTRUNNER_H

#include <memory>
#include <string>
#include <vector>

#include "LoadRules.h"
#include "Script.h"
#include "Timeline.h"
#include "XmlAit.h"

class TvPlatform;

// Plays a scenario's actions as they fall due: what the viewer, the platform and the running
// application's page do. Each verb is one row of its table.
class ScriptRunner {
public:
    ScriptRunner(TvPlatform& tv, Timeline& out, LoadRules& rules) : tv(tv), out(out), rules(rules) {}

    static std::vector<ScriptVerb> verbs();
    // What a script may hold, a line an action, for --help.
    static std::string help();
    void perform(const ScriptAction& action);

private:
    using Handler = void (ScriptRunner::*)(const ScriptAction&);
    struct Row {
        ScriptVerb verb;
        Handler run;
    };
    static const std::vector<Row>& table();

    void key(const ScriptAction& action);
    void fail(const ScriptAction& action);
    void failNextLoad(const ScriptAction& action);
    void status(const ScriptAction& action);
    void serviceChange(const ScriptAction& action);
    void channel(const ScriptAction& action);
    void broadband(const ScriptAction& action);
    void startUrl(const ScriptAction& action);
    void terminate(const ScriptAction& action);
    void lowMemory(const ScriptAction& action);
    void timeShift(const ScriptAction& action);
    void createApplication(const ScriptAction& action);
    void destroyApplication(const ScriptAction& action);
    void showOrHide(const ScriptAction& action);
    void keyset(const ScriptAction& action);
    void xmlAit(const ScriptAction& action);
    void complain(const ScriptAction& action, const std::string& what);

    TvPlatform& tv;
    Timeline& out;
    LoadRules& rules;
    std::vector<std::unique_ptr<XmlAit>> xmlAits;  // the library keeps what it was handed
};

#endif
