#include "AvControlObject.h"

namespace {

const char* const STATES[] = {"stopped", "playing", "paused", "connecting", "buffering", "finished", "in error"};
const char* const ERRORS[] = {"format not supported",
                              "cannot connect",
                              "unidentified error",
                              "insufficient resources",
                              "content corrupt",
                              "content not available",
                              "not available at that position",
                              "blocked by parental control"};

// A page's text on one line of the timeline: no control characters, not too long.
std::string oneLine(const std::string& text)
{
    std::string line = text.substr(0, 512);
    for (char& c : line)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
            c = ' ';
    return line;
}

std::string describe(const std::string& what, long playState, long error, long position, long speed)
{
    if (what == "play")
        return "play at speed " + std::to_string(speed) + " from " + std::to_string(position) + " ms";
    if (what == "pause")
        return "pause at " + std::to_string(position) + " ms";
    if (what == "seek")
        return "seek to " + std::to_string(position) + " ms";
    if (playState < 0 || playState > 6)
        return "state " + std::to_string(playState);
    std::string line = STATES[playState];
    if (playState == 6 && error >= 0 && error <= 7)
        line += " (error " + std::to_string(error) + ": " + ERRORS[error] + ")";
    return line;
}

}  // namespace

AvControlObject::AvControlObject(ObjectServices& objectServices) : services(objectServices)
{
    table = {{"AvControl.changed", "o", QUIET,
              [this](const PageContext& page, const Arguments& args) { return changed(page, args); }}};
}

// {data, what, playState, error, position, speed}: a seek's position is where it goes to.
Reply AvControlObject::changed(const PageContext& page, const Arguments& args) const
{
    services.say("media " + oneLine(args.textMember(0, "data")) + ": " +
                 describe(args.textMember(0, "what"), wholeNumber(args.numberMember(0, "playState", -1)),
                          wholeNumber(args.numberMember(0, "error", -1)),
                          wholeNumber(args.numberMember(0, "position", 0)),
                          wholeNumber(args.numberMember(0, "speed", 0))) +
                 " (" + services.where(page) + ")");
    return reply::null();
}
