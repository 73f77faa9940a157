#ifndef TESMO_TV_TIMELINE_H
#define TESMO_TV_TIMELINE_H

#include <cstdint>
#include <cstdio>
#include <string>

// One JSON object, built field by field and written as one line.
class JsonLine {
public:
    JsonLine& field(const char* key, const std::string& value);
    JsonLine& field(const char* key, const char* value);  // null becomes JSON null
    JsonLine& field(const char* key, long long value);
    JsonLine& pointer(const char* key, const void* value);
    // A JSON value written as it is (an array or object built by the caller).
    JsonLine& raw(const char* key, const std::string& json);
    std::string str() const { return text + "}"; }

    static std::string quote(const std::string& value);

private:
    void key(const char* name);
    std::string text = "{";
};

// What the simulated TV shows: readable lines by default, or JSON lines.
class Timeline {
public:
    Timeline(FILE* out, bool json) : out(out), json(json) {}

    bool isJson() const { return json; }
    void setTick(uint64_t now) { tick = now; }
    uint64_t getTick() const { return tick; }

    // A step of the story, in readable form; dropped in JSON mode.
    void say(const std::string& text);
    // A continuation line under the last step.
    void detail(const std::string& text);
    // A record in JSON mode; dropped in readable mode. The tick is added.
    void record(JsonLine line);

private:
    FILE* out;
    bool json;
    uint64_t tick = 0;
};

#endif
