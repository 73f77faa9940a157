#include "KeysObject.h"

#include "RemoteKeys.h"

namespace {

// {"constants": {VK_RED: 403, ...}, "engine": {"124": {keyCode, key, code}, ...}}: the names a
// page compares with, and what the page's events for the keys the engine lacks become.
Reply keyTable(const PageContext&, const Arguments&)
{
    JsonObject* constants = json_object_new();
    JsonObject* engine = json_object_new();
    for (const RemoteKey& key : remoteKeys()) {
        json_object_set_int_member(constants, key.vkName, key.vkCode);
        if (key.engineKeyCode() == key.vkCode)
            continue;
        JsonObject* remote = json_object_new();
        json_object_set_int_member(remote, "keyCode", key.vkCode);
        json_object_set_string_member(remote, "key", key.domKey);
        json_object_set_string_member(remote, "code", key.domCode);
        json_object_set_object_member(engine, std::to_string(key.engineKeyCode()).c_str(), remote);
    }
    JsonObject* both = json_object_new();
    json_object_set_object_member(both, "constants", constants);
    json_object_set_object_member(both, "engine", engine);
    return reply::object(both);
}

}  // namespace

KeysObject::KeysObject()
{
    table = {{"Keys.table", "", QUIET, keyTable}};
}
