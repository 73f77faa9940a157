// Every parse and activation result of the golden corpus, compared with the committed text.
// A change here is deliberate only when tests/golden/update.sh rewrote the golden files and
// their diff was reviewed in the same commit.

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "GoldenCorpus.h"

namespace tesmo_test {
namespace {

std::string readGolden(const std::string& group)
{
    std::ifstream in(std::string(GOLDEN_DIR) + "/" + group + ".txt");
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// The first line where the two texts part, with the input it belongs to.
std::string firstDifference(const std::string& expected, const std::string& actual)
{
    std::istringstream a(expected), b(actual);
    std::string lineA, lineB, input;
    for (int number = 1;; ++number) {
        const bool moreA = bool(std::getline(a, lineA)), moreB = bool(std::getline(b, lineB));
        if (!moreA && !moreB)
            return "";
        if (lineA.rfind("== ", 0) == 0)
            input = lineA;
        if (!moreA || !moreB || lineA != lineB)
            return "line " + std::to_string(number) + " (" + input + ")\n  golden: " + (moreA ? lineA : "<end>") +
                   "\n  now:    " + (moreB ? lineB : "<end>");
    }
}

class GoldenTest : public ::testing::TestWithParam<std::string> {};

TEST_P(GoldenTest, ResultsMatchTheGoldenFile)
{
    const std::string actual = goldenText(GetParam());
    if (actual.empty())
        GTEST_SKIP() << "no data for group " << GetParam() << " here (../shared/data or the capture reader absent)";
    const std::string expected = readGolden(GetParam());
    EXPECT_TRUE(expected == actual) << "results differ from tests/golden/" << GetParam() << ".txt at "
                                    << firstDifference(expected, actual)
                                    << "\nIf the change is intended, run tests/golden/update.sh and review the diff.";
}

INSTANTIATE_TEST_SUITE_P(Groups, GoldenTest, ::testing::ValuesIn(GoldenCorpus::groups()),
                         [](const ::testing::TestParamInfo<std::string>& info) { return info.param; });

}  // namespace
}  // namespace tesmo_test
