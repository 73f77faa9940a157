// Broadcast bytes are untrusted: every parser is driven here with truncated and corrupted
// sections, each in a heap block of exactly its claimed size, so that AddressSanitizer
// reports any read beyond the bytes handed over.

#include <gtest/gtest.h>

#include <random>

#include "ExactBuffer.h"
#include "SectionBuilder.h"
#include "SharedData.h"
#include "si/AIT.h"
#include "si/PMT.h"

using namespace TesmoHbbTV;
using namespace tesmo_test;

namespace {

Bytes richAitSection()
{
    Recording recording;
    recording.flags = 0x60;
    recording.labels = {"rec"};
    recording.componentTags = {1, 2};
    ApplicationDescriptorFields fields;
    fields.labels = {1, 2, 3};
    fields.profiles = {{0x0001, 1, 2, 1}, {0x0002, 1, 1, 1}};
    return AITSection()
        .common(httpTransport(3, "http://common/"))
        .common(carouselTransport(4, 9))
        .application(App(0x141, 0x4001)
                         .with(applicationDescriptor(fields))
                         .with(nameDescriptor("Name"))
                         .with(httpTransport(1, "http://tv/"))
                         .with(remoteCarouselTransport(2, 1, 2, 3, 4))
                         .with(recordingDescriptor(recording))
                         .with(locationDescriptor("index.html"))
                         .with(usageDescriptor(1))
                         .with(boundaryDescriptor({"http://a/", "dvb://1.2.3/"})))
        .bytes();
}

Bytes richPmtSection()
{
    return pmtSection(1,
                      {{0x05, 0x100, descriptor(0x6F, {0x00, 0x10, 0xE0})},
                       {0x0B, 0x200, concat({descriptor(0x52, {5}), descriptor(0x13, {0, 0, 0, 1, 0})})}},
                      Bytes{0x09, 0x04, 0x01, 0x02, 0x03, 0x04});
}

// The first n bytes, with section_length rewritten to cover exactly them.
Bytes truncated(const Bytes& section, size_t n)
{
    Bytes cut(section.begin(), section.begin() + n);
    setSectionLength(cut);
    return cut;
}

void parseAit(const Bytes& section)
{
    ref_ptr<AIT> ait(new AIT(1, 2, 3, nullptr));
    ExactBuffer buffer(section);
    ait->parse(buffer.get());
    for (unsigned i = 0; i < ait->getNumApplications(); ++i)
        for (const auto& t : ait->getAITApplication(i)->getTransports())
            t->getURL(ait->getAITApplication(i)->getApplicationLocation());
}

void parsePmt(const Bytes& section)
{
    ExactBuffer buffer(section);
    PMT pmt(buffer.get());
    pmt.getElementaryStream(5);
}

std::vector<Bytes> corpus()
{
    std::vector<Bytes> sections{richAitSection()};
    if (!sharedDataDir().empty())
        for (const char* name : {"ait_typical.bin", "ait_no_url_base.bin", "ait_no_url_path.bin"})
            sections.push_back(readFileBytes(sharedDataDir() + "/sections/" + name));
    return sections;
}

TEST(SectionRobustnessTest, EveryTruncationOfAnAitSectionStaysInsideItsBytes)
{
    for (const Bytes& section : corpus())
        for (size_t n = 3; n <= section.size(); ++n)
            parseAit(truncated(section, n));
}

TEST(SectionRobustnessTest, EveryTruncationOfAPmtSectionStaysInsideItsBytes)
{
    const Bytes section = richPmtSection();
    for (size_t n = 3; n <= section.size(); ++n)
        parsePmt(truncated(section, n));
}

TEST(SectionRobustnessTest, CorruptedBytesNeverLeadOutsideTheSection)
{
    std::mt19937 random(20261121);
    std::vector<Bytes> sections = corpus();
    sections.push_back(richPmtSection());
    for (const Bytes& original : sections) {
        for (int round = 0; round < 2000; ++round) {
            Bytes section = original;
            const int flips = 1 + int(random() % 4);
            for (int i = 0; i < flips; ++i)
                section[3 + random() % (section.size() - 3)] = uint8_t(random());
            parseAit(section);
            parsePmt(section);
        }
    }
}

}  // namespace
