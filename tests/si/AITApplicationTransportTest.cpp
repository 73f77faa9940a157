#include <gtest/gtest.h>

#include "ExactBuffer.h"
#include "SectionBuilder.h"
#include "si/AIT.h"
#include "si/HbbTVURL.h"

using namespace TesmoHbbTV;
using namespace tesmo_test;

namespace {

ref_ptr<AITApplicationTransport> transportFrom(const Bytes& descriptorBytes)
{
    ExactBuffer buffer(descriptorBytes);
    return AITApplicationTransport::create(SectionReader(buffer.get(), buffer.size));
}

// An entry with the given transports, listed in that order by its application descriptor.
ref_ptr<AIT> tableWithTransports(const std::vector<Bytes>& transports, const std::string& location = "i.html")
{
    ApplicationDescriptorFields fields;
    fields.labels.clear();
    App app(1, 1);
    for (const Bytes& t : transports) {
        fields.labels.push_back(t[4]);
        app.with(t);
    }
    app.with(applicationDescriptor(fields)).with(locationDescriptor(location));
    ref_ptr<AIT> ait(new AIT(0x1, 0x2, 0xa, nullptr));
    ExactBuffer section(AITSection().application(app).bytes());
    ait->parse(section.get());
    return ait;
}

TEST(AITApplicationTransportTest, CarouselUrlIsBuiltFromLowerCaseHexIdentifiers)
{
    auto remote = transportFrom(remoteCarouselTransport(4, 0x1, 0x2, 0xa, 0xb));
    EXPECT_EQ(remote->getProtocolId(), AITApplicationTransport::OBJECT_CAROUSEL);
    EXPECT_TRUE(remote->isRemoteConnection());
    EXPECT_EQ(remote->getLabel(), 4);
    EXPECT_EQ(remote->getURL("index.html"), "dvb://1.2.a.b/index.html");
    EXPECT_EQ(remote->getHostname(), "1.2.a.b");

    auto local = transportFrom(carouselTransport(2, 0x2A));
    EXPECT_FALSE(local->isRemoteConnection());
    EXPECT_EQ(local->getURL("x"), "dvb://0.0.0.2a/x") << "the table fills the service in";
}

TEST(AITApplicationTransportTest, HttpUrlIsBasePlusLocation)
{
    auto http = transportFrom(httpTransport(1, "http://tv/app/"));
    EXPECT_EQ(http->getURL("index.html"), "http://tv/app/index.html");
    EXPECT_EQ(http->getHostname(), "");

    Bytes overlong = httpTransport(1, "http://tv/");
    overlong[5] = 40;  // URL_base_length beyond the descriptor
    auto empty = transportFrom(overlong);
    EXPECT_EQ(empty->getProtocolId(), AITApplicationTransport::HTTP);
    EXPECT_EQ(empty->getURL("index.html"), "index.html");
}

TEST(AITApplicationTransportTest, UnknownProtocolKeepsOnlyItsLabel)
{
    auto other = transportFrom(descriptor(0x02, {0x00, 0x04, 9, 1, 2, 3}));
    EXPECT_EQ(other->getProtocolId(), AITApplicationTransport::PROTOCOL_UNKNOWN);
    EXPECT_EQ(other->getLabel(), 9);
    EXPECT_EQ(other->getURL("x"), "");
}

TEST(AITApplicationTransportTest, CarouselSelectorBeyondTheBytesKeepsDefaults)
{
    auto cut = transportFrom(Bytes{0x02, 0x05, 0x00, 0x01, 0x07, 0x80, 0x00});  // remote, ids cut short
    EXPECT_EQ(cut->getLabel(), 7);
    EXPECT_TRUE(cut->isRemoteConnection());
    EXPECT_EQ(cut->getOriginalNetworkId(), 0);
    EXPECT_EQ(cut->getComponentTag(), 0);
}

TEST(AITApplicationTransportTest, BroadbandAvailabilitySelectsTransports)
{
    ref_ptr<AIT> ait = tableWithTransports({httpTransport(1, "http://tv/"), carouselTransport(2, 5)});
    const AITApplication& app = *ait->getAITApplication(0u);
    AITApplicationTransport* http = app.getTransports()[0];
    AITApplicationTransport* carousel = app.getTransports()[1];
    EXPECT_EQ(app.getFirstAvailableTransport(true), http);
    EXPECT_EQ(app.getFirstAvailableTransport(false), carousel);
    EXPECT_EQ(app.getNextAvailableTransport(http, true), carousel);
    EXPECT_EQ(app.getNextAvailableTransport(carousel, true), nullptr);
    AITApplicationTransport stranger;
    EXPECT_EQ(app.getNextAvailableTransport(&stranger, true), nullptr);

    ref_ptr<AIT> httpOnly = tableWithTransports({httpTransport(1, "http://tv/")});
    EXPECT_EQ(httpOnly->getAITApplication(0u)->getFirstAvailableTransport(false), nullptr);
    ref_ptr<AIT> carouselFirst = tableWithTransports({carouselTransport(2, 5), httpTransport(1, "http://tv/")});
    const AITApplication& c = *carouselFirst->getAITApplication(0u);
    EXPECT_EQ(c.getNextAvailableTransport(c.getTransports()[0], false), nullptr) << "HTTP is skipped";
}

TEST(AITApplicationTransportTest, ProtocolQueriesAndUrlMatching)
{
    ref_ptr<AIT> ait = tableWithTransports(
        {descriptor(0x02, {0x00, 0x09, 7}), httpTransport(1, "http://tv/"), carouselTransport(2, 5)});
    const AITApplication& app = *ait->getAITApplication(0u);
    AITApplicationTransport::ProtocolId preferred = AITApplicationTransport::PROTOCOL_UNKNOWN;
    EXPECT_TRUE(app.getPreferredTransportProtocol(preferred));
    EXPECT_EQ(preferred, AITApplicationTransport::HTTP) << "the unknown protocol is passed over";
    EXPECT_FALSE(app.isPreferredTransportProtocol(AITApplicationTransport::HTTP)) << "only the first counts";
    EXPECT_TRUE(app.isTransportedOverProtocol(AITApplicationTransport::OBJECT_CAROUSEL));
    EXPECT_EQ(app.getTransportMatchingURL(HbbTVURL("dvb://1.2.a.5/i.html?x=1#top")), app.getTransports()[2].get());
    EXPECT_EQ(app.getTransportMatchingURL(HbbTVURL("http://tv/other.html")), nullptr);
}

TEST(AITApplicationTransportTest, XmlRecordsOfOtherProtocolsAreRefused)
{
    EXPECT_EQ(AITApplicationTransport::create(DAXO_AITApplicationTransport{1, nullptr, 0, 1, 2, 3, 4}), nullptr);
    ref_ptr<AITApplicationTransport> transport =
        AITApplicationTransport::create(DAXO_AITApplicationTransport{3, nullptr, 0, 1, 2, 3, 4});
    ASSERT_NE(transport, nullptr);
    EXPECT_EQ(transport->getURL("a.html"), "a.html");
    EXPECT_EQ(transport->getServiceId(), 3);
}

}  // namespace
