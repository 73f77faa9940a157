#include "PageObject.h"

JsonNode* Arguments::at(unsigned index) const
{
    return array && index < json_array_get_length(array) ? json_array_get_element(array, index) : nullptr;
}

long wholeNumber(double value)
{
    return value >= -2147483648.0 && value <= 2147483647.0 ? long(value) : 0;
}

double Arguments::number(unsigned index) const
{
    JsonNode* node = at(index);
    if (!node || JSON_NODE_TYPE(node) != JSON_NODE_VALUE)
        return 0;
    const GType type = json_node_get_value_type(node);
    if (type == G_TYPE_BOOLEAN)
        return json_node_get_boolean(node) ? 1 : 0;
    return type == G_TYPE_DOUBLE || type == G_TYPE_INT64 ? json_node_get_double(node) : 0;
}

bool Arguments::boolean(unsigned index) const
{
    JsonNode* node = at(index);
    if (!node || JSON_NODE_TYPE(node) != JSON_NODE_VALUE)
        return false;
    const GType type = json_node_get_value_type(node);
    if (type == G_TYPE_STRING)
        return *json_node_get_string(node) != '\0';
    return number(index) != 0;
}

std::string Arguments::text(unsigned index) const
{
    JsonNode* node = at(index);
    if (!node || JSON_NODE_TYPE(node) != JSON_NODE_VALUE || json_node_get_value_type(node) != G_TYPE_STRING)
        return "";
    return json_node_get_string(node);
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

JsonNode* result(int result, double value)
{
    JsonObject* members = json_object_new();
    json_object_set_int_member(members, "result", result);
    json_object_set_double_member(members, "value", value);
    return object(members);
}

JsonNode* object(JsonObject* members)
{
    JsonNode* node = json_node_init_object(json_node_alloc(), members);
    json_object_unref(members);
    return node;
}

} // namespace reply
