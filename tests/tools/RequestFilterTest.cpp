// The WebSocket rules made from the platform's refusal globs: a rule must refuse exactly the
// URLs the platform refuses, which it judges with fnmatch, or there must be none ("").

#include <gtest/gtest.h>

#include <fnmatch.h>

#include <ostream>
#include <regex>
#include <string>
#include <vector>

#include "RequestFilter.h"

namespace {

struct GlobCase {
    const char* glob;
    std::vector<std::string> refused;  // URLs the glob matches
    std::vector<std::string> allowed;  // URLs it must leave alone
};

const GlobCase GLOB_CASES[] = {
    // Wildcards.
    {"ws://evil.test/*",
     {"ws://evil.test/", "ws://evil.test/a/b?c=d#e"},
     {"ws://evil.test", "wss://evil.test/x", "ws://evilxtest/"}},
    {"*://*.tracker.test/*",
     {"ws://a.tracker.test/x", "wss://a.b.tracker.test/"},
     {"ws://tracker.test/x", "ws://a.tracker.test"}},
    {"ws://h.test/?", {"ws://h.test/a", "ws://h.test/?", "ws://h.test//"}, {"ws://h.test/", "ws://h.test/ab"}},
    {"ws://H.test/*", {"ws://H.test/x"}, {"ws://h.test/x"}},
    // Sets.
    {"ws://h.test/[abc]", {"ws://h.test/a", "ws://h.test/c"}, {"ws://h.test/d", "ws://h.test/ab", "ws://h.test/[abc]"}},
    {"ws://h.test/[0-9]x", {"ws://h.test/0x", "ws://h.test/9x"}, {"ws://h.test/ax", "ws://h.test/-x"}},
    {"ws://h.test/[a-]", {"ws://h.test/a", "ws://h.test/-"}, {"ws://h.test/b"}},
    {"ws://h.test/[!a]", {"ws://h.test/b", "ws://h.test/!", "ws://h.test/^"}, {"ws://h.test/a", "ws://h.test/"}},
    {"ws://h.test/[^a]", {"ws://h.test/b", "ws://h.test/^"}, {"ws://h.test/a"}},
    {"ws://h.test/[]x]", {"ws://h.test/]", "ws://h.test/x"}, {"ws://h.test/y", "ws://h.test/]x]"}},
    {"ws://h.test/[!]x]", {"ws://h.test/y"}, {"ws://h.test/]", "ws://h.test/x"}},
    {"ws://h.test/[]-a]", {"ws://h.test/^", "ws://h.test/_"}, {"ws://h.test/b", "ws://h.test/\\"}},
    {"ws://h.test/[.^$|(]", {"ws://h.test/.", "ws://h.test/^", "ws://h.test/("}, {"ws://h.test/a"}},
    // A "[" that opens no set is itself.
    {"ws://h.test/[ab", {"ws://h.test/[ab"}, {"ws://h.test/a", "ws://h.test/b"}},
    {"ws://h.test/[!", {"ws://h.test/[!"}, {"ws://h.test/a"}},
    {"ws://h.test/[]", {"ws://h.test/[]"}, {"ws://h.test/a"}},
    {"ws://h.test/[!]", {"ws://h.test/[!]"}, {"ws://h.test/a"}},
    // Escapes.
    {"ws://h.test/\\*", {"ws://h.test/*"}, {"ws://h.test/x", "ws://h.test/\\x"}},
    {"ws://h.test/\\?\\[a]", {"ws://h.test/?[a]"}, {"ws://h.test/x[a]", "ws://h.test/?a"}},
    {"ws://h.test/\\a\\.", {"ws://h.test/a."}, {"ws://h.test/ax"}},
    // What regular expressions read otherwise, the glob takes as itself.
    {"ws://h.test/a.b", {"ws://h.test/a.b"}, {"ws://h.test/axb"}},
    {"ws://h.test/a+b", {"ws://h.test/a+b"}, {"ws://h.test/aab", "ws://h.test/ab"}},
    {"ws://h.test/(a|b)", {"ws://h.test/(a|b)"}, {"ws://h.test/a", "ws://h.test/b"}},
    {"^ws://h.test/$", {"^ws://h.test/$"}, {"ws://h.test/"}},
    {"ws://h.test/x{2}", {"ws://h.test/x{2}"}, {"ws://h.test/xx"}},
    {"", {""}, {"ws://h.test/"}},
};

void PrintTo(const GlobCase& c, std::ostream* out)
{
    *out << '"' << c.glob << '"';
}

class GlobRule : public ::testing::TestWithParam<GlobCase> {};

TEST_P(GlobRule, MatchesWhatFnmatchMatches)
{
    const GlobCase& c = GetParam();
    const std::string rule = RequestFilter::globToRule(c.glob);
    ASSERT_FALSE(rule.empty()) << c.glob;
    std::regex expression;
    ASSERT_NO_THROW(expression = std::regex(rule, std::regex::ECMAScript)) << rule;
    for (const auto* urls : {&c.refused, &c.allowed}) {
        const bool refused = urls == &c.refused;
        for (const std::string& url : *urls) {
            // The table is checked against the platform's own judgement too.
            EXPECT_EQ(fnmatch(c.glob, url.c_str(), 0) == 0, refused) << "fnmatch " << c.glob << " on " << url;
            EXPECT_EQ(std::regex_match(url, expression), refused) << rule << " on " << url;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Globs, GlobRule, ::testing::ValuesIn(GLOB_CASES));

// Where no rule matches exactly what fnmatch matches, there is none, and the caller refuses
// every WebSocket instead.
TEST(GlobRuleTest, NoExactRule)
{
    const char* const globs[] = {
        "ws://h.test/\xc3\xa9*",  // non-ASCII
        "ws://h.test/[\xc3\xa9]",  // non-ASCII in a set
        "ws://h.test/\\\xe9",  // non-ASCII escaped
        "ws://h.test/[[:digit:]]",  // a class
        "ws://h.test/[![:alpha:]x]",  // a class in a negated set
        "ws://h.test/[[.a.]]",  // a collating symbol
        "ws://h.test/[[=a=]]",  // an equivalence class
        "ws://h.test/[a\\]]",  // an escape in a set
        "ws://h.test/[z-a]",  // a backward range
        "ws://h.test/x\\",  // a trailing backslash
    };
    for (const char* glob : globs)
        EXPECT_EQ(RequestFilter::globToRule(glob), "") << glob;
}

}  // namespace
