#include <gtest/gtest.h>

#include <cstring>

#include "FakeWorld.h"
#include "si/HbbTVCurrentAITDVBURL.h"
#include "si/HbbTVDVBURL.h"
#include "si/HbbTVURL.h"
#include "si/SiText.h"

using namespace TesmoHbbTV;
using tesmo_test::FakeWorld;

namespace {

TEST(HbbTVURLTest, SplitsBaseParametersAndAnchor)
{
    HbbTVURL url("http://tvapps/app/index.html?a=1#x");
    EXPECT_EQ(url.getBaseUrl(), "http://tvapps/app/index.html");
    EXPECT_EQ(url.getParameters(), "a=1");
    EXPECT_EQ(url.getAnchor(), "x");
    EXPECT_EQ(url.getType(), HbbTVURL::URL_TYPE_OTHER);
    EXPECT_EQ(url.getHostName(), "tvapps");
    EXPECT_EQ(url.getFullUrl(), "http://tvapps/app/index.html?a=1#x");
}

TEST(HbbTVURLTest, AnchorBeforeQuestionMarkLetsParametersRunToTheEnd)
{
    HbbTVURL url("a#b?c");
    EXPECT_EQ(url.getBaseUrl(), "a#b");
    EXPECT_EQ(url.getParameters(), "c");
    EXPECT_EQ(url.getAnchor(), "b?c");
}

TEST(HbbTVURLTest, TypesAndHostNames)
{
    EXPECT_EQ(HbbTVURL("dvb://1.2.3.4/x").getType(), HbbTVURL::URL_TYPE_DVB);
    EXPECT_EQ(HbbTVURL("dvb://current.ait/1.2").getType(), HbbTVURL::URL_TYPE_DVB_CURRENT_AIT);
    EXPECT_EQ(HbbTVURL("DVB://x").getType(), HbbTVURL::URL_TYPE_OTHER);
    EXPECT_EQ(HbbTVDVBURL("index.html").getType(), HbbTVURL::URL_TYPE_DVB);
    EXPECT_EQ(HbbTVURL("https://tvapps:8080/a").getHostName(), "tvapps:8080");
    EXPECT_EQ(HbbTVURL("dvb://1.2.3.4").getHostName(), "1.2.3.4");
    EXPECT_EQ(HbbTVURL("relative/page").getHostName(), "relative");
    EXPECT_TRUE(HbbTVURL("?only=params").empty());
}

TEST(HbbTVURLTest, ParametersAndAnchorsAreAdded)
{
    HbbTVURL url("http://tv/p?a=1");
    url.addParameters("b=2");
    EXPECT_EQ(url.getParameters(), "a=1&b=2");
    HbbTVURL bare("http://tv/p");
    bare.addParameters("b=2");
    bare.addParameters("");
    EXPECT_EQ(bare.getParameters(), "b=2");

    HbbTVURL anchored("http://tv/p#x");
    anchored.addAnchor("y", false);
    EXPECT_EQ(anchored.getAnchor(), "x");
    anchored.addAnchor("y", true);
    EXPECT_EQ(anchored.getAnchor(), "y");
    anchored.addAnchor("", true);
    EXPECT_EQ(anchored.getAnchor(), "y");

    HbbTVURL anchorOnly("http://tv/p#x");
    EXPECT_EQ(anchorOnly.getFullUrl(), "http://tv/p#x");
}

TEST(HbbTVURLTest, MatchingComparesBaseUrlsOnly)
{
    HbbTVURL url("http://tvapps/p#frag");
    EXPECT_TRUE(url.matches("http://tvapps/p?z"));
    EXPECT_FALSE(url.matches("http://tvapps/p/"));
}

TEST(HbbTVURLTest, DvbRelativeUrlsResolveAgainstTheBaseDirectory)
{
    HbbTVDVBURL page("dvb:/page.html?x=1");
    EXPECT_TRUE(page.resolveRelativeUrl(HbbTVURL("dvb://1.2.3.4/dir/index.html")));
    EXPECT_EQ(page.getFullUrl(), "dvb://1.2.3.4/dir/page.html?x=1");

    HbbTVDVBURL absolute("dvb://5.6.7.8/a.html");
    EXPECT_TRUE(absolute.resolveRelativeUrl(HbbTVURL("dvb://1.2.3.4/dir/index.html")));
    EXPECT_EQ(absolute.getBaseUrl(), "dvb://5.6.7.8/a.html");
}

TEST(HbbTVURLTest, OtherRelativeUrlsAreResolvedByTheBrowserCore)
{
    FakeWorld& world = FakeWorld::get();
    world.reset();
    static char resolved[] = "http://tv/dir/next.html";
    world.resolveRelativeUrl = [](const char*, const char*, char** result) {
        *result = resolved;
        return 0;
    };
    HbbTVURL next("next.html#top");
    EXPECT_TRUE(next.resolveRelativeUrl(HbbTVURL("http://tv/dir/index.html?q")));
    EXPECT_EQ(next.getFullUrl(), "http://tv/dir/next.html#top");
    EXPECT_EQ(world.callsTo("tm_resolve_relative_url")[0].args,
              (std::vector<std::string>{"http://tv/dir/index.html", "next.html"}));

    world.resolveRelativeUrl = [](const char*, const char*, char**) { return 0; };
    HbbTVURL unchanged("same.html");
    EXPECT_TRUE(unchanged.resolveRelativeUrl(HbbTVURL("http://tv/")));
    EXPECT_EQ(unchanged.getBaseUrl(), "same.html");

    world.resolveRelativeUrl = [](const char*, const char*, char**) { return -1; };
    HbbTVURL failing("x.html");
    EXPECT_FALSE(failing.resolveRelativeUrl(HbbTVURL("http://tv/")));
    EXPECT_EQ(failing.getBaseUrl(), "x.html");
    world.reset();
}

TEST(HbbTVCurrentAITDVBURLTest, NamesAnApplicationByHexadecimalIdentifiers)
{
    HbbTVCurrentAITDVBURL valid("dvb://current.ait/1a.2");
    EXPECT_TRUE(valid.isValid());
    EXPECT_EQ(valid.getOrgId(), 0x1au);
    EXPECT_EQ(valid.getAppId(), 2u);
    EXPECT_EQ(valid.getType(), HbbTVURL::URL_TYPE_DVB_CURRENT_AIT);

    // Wider than 32 bits: the largest value, on 32- and 64-bit builds alike.
    HbbTVCurrentAITDVBURL wide("dvb://current.ait/1234567890.1ffffffff");
    EXPECT_EQ(wide.getOrgId(), 0xFFFFFFFFu);
    EXPECT_EQ(wide.getAppId(), 0xFFFFFFFFu);

    for (const char* invalid : {"dvb://current.ait/1a.2/index.html", "dvb://current.ait/1a", "dvb://current.ait/.2",
                                "dvb://current.ait/0x1.2", "http://x/1.2"}) {
        HbbTVCurrentAITDVBURL url(invalid);
        EXPECT_FALSE(url.isValid()) << invalid;
        EXPECT_EQ(url.getOrgId(), 0u);
        EXPECT_EQ(url.getType(), HbbTVURL::URL_TYPE_DVB_CURRENT_AIT);
    }
}

TEST(SiTextTest, HexadecimalNumberStrings)
{
    EXPECT_FALSE(isHexadecimalNumberString(""));
    EXPECT_TRUE(isHexadecimalNumberString("0aF9"));
    EXPECT_FALSE(isHexadecimalNumberString("0x1"));
    EXPECT_FALSE(isHexadecimalNumberString("-1"));
}

TEST(SiTextTest, MicrosecondsCarryIntoSeconds)
{
    timeval tv{5, 999999};
    usec_increase(tv, 2);
    EXPECT_EQ(tv.tv_sec, 6);
    EXPECT_EQ(tv.tv_usec, 1);
    timeval back{5, 10};
    usec_increase(back, -20);
    EXPECT_EQ(back.tv_sec, 5);
    EXPECT_EQ(back.tv_usec, -10) << "signed division leaves the microseconds negative";
}

}  // namespace
