#include "Reply.h"

#include <utility>

namespace {

std::string jsonText(JsonNode* node)
{
    char* text = json_to_string(node, FALSE);
    std::string json = text;
    g_free(text);
    return json;
}

}  // namespace

Reply::Reply(Reply&& other) noexcept
    : node(std::exchange(other.node, nullptr)), errorName(std::move(other.errorName)),
      message(std::move(other.message)), code(other.code)
{
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
    return node && !isError() ? jsonText(node) : "null";
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
    std::string json = jsonText(root);
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
