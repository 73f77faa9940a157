#include "KeysObject.h"

#include "RemoteKeys.h"

namespace {

JsonNode* table(const PageContext&, const Arguments&)
{
    JsonObject* object = json_object_new();
    for (const RemoteKey& key : remoteKeys())
        json_object_set_int_member(object, key.vkName, key.vkCode);
    JsonNode* node = json_node_init_object(json_node_alloc(), object);
    json_object_unref(object);
    return node;
}

} // namespace

const PageMethods& KeysObject::methods()
{
    static const PageMethods methods = {{"Keys.table", table}};
    return methods;
}
