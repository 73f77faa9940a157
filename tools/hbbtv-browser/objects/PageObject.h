#ifndef TESMO_BROWSER_PAGEOBJECT_H
#define TESMO_BROWSER_PAGEOBJECT_H

#include <json-glib/json-glib.h>

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "Timeline.h"
#include "tesmo_hbbtv/browser_core.h"

struct Channel;

// The page a call comes from.
struct PageContext {
    DAXO_TesmoWindow* window;
    long handle;  // the page's browser window as the library's bindings know it
    std::string url;  // the page's URL
    std::set<uintptr_t>* applications;  // the application ids the page was given (its view's)
};

// A call's arguments, checked against the method's signature before it runs: each character
// is one argument, n a number, s a string, b a boolean, o an object, * anything; upper case
// (N, S, O) also takes null. Arguments past the signature are not read.
class Arguments {
public:
    explicit Arguments(JsonArray* array) : array(array) {}
    // Empty when the arguments fit the signature, else what is wrong with them.
    std::string mismatch(const std::string& signature) const;

    double number(unsigned index) const;
    bool boolean(unsigned index) const;
    std::string text(unsigned index) const;
    bool isNull(unsigned index) const;
    // An object argument's member, as a JSON node of the call (null when absent).
    JsonNode* member(unsigned index, const char* name) const;
    // An object argument's member when it is a number, else otherwise.
    double numberMember(unsigned index, const char* name, double otherwise) const;
    // An object argument's member when it is a string, else "".
    std::string textMember(unsigned index, const char* name) const;

private:
    JsonNode* at(unsigned index) const;
    JsonArray* array;  // borrowed
};

// What a method answers: a value, or an error that the page's call throws, named as the DOM
// names its errors (TypeError, SecurityError, InvalidStateError, ...), with a code where
// HbbTV gives one. The page receives {"value": V} or {"error": {"name", "message", "code"}}.
class Reply {
public:
    static const int NO_CODE = -1;

    // Takes the node (null: a null value).
    Reply(JsonNode* value = nullptr) : node(value) {}
    Reply(Reply&& other) noexcept;
    Reply& operator=(Reply&& other) noexcept;
    Reply(const Reply&) = delete;
    Reply& operator=(const Reply&) = delete;
    ~Reply();

    static Reply error(const std::string& name, const std::string& message, int code = NO_CODE);
    bool isError() const { return !errorName.empty(); }
    const std::string& error() const { return errorName; }
    // The envelope as JSON text.
    std::string json() const;
    // The value alone as JSON text ("null" for an error), for the timeline.
    std::string valueJson() const;

private:
    JsonNode* node = nullptr;
    std::string errorName;
    std::string message;
    int code = NO_CODE;
};

// Values for replies and events, each a new JSON node the caller owns.
namespace reply {
JsonNode* number(double value);
JsonNode* boolean(bool value);
JsonNode* text(const std::string& value);
JsonNode* null();
// The object as a node; takes the caller's reference to it.
JsonNode* object(JsonObject* members);
// {name: value}, taking the value.
JsonNode* objectWith(const char* name, JsonNode* value);
}  // namespace reply

// A number a page sent as a whole one; 0 for what no int holds (huge, not a number).
long wholeNumber(double value);

// What the TV gives its page objects: the timeline, and events for pages.
class ObjectServices {
public:
    virtual ~ObjectServices() = default;
    // A line in the timeline; a record in its JSON form.
    virtual void say(const std::string& line) = 0;
    virtual void record(JsonLine line) = 0;
    // The page's window as the timeline names it.
    virtual std::string where(const PageContext& page) const = 0;
    // An event for the page in the window of that handle; takes the payload.
    virtual void toPage(long handle, const std::string& event, JsonNode* payload) = 0;
    // An event for every page; takes the payload.
    virtual void toEveryPage(const std::string& event, JsonNode* payload) = 0;
};

// A page object's side in the TV: the methods its script calls, and what it does on the TV's
// happenings (it sends its own events).
class PageObject {
public:
    // Whether the timeline tells a call: a page's questions (what is the key set, which
    // channel) are only recorded.
    enum Telling { TOLD, QUIET };
    using Handler = std::function<Reply(const PageContext& page, const Arguments& args)>;
    struct Method {
        std::string name;  // "Object.method", as the script calls it
        std::string signature;  // see Arguments
        Telling telling;
        Handler run;
    };

    virtual ~PageObject() = default;
    const std::vector<Method>& methods() const { return table; }

    // ---- the TV's happenings
    virtual void channelChanged(const Channel&) {}
    // The TV has started; the library has taken a complete AIT.
    virtual void started() {}
    virtual void tableCompleted() {}
    virtual void applicationEvent(const std::string& /*name*/, uint32_t /*applicationId*/) {}
    virtual void streamEvent(void* /*listener*/, const std::string& /*name*/, const std::string& /*data*/,
                             const std::string& /*text*/, const std::string& /*status*/)
    {
    }

protected:
    std::vector<Method> table;
};

#endif
