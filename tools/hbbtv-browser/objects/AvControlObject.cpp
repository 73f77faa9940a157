#include "AvControlObject.h"

namespace {

const char* const STATES[] = {"stopped", "playing", "paused", "connecting", "buffering", "finished", "in error"};
const char* const ERRORS[] = {"format not supported", "cannot connect", "unidentified error", "insufficient resources",
                              "content corrupt", "content not available", "not available at that position",
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
    if (what.compare(0, 5, "seek ") == 0)
        return "seek to " + oneLine(what.substr(5)) + " ms";
    if (playState < 0 || playState > 6)
        return "state " + std::to_string(playState);
    std::string line = STATES[playState];
    if (playState == 6 && error >= 0 && error <= 7)
        line += " (error " + std::to_string(error) + ": " + ERRORS[error] + ")";
    return line;
}

} // namespace

AvControlObject::AvControlObject(Say sayLine) : say(std::move(sayLine))
{
    table = {
        {"AvControl.changed", [this](const PageContext& page, const Arguments& args) { return changed(page, args); }},
    };
}

JsonNode* AvControlObject::changed(const PageContext& page, const Arguments& args) const
{
    auto number = [&args](const char* name, double otherwise) {
        JsonNode* node = args.member(0, name);
        return node && JSON_NODE_HOLDS_VALUE(node) && json_node_get_value_type(node) != G_TYPE_STRING ? json_node_get_double(node)
                                                                                                      : otherwise;
    };
    auto text = [&args](const char* name) {
        JsonNode* node = args.member(0, name);
        return node && JSON_NODE_HOLDS_VALUE(node) && json_node_get_value_type(node) == G_TYPE_STRING
                   ? std::string(json_node_get_string(node))
                   : std::string();
    };
    say(page, "media " + oneLine(text("data")) + ": " +
                  describe(text("what"), wholeNumber(number("playState", -1)), wholeNumber(number("error", -1)),
                           wholeNumber(number("position", 0)), wholeNumber(number("speed", 0))));
    return reply::null();
}
