#include "Arguments.h"

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
        return "a number";
    case 's':
        return "a string";
    case 'b':
        return "a boolean";
    default:
        return "an object";
    }
}

bool fits(char wanted, Kind kind)
{
    switch (wanted) {
    case 'n':
        return kind == Kind::NUMBER;
    case 's':
        return kind == Kind::TEXT;
    case 'b':
        return kind == Kind::BOOLEAN;
    case 'o':
        return kind == Kind::OBJECT;
    case 'O':
        return kind == Kind::OBJECT || kind == Kind::NONE;
    default:
        return false;
    }
}

}  // namespace

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
                   (signature[i] == 'O' ? " or null" : "");
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

bool Arguments::booleanMember(unsigned index, const char* name) const
{
    JsonNode* node = member(index, name);
    return node && kindOf(node) == Kind::BOOLEAN && json_node_get_boolean(node);
}

std::string Arguments::textMember(unsigned index, const char* name) const
{
    JsonNode* node = member(index, name);
    return node && kindOf(node) == Kind::TEXT ? json_node_get_string(node) : "";
}
