#ifndef TESMO_BROWSER_REPLY_H
#define TESMO_BROWSER_REPLY_H

#include <json-glib/json-glib.h>

#include <string>

// What a method answers: a value, or an error that the page's call throws, named as the DOM
// names its errors (TypeError, SecurityError, InvalidStateError, ...), with a code where
// HbbTV gives one. The page receives {"value": V} or {"error": {"name", "message", "code"}}.
class Reply {
public:
    static const int NO_CODE = -1;

    // Takes the node (null: a null value).
    Reply(JsonNode* value = nullptr) : node(value) {}
    Reply(Reply&& other) noexcept;
    Reply& operator=(Reply&& other) = delete;
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

#endif
