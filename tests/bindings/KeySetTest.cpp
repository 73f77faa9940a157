#include <gtest/gtest.h>

#include "api/ConfigurationManager.h"
#include "bindings/KeySet.h"

using TesmoHbbTV::KeySet;

namespace {

const std::vector<DAXO_KEY_SYM> everyKey{403, 404, 502, 406,   57385, 57386, 57387, 57388, 461, 57399, 412, 413, 19,
                                         415, 463, 473, 57383, 57384, 457,   '0',   '5',   '9', 'A',   'M', 'Z'};

TEST(KeySetTest, EmptySetMatchesNothingFullSetMatchesEveryListedKey)
{
    for (DAXO_KEY_SYM key : everyKey) {
        EXPECT_FALSE(KeySet(0).matchesKey(key)) << key;
        EXPECT_TRUE(KeySet(0x3FF).matchesKey(key)) << key;
    }
    for (DAXO_KEY_SYM key : std::vector<DAXO_KEY_SYM>{405, 'a', 'z', '/', ':', '@', '[', 0, -1, 57389})
        EXPECT_FALSE(KeySet(0x3FF).matchesKey(key)) << key;
    EXPECT_FALSE(KeySet(0x400 | 0x7FFFF800).matchesKey(403)) << "OTHER and higher bits admit nothing";
}

TEST(KeySetTest, EachBitAdmitsOnlyItsOwnKeys)
{
    EXPECT_TRUE(KeySet(KeySet::YELLOW).matchesKey(502));
    EXPECT_FALSE(KeySet(KeySet::YELLOW).matchesKey(405));
    EXPECT_FALSE(KeySet(KeySet::RED).matchesKey(404));
    EXPECT_TRUE(KeySet(KeySet::VCR).matchesKey(19));
    EXPECT_FALSE(KeySet(KeySet::NUMERIC).matchesKey('A'));
    EXPECT_TRUE(KeySet(KeySet::ALPHA).matchesKey('Q'));
}

TEST(KeySetTest, WritesKeepOnlySupportedKeys)
{
    TesmoHbbTV::ConfigurationManager::getInstance();  // defaults: nothing supported
    KeySet keys(KeySet::RED);
    EXPECT_EQ(keys.setValue(-1), 0);
    TesmoHbbTV::ConfigurationManager::destroyInstance();
}

}  // namespace
