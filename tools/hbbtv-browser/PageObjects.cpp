#include "PageObjects.h"

#include "objects/ApplicationManagerObject.h"
#include "objects/KeysObject.h"
#include "objects/RequestsObject.h"
#include "objects/StreamEventsObject.h"
#include "objects/TerminalObject.h"

namespace {

std::string objectName(const std::string& method)
{
    return method.substr(0, method.find('.'));
}

} // namespace

PageObjects::PageObjects()
{
    for (const PageMethods* methods : {&ApplicationManagerObject::methods(), &KeysObject::methods(), &RequestsObject::methods(),
                                       &StreamEventsObject::methods(), &TerminalObject::methods()})
        add(*methods);
}

void PageObjects::add(const PageMethods& methods)
{
    for (const auto& method : methods)
        objects[objectName(method.first)] = &methods;
}

std::string PageObjects::call(const PageContext& page, const std::string& name, const std::string& argumentsJson) const
{
    auto object = objects.find(objectName(name));
    const PageMethod* method = nullptr;
    if (object != objects.end()) {
        auto found = object->second->find(name);
        method = found == object->second->end() ? nullptr : &found->second;
    }
    JsonParser* parser = json_parser_new();
    JsonNode* root = json_parser_load_from_data(parser, argumentsJson.c_str(), -1, nullptr) ? json_parser_get_root(parser) : nullptr;
    const Arguments args(root && JSON_NODE_HOLDS_ARRAY(root) ? json_node_get_array(root) : nullptr);
    JsonNode* answer = method ? (*method)(page, args) : reply::null();
    char* text = json_to_string(answer, FALSE);
    const std::string json = text;
    g_free(text);
    json_node_unref(answer);
    g_object_unref(parser);
    return json;
}
