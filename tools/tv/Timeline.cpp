#include "Timeline.h"

#include <cinttypes>

#include "DvbText.h"

std::string JsonLine::quote(const std::string& value)
{
    std::string out = "\"";
    for (unsigned char c : validUtf8(value)) {
        switch (c) {
        case '"':
            out += "\\\"";
            break;
        case '\\':
            out += "\\\\";
            break;
        case '\n':
            out += "\\n";
            break;
        case '\r':
            out += "\\r";
            break;
        case '\t':
            out += "\\t";
            break;
        default:
            if (c < 0x20) {
                char escaped[8];
                std::snprintf(escaped, sizeof escaped, "\\u%04x", c);
                out += escaped;
            } else {
                out += char(c);
            }
        }
    }
    return out + "\"";
}

void JsonLine::key(const char* name)
{
    if (text.size() > 1)
        text += ",";
    text += quote(name) + ":";
}

JsonLine& JsonLine::field(const char* name, const std::string& value)
{
    key(name);
    text += quote(value);
    return *this;
}

JsonLine& JsonLine::field(const char* name, const char* value)
{
    key(name);
    text += value ? quote(value) : "null";
    return *this;
}

JsonLine& JsonLine::field(const char* name, long long value)
{
    key(name);
    text += std::to_string(value);
    return *this;
}

JsonLine& JsonLine::pointer(const char* name, const void* value)
{
    char hex[32];
    std::snprintf(hex, sizeof hex, "0x%" PRIxPTR, reinterpret_cast<uintptr_t>(value));
    return value ? field(name, std::string(hex)) : field(name, static_cast<const char*>(nullptr));
}

JsonLine& JsonLine::raw(const char* name, const std::string& json)
{
    key(name);
    text += json;
    return *this;
}

void Timeline::say(const std::string& text)
{
    if (!json) {
        std::fprintf(out, "tick %5llu  %s\n", static_cast<unsigned long long>(tick), text.c_str());
        std::fflush(out);  // the library's log lines go to the same terminal
    }
}

void Timeline::detail(const std::string& text)
{
    if (!json) {
        std::fprintf(out, "             %s\n", text.c_str());
        std::fflush(out);
    }
}

void Timeline::record(JsonLine line)
{
    if (json) {
        std::fprintf(out, "%s\n", line.field("tick", static_cast<long long>(tick)).str().c_str());
        std::fflush(out);
    }
}
