#include "PageObjects.h"

PageObjects::PageObjects(const ObjectParts& parts) : services(parts.services)
{
    for (const RegisteredObject& registered : objectRegistry()) {
        if (!registered.make)
            continue;
        objects.push_back(registered.make(parts));
        for (const PageObject::Method& method : objects.back()->methods())
            methods[method.name] = &method;
    }
}

std::string PageObjects::call(const PageContext& page, const std::string& name, const std::string& argumentsJson)
{
    auto found = methods.find(name);
    const PageObject::Method* method = found == methods.end() ? nullptr : found->second;
    const Reply reply = answer(page, method, name, argumentsJson);
    tell(page, method, name, argumentsJson, reply);
    return reply.json();
}

std::string PageObjects::unanswered(const std::string& why)
{
    return Reply::error("InvalidStateError", why).json();
}

Reply PageObjects::answer(const PageContext& page, const PageObject::Method* method, const std::string& name,
                          const std::string& argumentsJson) const
{
    if (!method)
        return Reply::error("NotSupportedError", name + " is not a method of this TV");
    JsonParser* parser = json_parser_new();
    JsonNode* root =
        json_parser_load_from_data(parser, argumentsJson.c_str(), -1, nullptr) ? json_parser_get_root(parser) : nullptr;
    const Arguments args(root && JSON_NODE_HOLDS_ARRAY(root) ? json_node_get_array(root) : nullptr);
    const std::string wrong = args.mismatch(method->signature);
    Reply reply = wrong.empty() ? method->run(page, args) : Reply::error("TypeError", name + ": " + wrong);
    g_object_unref(parser);
    return reply;
}

void PageObjects::tell(const PageContext& page, const PageObject::Method* method, const std::string& name,
                       const std::string& arguments, const Reply& reply)
{
    const std::string answer = reply.isError() ? reply.json() : reply.valueJson();
    services.record(JsonLine().field("page_call", name).field("arguments", arguments).field("answer", answer));
    if (!method || method->telling == PageObject::TOLD || reply.isError())
        services.say("the page calls " + name + " " + arguments + ": " + answer + " (" + services.where(page) + ")");
}

void PageObjects::started()
{
    for (auto& object : objects)
        object->started();
}

void PageObjects::channelChanged(const Channel& channel)
{
    for (auto& object : objects)
        object->channelChanged(channel);
}

void PageObjects::pictureChanged(const std::string& state)
{
    for (auto& object : objects)
        object->pictureChanged(state);
}

void PageObjects::tableCompleted()
{
    for (auto& object : objects)
        object->tableCompleted();
}

void PageObjects::programmesChanged()
{
    for (auto& object : objects)
        object->programmesChanged();
}

void PageObjects::applicationEvent(const std::string& name, uint32_t applicationId)
{
    for (auto& object : objects)
        object->applicationEvent(name, applicationId);
}

void PageObjects::streamEvent(void* listener, const std::string& name, const std::string& data, const std::string& text,
                              const std::string& status)
{
    for (auto& object : objects)
        object->streamEvent(listener, name, data, text, status);
}
