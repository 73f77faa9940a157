#include <gtest/gtest.h>

#include "ExactBuffer.h"
#include "SectionBuilder.h"
#include "si/PMT.h"

using namespace TesmoHbbTV;
using namespace tesmo_test;

namespace {

Bytes streamId(uint8_t tag)
{
    return descriptor(0x52, {tag});
}
Bytes carouselId(uint32_t id)
{
    return descriptor(0x13, {uint8_t(id >> 24), uint8_t(id >> 16), uint8_t(id >> 8), uint8_t(id), 0});
}

std::unique_ptr<PMT> parse(const Bytes& section)
{
    ExactBuffer buffer(section);
    return std::make_unique<PMT>(buffer.get());
}

TEST(PMTTest, KeepsStreamsWithTheirCarouselDescriptors)
{
    auto pmt = parse(pmtSection(0x0D49, {{0x02, 0x100, streamId(1)},
                                         {0x0B, 0x200,
                                          concat({carouselId(0x11223344), descriptor(0x66, {1, 2, 3}), streamId(5),
                                                  descriptor(0x14, {0, 0}), descriptor(0x15, {})})},
                                         {0x05, 0x7D2, descriptor(0x6F, {0x00, 0x10, 0xE0})}}));
    ASSERT_EQ(pmt->getStreams().size(), 3u);
    const ElementaryStream* carousel = pmt->getElementaryStream(5);
    ASSERT_NE(carousel, nullptr);
    EXPECT_EQ(carousel->getStreamType(), 0x0B);
    EXPECT_EQ(carousel->getElementaryPID(), 0x200);
    ASSERT_NE(carousel->getCarouselIdentifierDescriptor(), nullptr);
    EXPECT_EQ(carousel->getCarouselIdentifierDescriptor()->carousel_id, 0x11223344u);
    EXPECT_NE(carousel->getAssociationTagDescriptor(), nullptr);
    EXPECT_NE(carousel->getDeferredAssociationTagsDescriptor(), nullptr);
    EXPECT_EQ(carousel->getApplicationSignallingDescriptor(), nullptr);

    const ElementaryStream* ait = pmt->getElementaryStreamByStreamType(0x05);
    ASSERT_NE(ait, nullptr);
    EXPECT_NE(ait->getApplicationSignallingDescriptor(), nullptr);
    EXPECT_EQ(ait->getStreamIdentifierDescriptor(), nullptr);
    EXPECT_EQ(pmt->getElementaryStream(9), nullptr);
    EXPECT_EQ(pmt->getElementaryStreamByStreamType(0x1B), nullptr);

    CarouselIdentifierDescriptor same(0x11223344);
    EXPECT_TRUE(same.equals(carousel->getCarouselIdentifierDescriptor()));
    EXPECT_FALSE(same.equals(nullptr));
}

TEST(PMTTest, SameComponentTagTwice)
{
    auto pmt = parse(pmtSection(1, {{0x0B, 0x300, streamId(7)}, {0x0B, 0x301, streamId(7)}}));
    EXPECT_EQ(pmt->getElementaryStream(7)->getElementaryPID(), 0x300);
    std::list<ElementaryStream*> found;
    EXPECT_TRUE(pmt->getElementaryStreams(7, found));
    ASSERT_EQ(found.size(), 2u);
    EXPECT_EQ(found.back()->getElementaryPID(), 0x301);

    std::list<ElementaryStream*> notEmpty{found.front()};
    EXPECT_TRUE(pmt->getElementaryStreams(9, notEmpty)) << "a list that held entries yields true";
    std::list<ElementaryStream*> empty;
    EXPECT_FALSE(pmt->getElementaryStreams(9, empty));
}

TEST(PMTTest, LaterDescriptorOfATagReplacesTheEarlier)
{
    auto pmt = parse(pmtSection(1, {{0x0B, 0x300, concat({streamId(1), streamId(2)})}}));
    EXPECT_EQ(pmt->getElementaryStream(1), nullptr);
    EXPECT_NE(pmt->getElementaryStream(2), nullptr);
}

TEST(PMTTest, NoRoomForStreamsGivesNoStreams)
{
    auto pmt = parse(pmtSection(1, {}, Bytes(6, 0xFF)));
    EXPECT_TRUE(pmt->getStreams().empty());
    EXPECT_EQ(pmt->getElementaryStream(0), nullptr);
    EXPECT_EQ(pmt->getElementaryStreamByStreamType(2), nullptr);
}

TEST(PMTTest, ProgramInfoLengthIsReadAsTenBits)
{
    Bytes section = pmtSection(1, {{0x0B, 0x300, streamId(3)}});
    section[10] = 0xFC;  // the two bits above the ten are set and ignored
    EXPECT_EQ(parse(section)->getElementaryStream(3)->getElementaryPID(), 0x300);

    Bytes huge = pmtSection(1, {{0x0B, 0x300, streamId(3)}});
    huge[10] = 0xF3;
    huge[11] = 0xFF;  // 0x3FF, not 0xFFF: beyond the section either way
    EXPECT_TRUE(parse(huge)->getStreams().empty());
}

TEST(PMTTest, DescriptorsCutByTheSectionEndAreNotKept)
{
    Bytes section = pmtSection(1, {{0x0B, 0x300, concat({streamId(3), carouselId(5)})}});
    section.resize(section.size() - 7);  // into the carousel identifier
    setSectionLength(section);
    auto pmt = parse(section);
    ASSERT_EQ(pmt->getStreams().size(), 1u);
    EXPECT_NE(pmt->getElementaryStream(3), nullptr);
    EXPECT_EQ(pmt->getStreams()[0]->getCarouselIdentifierDescriptor(), nullptr);
}

}  // namespace
