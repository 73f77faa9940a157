#include "ScriptRunner.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "ChannelList.h"
#include "Options.h"
#include "TimelineText.h"
#include "TvPlatform.h"
#include "tesmo_hbbtv/bindings.h"

const std::vector<ScriptRunner::Row>& ScriptRunner::table()
{
    static const std::vector<Row> rows = {
        {{"key", "NAME", "press a key for the running application"}, &ScriptRunner::key},
        {{"fail", "PATTERN", "loads of matching URLs fail from now on"}, &ScriptRunner::fail},
        {{"load-fail", nullptr, "the next load fails"}, &ScriptRunner::failNextLoad},
        {{"status", "PATTERN=CODE", "loads of matching URLs finish with that HTTP status"}, &ScriptRunner::status},
        {{"service-change", nullptr, "the service is left (AIT withdrawn)"}, &ScriptRunner::serviceChange},
        {{"channel", "next|prev|ID", "the viewer changes to another service of the capture"}, &ScriptRunner::channel},
        {{"broadband", "on|off", "the platform's broadband connection comes up or goes down"},
         &ScriptRunner::broadband},
        {{"start-url", "URL", "the platform starts a broadcast-independent application"}, &ScriptRunner::startUrl},
        {{"terminate", nullptr, "the platform terminates the running application"}, &ScriptRunner::terminate},
        {{"low-memory", nullptr, "the platform reports low memory"}, &ScriptRunner::lowMemory},
        {{"time-shift", "on|off", "playback becomes time-shifted or live"}, &ScriptRunner::timeShift},
        {{"create-application", "URL", "the running application's page creates an application"},
         &ScriptRunner::createApplication},
        {{"destroy-application", nullptr, "the running application's page destroys its application"},
         &ScriptRunner::destroyApplication},
        {{"show", nullptr, "the page shows its application"}, &ScriptRunner::showOrHide},
        {{"hide", nullptr, "the page hides its application"}, &ScriptRunner::showOrHide},
        {{"keyset", "VALUE", "the page sets its key set"}, &ScriptRunner::keyset},
        {{"xml-ait", "FILE", "the page delivers an XML AIT"}, &ScriptRunner::xmlAit},
    };
    return rows;
}

std::vector<ScriptVerb> ScriptRunner::verbs()
{
    std::vector<ScriptVerb> names;
    for (const Row& row : table())
        names.push_back(row.verb);
    return names;
}

std::string ScriptRunner::help()
{
    std::string text = "\nA --script file holds one action a line ('tick N' lets N ticks pass, # starts a comment):\n";
    for (const Row& row : table()) {
        std::string action =
            std::string("  ") + row.verb.name + (row.verb.argument ? std::string(" ") + row.verb.argument : "");
        action.resize(std::max<size_t>(action.size() + 1, 26), ' ');
        text += action + row.verb.help + "\n";
    }
    return text;
}

void ScriptRunner::perform(const ScriptAction& action)
{
    for (const Row& row : table())
        if (action.verb == row.verb.name)
            return (this->*row.run)(action);
}

void ScriptRunner::complain(const ScriptAction& action, const std::string& what)
{
    out.say("script line " + std::to_string(action.line) + ": " + what);
}

// ---------------------------------------------------------------- the viewer and the platform

void ScriptRunner::key(const ScriptAction& action)
{
    int32_t code = 0;
    if (keyCode(action.argument, code))
        tv.pressKey(action.argument, code);
    else
        complain(action, "unknown key " + action.argument);
}

void ScriptRunner::fail(const ScriptAction& action)
{
    rules.failFrom(action.argument);
    out.say("from now on, loads of " + action.argument + " fail");
}

void ScriptRunner::failNextLoad(const ScriptAction&)
{
    rules.failNextLoad();
}

void ScriptRunner::status(const ScriptAction& action)
{
    StatusRule rule;
    if (parseStatusRule(action.argument, rule))
        rules.answer(rule.pattern, rule.code);
    else
        complain(action, "status takes PATTERN=CODE, not " + action.argument);
}

