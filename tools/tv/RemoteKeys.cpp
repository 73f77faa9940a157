#include "RemoteKeys.h"

namespace {

std::vector<RemoteKey> makeTable()
{
    // F13 (0xffca) and up for what the engine does not know; their keyCodes are 124 and up.
    std::vector<RemoteKey> keys = {
        {"RED", 403, "VK_RED", 403, "ColorF0Red", "", {'r', 0xffbe}, 0xffca},
        {"GREEN", 404, "VK_GREEN", 404, "ColorF1Green", "", {'g', 0xffbf}, 0xffcb},
        {"YELLOW", 502, "VK_YELLOW", 405, "ColorF2Yellow", "", {'y', 0xffc0}, 0xffcc},
        {"BLUE", 406, "VK_BLUE", 406, "ColorF3Blue", "", {'b', 0xffc1}, 0xffcd},
        {"UP", 57385, "VK_UP", 38, "ArrowUp", "ArrowUp", {0xff52, 0}, 0xff52},
        {"DOWN", 57386, "VK_DOWN", 40, "ArrowDown", "ArrowDown", {0xff54, 0}, 0xff54},
        {"LEFT", 57387, "VK_LEFT", 37, "ArrowLeft", "ArrowLeft", {0xff51, 0}, 0xff51},
        {"RIGHT", 57388, "VK_RIGHT", 39, "ArrowRight", "ArrowRight", {0xff53, 0}, 0xff53},
        {"ENTER", 461, "VK_ENTER", 13, "Enter", "Enter", {0xff0d, 0xff8d}, 0xff0d},
        {"BACK", 57399, "VK_BACK", 461, "BrowserBack", "Backspace", {0xff08, 0}, 0xffce},
        {"PLAY", 415, "VK_PLAY", 415, "MediaPlay", "MediaPlay", {0, 0}, 0xffcf},
        {"PAUSE", 19, "VK_PAUSE", 19, "MediaPause", "MediaPause", {0, 0}, 0xffd0},
        {"PLAY_PAUSE", 463, "VK_PLAY_PAUSE", 402, "MediaPlayPause", "MediaPlayPause", {'p', 0}, 0xffd1},
        {"STOP", 413, "VK_STOP", 413, "MediaStop", "MediaStop", {'s', 0}, 0xffd2},
        {"FAST_FORWARD", 473, "VK_FAST_FWD", 417, "MediaFastForward", "MediaFastForward", {'f', 0}, 0xffd3},
        {"REWIND", 412, "VK_REWIND", 412, "MediaRewind", "MediaRewind", {'w', 0}, 0xffd4},
        {"INFO", 457, "VK_INFO", 457, "Info", "", {'i', 0}, 0xffd5},
        {"PAGE_UP", 57383, "VK_PAGE_UP", 33, "PageUp", "PageUp", {0xff55, 0}, 0xff55},
        {"PAGE_DOWN", 57384, "VK_PAGE_DOWN", 34, "PageDown", "PageDown", {0xff56, 0}, 0xff56},
    };
    static const char* const digitNames[] = {"0", "1", "2", "3", "4", "5", "6", "7", "8", "9"};
    static const char* const vkNames[] = {"VK_0", "VK_1", "VK_2", "VK_3", "VK_4",
                                          "VK_5", "VK_6", "VK_7", "VK_8", "VK_9"};
    static const char* const codes[] = {"Digit0", "Digit1", "Digit2", "Digit3", "Digit4",
                                        "Digit5", "Digit6", "Digit7", "Digit8", "Digit9"};
    for (int digit = 0; digit < 10; ++digit)
        keys.push_back({digitNames[digit],
                        '0' + digit,
                        vkNames[digit],
                        '0' + digit,
                        digitNames[digit],
                        codes[digit],
                        {unsigned('0' + digit), 0},
                        unsigned('0' + digit)});
    return keys;
}

}  // namespace

int RemoteKey::engineKeyCode() const
{
    const unsigned f13 = 0xffca;
    return engineKeyval >= f13 && engineKeyval <= f13 + 11 ? 124 + int(engineKeyval - f13) : vkCode;
}

const std::vector<RemoteKey>& remoteKeys()
{
    static const std::vector<RemoteKey> table = makeTable();
    return table;
}

const RemoteKey* remoteKeyByName(const std::string& name)
{
    for (const RemoteKey& key : remoteKeys())
        if (name == key.name || (name == "OK" && key.receiverCode == 461))
            return &key;
    return nullptr;
}

const RemoteKey* remoteKeyByReceiverCode(int32_t code)
{
    for (const RemoteKey& key : remoteKeys())
        if (key.receiverCode == code)
            return &key;
    return nullptr;
}

const RemoteKey* remoteKeyByKeyval(unsigned keyval)
{
    for (const RemoteKey& key : remoteKeys())
        if (keyval && (key.keyvals[0] == keyval || key.keyvals[1] == keyval))
            return &key;
    return nullptr;
}
