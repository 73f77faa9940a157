#include <gtest/gtest.h>

#include "UrlResolver.h"

namespace {

// The normal and abnormal examples of RFC 3986, section 5.4.
TEST(UrlResolverTest, Rfc3986Examples)
{
    const std::string base = "http://a/b/c/d;p?q";
    const std::pair<const char*, const char*> cases[] = {
        {"g:h", "g:h"},           {"g", "http://a/b/c/g"},        {"./g", "http://a/b/c/g"},
        {"g/", "http://a/b/c/g/"}, {"/g", "http://a/g"},           {"//g", "http://g"},
        {"?y", "http://a/b/c/d;p?y"}, {"g?y", "http://a/b/c/g?y"}, {"#s", "http://a/b/c/d;p?q#s"},
        {"g#s", "http://a/b/c/g#s"}, {";x", "http://a/b/c/;x"},    {"", "http://a/b/c/d;p?q"},
        {".", "http://a/b/c/"},   {"./", "http://a/b/c/"},        {"..", "http://a/b/"},
        {"../g", "http://a/b/g"}, {"../..", "http://a/"},         {"../../g", "http://a/g"},
        {"../../../g", "http://a/g"}, {"/./g", "http://a/g"},     {"/../g", "http://a/g"},
        {"g.", "http://a/b/c/g."}, {"..g", "http://a/b/c/..g"},   {"./../g", "http://a/b/g"},
        {"g/./h", "http://a/b/c/g/h"}, {"g/../h", "http://a/b/c/h"}, {"g;x=1/../y", "http://a/b/c/y"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(resolveUrl(base, c.first), c.second) << c.first;
}

TEST(UrlResolverTest, CarouselPagesResolveInsideTheirCarousel)
{
    EXPECT_EQ(resolveUrl("dvb://1.2.3.5/app/index.html", "img/logo.png"), "dvb://1.2.3.5/app/img/logo.png");
    EXPECT_EQ(resolveUrl("http://tv/", "http://other/x"), "http://other/x");
}

} // namespace