void ScriptRunner::serviceChange(const ScriptAction&)
{
    out.say("service change: the AIT is withdrawn");
    tv.postEvent(HBBTV_EVENT_AIT_WITHDRAWN);
}

// "next", "prev" or a service id: the viewer zaps.
void ScriptRunner::channel(const ScriptAction& action)
{
    const ChannelList& list = ChannelList::get();
    const Channel* to = action.argument == "next"   ? list.neighbour(tv.currentChannel(), 1)
                        : action.argument == "prev" ? list.neighbour(tv.currentChannel(), -1)
                                                    : nullptr;
    for (const Channel& c : list.all())
        if (!to && c.serviceId == std::strtoul(action.argument.c_str(), nullptr, 0))
            to = &c;
    if (!tv.requestTune(to))
        complain(action, "no channel " + action.argument);
}

void ScriptRunner::broadband(const ScriptAction& action)
{
    out.say("broadband " + action.argument);
    tv.postEvent(action.argument == "off" ? HBBTV_EVENT_BROADBAND_DOWN : HBBTV_EVENT_BROADBAND_UP);
}

void ScriptRunner::startUrl(const ScriptAction& action)
{
    HBBTV_EventData* data = newEvent();
    data->start_broadcast_independent.window = tv.libraryWindow();
    data->start_broadcast_independent.url = strdup(action.argument.c_str());
    out.say("the platform starts " + action.argument);
    tv.postEvent(HBBTV_EVENT_START_BROADCAST_INDEPENDENT, data);
}

void ScriptRunner::terminate(const ScriptAction&)
{
    HBBTV_EventData* data = newEvent();
    data->terminate_application.window = tv.libraryWindow();
    out.say("the platform terminates the running application");
    tv.postEvent(HBBTV_EVENT_TERMINATE_APPLICATION, data);
}

void ScriptRunner::lowMemory(const ScriptAction&)
{
    out.say("the platform reports low memory");
    tv.postEvent(HBBTV_EVENT_LOW_MEMORY);
}

void ScriptRunner::timeShift(const ScriptAction& action)
{
    const bool on = action.argument == "on";
    out.say(std::string("time shift ") + (on ? "on" : "off") + ": " +
            (tesmo_hbbtv_set_time_shifted(tv.libraryWindow(), on) == HBBTV_STATUS_OK ? "changed" : "unchanged"));
}

// ---------------------------------------------------------------- the page, through the bindings

void ScriptRunner::createApplication(const ScriptAction& action)
{
    void* created = nullptr;
    const int result =
        native_ApplicationCreateApplication(action.argument.c_str(), 0, tv.runningApplicationId(), &created);
    out.say("the page creates " + action.argument + ": result " + std::to_string(result));
}

void ScriptRunner::destroyApplication(const ScriptAction&)
{
    out.say("the page destroys its application: result " +
            std::to_string(native_ApplicationDestroyApplication(tv.runningApplicationId())));
}

void ScriptRunner::showOrHide(const ScriptAction& action)
{
    void* id = tv.runningApplicationId();
    const int result = action.verb == "show" ? native_ApplicationShow(id) : native_ApplicationHide(id);
    out.say("the page asks to " + action.verb + " its application: result " + std::to_string(result));
}

void ScriptRunner::keyset(const ScriptAction& action)
{
    double stored = 0;
    const int result =
        native_KeySetSetValue(tv.runningApplicationId(), std::strtod(action.argument.c_str(), nullptr), &stored);
    out.say("the page sets its key set to " + action.argument + ": result " + std::to_string(result) + ", now " +
            timelineText::hex((unsigned long long)stored));
}

void ScriptRunner::xmlAit(const ScriptAction& action)
{
    auto ait = std::make_unique<XmlAit>();
    std::string error;
    if (!ait->load(action.argument, error))
        return out.say(error);
    int result = 99;
    const bool handled = tesmo_hbbtv_handle_notification(nullptr, tv.browserCore().activeWindow(), DAXO_TESMO_EVT_AIT,
                                                         ait->record(), &result);
    out.say("the page delivers the XML AIT " + action.argument + ": " +
            (handled ? "result " + std::to_string(result) : std::string("not for the library")));
    xmlAits.push_back(std::move(ait));
}
