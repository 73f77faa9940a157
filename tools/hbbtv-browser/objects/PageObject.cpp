#include "PageObject.h"

#include <utility>

namespace {

enum class Kind { NUMBER, TEXT, BOOLEAN, OBJECT, NONE, OTHER };

Kind kindOf(JsonNode* node)
{
    if (JSON_NODE_HOLDS_NULL(node))
        return Kind::NONE;
    if (JSON_NODE_HOLDS_OBJECT(node))
        return Kind::OBJECT;
    if (!JSON_NODE_HOLDS_VALUE(node))
        return Kind::OTHER;
    const GType type = json_node_get_value_type(node);
    if (type == G_TYPE_STRING)
        return Kind::TEXT;
    if (type == G_TYPE_BOOLEAN)
        return Kind::BOOLEAN;
    return type == G_TYPE_DOUBLE || type == G_TYPE_INT64 ? Kind::NUMBER : Kind::OTHER;
}

const char* kindName(char wanted)
{
    switch (wanted) {
    case 'n':
    case 'N':
        return "a number";
    case 's':
    case 'S':
        return "a string";
    case 'b':
        return "a boolean";
    case '*':
        return "given";
    default:
        return "an object";
    }
}

bool fits(char wanted, Kind kind)
{
    switch (wanted) {
    case '*':
        return true;
    case 'N':
    case 'S':
    case 'O':
        if (kind == Kind::NONE)
            return true;
        return fits(char(wanted - 'A' + 'a'), kind);
    case 'n':
        return kind == Kind::NUMBER;
    case 's':
        return kind == Kind::TEXT;
    case 'b':
        return kind == Kind::BOOLEAN;
    case 'o':
        return kind == Kind::OBJECT;
    default:
        return false;
    }
}

}  // namespace

// ---------------------------------------------------------------- arguments

JsonNode* Arguments::at(unsigned index) const
{
    return array && index < json_array_get_length(array) ? json_array_get_element(array, index) : nullptr;
}

std::string Arguments::mismatch(const std::string& signature) const
{
    if (!array)
        return "the arguments are not a list";
    for (unsigned i = 0; i < signature.size(); ++i) {
        JsonNode* node = at(i);
        if (!node || !fits(signature[i], kindOf(node)))
            return "argument " + std::to_string(i + 1) + " must be " + kindName(signature[i]) +
                   (signature[i] >= 'A' && signature[i] <= 'Z' ? " or null" : "");
    }
    return "";
}

long wholeNumber(double value)
{
    return value >= -2147483648.0 && value <= 2147483647.0 ? long(value) : 0;
}

double Arguments::number(unsigned index) const
{
    JsonNode* node = at(index);
    return node && kindOf(node) == Kind::NUMBER ? json_node_get_double(node) : 0;
}

bool Arguments::boolean(unsigned index) const
{
    JsonNode* node = at(index);
    return node && kindOf(node) == Kind::BOOLEAN && json_node_get_boolean(node);
}

std::string Arguments::text(unsigned index) const
{
    JsonNode* node = at(index);
    return node && kindOf(node) == Kind::TEXT ? json_node_get_string(node) : "";
}

bool Arguments::isNull(unsigned index) const
{
    JsonNode* node = at(index);
    return !node || JSON_NODE_HOLDS_NULL(node);
}

JsonNode* Arguments::member(unsigned index, const char* name) const
{
    JsonNode* node = at(index);
    if (!node || !JSON_NODE_HOLDS_OBJECT(node))
        return nullptr;
    return json_object_get_member(json_node_get_object(node), name);
}

double Arguments::numberMember(unsigned index, const char* name, double otherwise) const
{
    JsonNode* node = member(index, name);
    return node && kindOf(node) == Kind::NUMBER ? json_node_get_double(node) : otherwise;
}

std::string Arguments::textMember(unsigned index, const char* name) const
{
    JsonNode* node = member(index, name);
    return node && kindOf(node) == Kind::TEXT ? json_node_get_string(node) : "";
}

// ---------------------------------------------------------------- replies

Reply::Reply(Reply&& other) noexcept
    : node(std::exchange(other.node, nullptr)), errorName(std::move(other.errorName)),
      message(std::move(other.message)), code(other.code)
{
}

Reply& Reply::operator=(Reply&& other) noexcept
{
    std::swap(node, other.node);
    errorName = std::move(other.errorName);
    message = std::move(other.message);
    code = other.code;
    return *this;
}

Reply::~Reply()
{
    if (node)
        json_node_unref(node);
}

Reply Reply::error(const std::string& name, const std::string& message, int code)
{
    Reply reply;
    reply.errorName = name;
    reply.message = message;
    reply.code = code;
    return reply;
}

std::string Reply::valueJson() const
{
    if (!node || isError())
        return "null";
    char* text = json_to_string(node, FALSE);
    std::string json = text;
    g_free(text);
    return json;
}

std::string Reply::json() const
{
    JsonObject* envelope = json_object_new();
    if (isError()) {
        JsonObject* details = json_object_new();
        json_object_set_string_member(details, "name", errorName.c_str());
        json_object_set_string_member(details, "message", message.c_str());
        if (code != NO_CODE)
            json_object_set_int_member(details, "code", code);
        json_object_set_object_member(envelope, "error", details);
    } else {
        json_object_set_member(envelope, "value", node ? json_node_copy(node) : reply::null());
    }
    JsonNode* root = reply::object(envelope);
    char* text = json_to_string(root, FALSE);
    std::string json = text;
    g_free(text);
    json_node_unref(root);
    return json;
}

namespace reply {

JsonNode* number(double value)
{
    return json_node_init_double(json_node_alloc(), value);
}

JsonNode* boolean(bool value)
{
    return json_node_init_boolean(json_node_alloc(), value);
}

JsonNode* text(const std::string& value)
{
    return json_node_init_string(json_node_alloc(), value.c_str());
}

JsonNode* null()
{
    return json_node_init_null(json_node_alloc());
}

JsonNode* object(JsonObject* members)
{
    JsonNode* node = json_node_init_object(json_node_alloc(), members);
    json_object_unref(members);
    return node;
}

JsonNode* objectWith(const char* name, JsonNode* value)
{
    JsonObject* members = json_object_new();
    json_object_set_member(members, name, value);
    return object(members);
}

}  // namespace reply
