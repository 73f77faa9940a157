#include "bindings/KeySet.h"

#include <algorithm>
#include <initializer_list>

#include "api/ConfigurationManager.h"

namespace TesmoHbbTV {

namespace {

bool oneOf(DAXO_KEY_SYM key, std::initializer_list<DAXO_KEY_SYM> keys)
{
    return std::find(keys.begin(), keys.end(), key) != keys.end();
}

// YELLOW is 502, not 405: receivers' remote controls send that code.
bool admits(int32_t bit, DAXO_KEY_SYM key)
{
    switch (bit) {
    case KeySet::RED:
        return key == 403;
    case KeySet::GREEN:
        return key == 404;
    case KeySet::YELLOW:
        return key == 502;
    case KeySet::BLUE:
        return key == 406;
    case KeySet::NAVIGATION:
        return oneOf(key, {57385, 57386, 57387, 57388, 461, 57399});
    case KeySet::VCR:
        return oneOf(key, {412, 413, 19, 415, 463, 473});
    case KeySet::SCROLL:
        return oneOf(key, {57383, 57384});
    case KeySet::INFO:
        return key == 457;
    case KeySet::NUMERIC:
        return key >= '0' && key <= '9';
    case KeySet::ALPHA:
        return key >= 'A' && key <= 'Z';
    default:
        return false;
    }
}

}  // namespace

int KeySet::setValue(int newValue)
{
    value = newValue & ConfigurationManager::getInstance()->getSupportedKeyInput();
    return value;
}

bool KeySet::matchesKey(DAXO_KEY_SYM key) const
{
    for (int32_t bit = RED; bit <= ALPHA; bit <<= 1)
        if ((value & bit) && admits(bit, key))
            return true;
    return false;
}

}  // namespace TesmoHbbTV
