#include <gtest/gtest.h>
#include <gmock/gmock.h>

#include "ExactBuffer.h"
#include "LogCapture.h"
#include "SectionBuilder.h"
#include "si/ApplicationDomain.h"

using namespace TesmoHbbTV;
using namespace tesmo_test;
using ::testing::ElementsAre;

namespace {

void parseBoundary(ApplicationDomain& domain, const Bytes& bytes)
{
    ExactBuffer buffer(bytes);
    domain.parseSimpleApplicationBoundaryExtensionDescriptor(SectionReader(buffer.get(), buffer.size));
}

TEST(ApplicationDomainTest, SeveralExtensionsWarnYetAllAreRead)
{
    LogCapture log;
    ApplicationDomain domain;
    parseBoundary(domain, boundaryDescriptor({"http://a.tv/x", "dvb://1.2.3/dir/page.html"}));
    EXPECT_THAT(domain.getBoundaries(), ElementsAre("http://a.tv", "dvb://1.2.3"));
    EXPECT_THAT(log.messages(), ElementsAre("  WARN [ApplicationDomain] Boundary extension descriptor contains more "
                                            "than one extension. We'll just read the first one."));
}

TEST(ApplicationDomainTest, ExtensionMayEndOneByteBeyondTheDescriptor)
{
    ApplicationDomain domain;
    Bytes bytes = boundaryDescriptor({"http://ab"});
    bytes[1] -= 1;  // the descriptor now ends before the last "b"
    parseBoundary(domain, bytes);
    EXPECT_THAT(domain.getBoundaries(), ElementsAre("http://ab"));

    ApplicationDomain shorter;
    bytes[1] -= 1;
    parseBoundary(shorter, bytes);
    EXPECT_TRUE(shorter.getBoundaries().empty());
}

TEST(ApplicationDomainTest, CountBeyondTheBytesStopsSilently)
{
    ApplicationDomain domain;
    Bytes bytes = boundaryDescriptor({"http://a"});
    bytes[2] = 200;
    parseBoundary(domain, bytes);
    EXPECT_THAT(domain.getBoundaries(), ElementsAre("http://a"));
}

TEST(ApplicationDomainTest, PathsAreRemovedAndDvbTextsWithoutSlashesKept)
{
    ApplicationDomain domain;
    EXPECT_TRUE(domain.addBoundaryExtension("dvb://1.2.3/dir/page.html"));
    EXPECT_TRUE(domain.addBoundaryExtension("dvb:/x"));
    EXPECT_TRUE(domain.addBoundaryExtension("http://tvapps:8080/app/x"));
    EXPECT_TRUE(domain.addBoundaryExtension("plain/text"));
    EXPECT_THAT(domain.getBoundaries(), ElementsAre("dvb://1.2.3", "dvb:/x", "http://tvapps:8080", "plain/text"));
}

TEST(ApplicationDomainTest, SameHostIsAddedOnlyOnceExceptNextToDvb)
{
    ApplicationDomain domain;
    EXPECT_TRUE(domain.addBoundaryExtension("http://tvapps/x"));
    EXPECT_FALSE(domain.addBoundaryExtension("http://tvapps/x"));
    EXPECT_FALSE(domain.addBoundaryExtension("https://tvapps:8443/"));

    ApplicationDomain besideDvb;
    EXPECT_TRUE(besideDvb.addBoundaryExtension("dvb://tvapps/"));
    EXPECT_TRUE(besideDvb.addBoundaryExtension("http://tvapps"));
}

TEST(ApplicationDomainTest, ExtendingLogsEachTryAndNeverWithItself)
{
    LogCapture log;
    ApplicationDomain own, other;
    own.addBoundaryExtension("http://a");
    other.addBoundaryExtension("http://a/p");
    other.addBoundaryExtension("http://b");
    EXPECT_FALSE(own.extendDomain(own));
    EXPECT_TRUE(log.lines.empty());
    EXPECT_TRUE(own.extendDomain(other));
    EXPECT_THAT(own.getBoundaries(), ElementsAre("http://a", "http://b"));
    EXPECT_THAT(log.messages(), ElementsAre(" DEBUG [      AppDom] Trying to extend with domain: http://a",
                                            " DEBUG [      AppDom] Trying to extend with domain: http://b",
                                            " DEBUG [      AppDom]   - Extended with domain: http://b"));
    EXPECT_FALSE(own.extendDomain(other));
}

TEST(ApplicationDomainTest, MembershipIsAPlainPrefixTest)
{
    ApplicationDomain domain;
    EXPECT_FALSE(domain.isWithinBoundaries("http://tvapps/"));
    domain.addBoundaryExtension("http://tvapps");
    EXPECT_TRUE(domain.isWithinBoundaries("http://tvapps/index.html"));
    EXPECT_TRUE(domain.isWithinBoundaries("http://tvappsx/page.html"));
    EXPECT_FALSE(domain.isWithinBoundaries("https://tvapps/"));
    EXPECT_FALSE(domain.isWithinBoundaries("HTTP://tvapps/"));
}

TEST(ApplicationDomainTest, HostNamesAndProtocols)
{
    EXPECT_EQ(ApplicationDomain::extractHostName("https://h.tv:8443/p"), "h.tv");
    EXPECT_EQ(ApplicationDomain::extractHostName("dvb://1.2.3"), "1.2.3");
    EXPECT_EQ(ApplicationDomain::extractHostName("host/path"), "host");
    EXPECT_EQ(ApplicationDomain::extractProtocol("x http://"), 1);
    EXPECT_EQ(ApplicationDomain::extractProtocol("https://a"), 2);
    EXPECT_EQ(ApplicationDomain::extractProtocol("dvb://a"), 3);
    EXPECT_EQ(ApplicationDomain::extractProtocol("ftp://a"), 0);
}

}  // namespace
