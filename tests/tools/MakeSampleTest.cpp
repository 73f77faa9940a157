// make-sample's audio languages, subtitles, programmes and network, read back as a receiver
// reads them: the PMT with libdvbpsi's decoders, the NIT and EIT through the platform.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

extern "C" {
#include <dvbpsi/dvbpsi.h>
#include <dvbpsi/psi.h>
#include <dvbpsi/descriptor.h>
#include <dvbpsi/pmt.h>
#include <dvbpsi/dr_0a.h>
#include <dvbpsi/dr_52.h>
#include <dvbpsi/dr_59.h>
}

#include "ProgrammeGuide.h"
#include "SampleDescription.h"
#include "TransportStream.h"
#include "TsSections.h"

using ::testing::ElementsAre;
using ::testing::HasSubstr;

namespace {

const char* const SERVICE = "transport_stream 0x0001 network 0x0001\n"
                            "service 0x0001 \"Sample TV\" provider \"Sample Broadcaster\" pmt 0x0100 ait 0x0101\n"
                            "ait version 1\nsection\n"
                            "  application 0x10 0x0001 AUTOSTART priority 5 profile 0x0000 1.1.1\n"
                            "    transport 1 http http://sample.example/\n";

// The same service with an object carousel stream (of no files) of component tag 1.
std::string withCarousel()
{
    std::string service = SERVICE;
    return service.replace(service.find("ait 0x0101"), 10, "ait 0x0101 carousel 0x0102") + "carousel_tag 1\n";
}

// A directory of its own for a test's files, removed with it.
class Scratch {
public:
    Scratch()
    {
        char pattern[] = "/tmp/make-sample-test-XXXXXX";
        dir = mkdtemp(pattern);
    }
    ~Scratch() { std::system(("rm -rf " + dir).c_str()); }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    std::string path(const std::string& name) const { return dir + "/" + name; }
    // make-sample on a description: its exit status, and what it said.
    int makeSample(const std::string& description, std::string& said) const
    {
        std::ofstream(path("sample.desc")) << description;
        const int status = std::system(
            (MAKE_SAMPLE " " + path("sample.desc") + " " + path("sample.ts") + " 2>" + path("said")).c_str());
        std::ifstream in(path("said"));
        said.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    std::string dir;
};

// Video and two audio streams in German and English, as GStreamer's muxer writes them.
bool makeTwoLanguages(const std::string& file)
{
    auto audio = [](const char* language, int frequency) {
        return std::string(" audiotestsrc num-buffers=43 freq=") + std::to_string(frequency) +
               " ! audioconvert ! audio/x-raw,rate=44100,channels=1 ! taginject tags=\"language-code=" + language +
               "\" ! avenc_aac ! aacparse ! queue ! mux.";
    };
    const std::string command = "gst-launch-1.0 -q -e videotestsrc num-buffers=25"
                                " ! video/x-raw,width=160,height=90,framerate=25/1,format=I420"
                                " ! x264enc bitrate=100 speed-preset=ultrafast key-int-max=25 ! h264parse ! queue"
                                " ! mpegtsmux name=mux ! filesink location=" +
                                file + audio("deu", 440) + audio("eng", 880) + " > /dev/null 2>&1";
    return std::system(command.c_str()) == 0;
}

// A PMT stream as libdvbpsi's decoders read it.
struct ReadStream {
    uint8_t type;
    uint16_t pid;
    int componentTag = -1;
    std::string language{};  // of its ISO 639 language descriptor
    std::string subtitlesLanguage{};
    int subtitlingType = -1;
    int compositionPage = -1, ancillaryPage = -1;
};

ReadStream readStream(dvbpsi_pmt_es_t& es)
{
    ReadStream stream{es.i_type, es.i_pid};
    for (dvbpsi_descriptor_t* d = es.p_first_descriptor; d; d = d->p_next) {
        if (const dvbpsi_stream_identifier_dr_t* id = d->i_tag == 0x52 ? dvbpsi_DecodeStreamIdentifierDr(d) : nullptr)
            stream.componentTag = id->i_component_tag;
        if (const dvbpsi_iso639_dr_t* language = d->i_tag == 0x0A ? dvbpsi_DecodeISO639Dr(d) : nullptr)
            stream.language.assign(reinterpret_cast<const char*>(language->code[0].iso_639_code), 3);
        if (const dvbpsi_subtitling_dr_t* subtitling = d->i_tag == 0x59 ? dvbpsi_DecodeSubtitlingDr(d) : nullptr) {
            const dvbpsi_subtitle_t& s = subtitling->p_subtitle[0];
            stream.subtitlesLanguage.assign(reinterpret_cast<const char*>(s.i_iso6392_language_code), 3);
            stream.subtitlingType = s.i_subtitling_type;
            stream.compositionPage = s.i_composition_page_id;
            stream.ancillaryPage = s.i_ancillary_page_id;
        }
    }
    return stream;
}

// The streams of a service's first PMT in a capture.
std::vector<ReadStream> pmtStreams(const std::string& path, uint16_t pmtPid, uint16_t program)
{
    std::vector<ReadStream> streams;
    dvbpsi_t* handle = dvbpsi_new(nullptr, DVBPSI_MSG_NONE);
    dvbpsi_pmt_attach(
        handle, program,
        [](void* out, dvbpsi_pmt_t* pmt) {
            auto& read = *static_cast<std::vector<ReadStream>*>(out);
            for (dvbpsi_pmt_es_t* es = read.empty() ? pmt->p_first_es : nullptr; es; es = es->p_next)
                read.push_back(readStream(*es));
            dvbpsi_pmt_delete(pmt);
        },
        &streams);
    std::ifstream in(path, std::ios::binary);
    uint8_t packet[188];
    while (streams.empty() && in.read(reinterpret_cast<char*>(packet), sizeof packet))
        if (((packet[1] & 0x1F) << 8 | packet[2]) == pmtPid)
            dvbpsi_packet_push(handle, packet);
    dvbpsi_pmt_detach(handle);
    dvbpsi_delete(handle);
    return streams;
}

// The payloads of the packets on a PID that start a PES packet.
std::vector<std::string> pesStarts(const std::string& path, uint16_t pid)
{
    std::vector<std::string> starts;
    std::ifstream in(path, std::ios::binary);
    char packet[188];
    while (in.read(packet, sizeof packet)) {
        const auto* p = reinterpret_cast<const uint8_t*>(packet);
        if (((p[1] & 0x1F) << 8 | p[2]) != pid || !(p[1] & 0x40))
            continue;
        const size_t payload = 4 + ((p[3] & 0x20) ? 1 + p[4] : 0);
        starts.emplace_back(packet + payload, sizeof packet - payload);
    }
    return starts;
}

TEST(MakeSampleTest, AvStreamsKeepTheirLanguagesBesideSubtitles)
{
    if (std::system("command -v gst-launch-1.0 > /dev/null 2>&1") != 0)
        GTEST_SKIP() << "gst-launch-1.0 is not installed";
    Scratch scratch;
    ASSERT_TRUE(makeTwoLanguages(scratch.path("source.ts")));
    std::string said;
    ASSERT_EQ(scratch.makeSample(withCarousel() +
                                     "av source.ts 0x0110 tags 0x21\n"
                                     "subtitles 0x0120 deu tag 0x30\nsubtitles 0x0121 deu hard-of-hearing\n",
                                 said),
              0)
        << said;
    const std::vector<ReadStream> streams = pmtStreams(scratch.path("sample.ts"), 0x0100, 0x0001);
    ASSERT_EQ(streams.size(), 7u);
    EXPECT_EQ(streams[0].type, 0x1B);
    EXPECT_EQ(streams[0].pid, 0x0110);
    EXPECT_EQ(streams[0].componentTag, 0x21) << "as the av line gives it";
    EXPECT_EQ(streams[0].language, "");
    std::vector<std::string> languages;
    for (size_t i = 1; i <= 2; ++i) {
        EXPECT_EQ(streams[i].type, 0x0F);
        EXPECT_EQ(streams[i].pid, 0x0110 + i);
        languages.push_back(streams[i].language);
    }
    EXPECT_EQ(streams[1].componentTag, 0x02) << "the first tag the carousel leaves free";
    EXPECT_EQ(streams[2].componentTag, 0x03);
    std::sort(languages.begin(), languages.end());
    EXPECT_THAT(languages, ElementsAre("eng", "ger")) << "the muxer writes German's bibliographic code";

    const struct {
        uint16_t pid;
        int tag;
        int type;
    } subtitles[] = {{0x0120, 0x30, 0x10}, {0x0121, 0x04, 0x20}};
    for (size_t i = 0; i < 2; ++i) {
        const ReadStream& s = streams[3 + i];
        EXPECT_EQ(s.type, 0x06);
        EXPECT_EQ(s.pid, subtitles[i].pid);
        EXPECT_EQ(s.componentTag, subtitles[i].tag);
        EXPECT_EQ(s.subtitlesLanguage, "deu");
        EXPECT_EQ(s.subtitlingType, subtitles[i].type);
        EXPECT_EQ(s.compositionPage, 1);
        EXPECT_EQ(s.ancillaryPage, 1);
        const std::vector<std::string> pes = pesStarts(scratch.path("sample.ts"), s.pid);
        ASSERT_EQ(pes.size(), 1u) << "a display set a round";
        EXPECT_EQ(pes[0].substr(0, 4), std::string("\x00\x00\x01\xBD", 4)) << "private_stream_1";
        EXPECT_EQ(uint8_t(pes[0][7]) & 0x80, 0x80) << "with a PTS";
        EXPECT_EQ(pes[0].substr(14, 6), std::string("\x20\x00\x0F\x10\x00\x01", 6))
            << "DVB subtitles: a page composition of page 1";
    }
    EXPECT_EQ(streams[5].type, 0x05);
    EXPECT_EQ(streams[6].type, 0x0B);
    EXPECT_EQ(streams[6].componentTag, 0x01);

    EXPECT_NE(scratch.makeSample(std::string(SERVICE) + "av source.ts 0x0110 tags 1,2,3,4\n", said), 0);
    EXPECT_THAT(said, HasSubstr("its av line gives 4 component tags to 3 streams"));
}

TEST(MakeSampleTest, ProgrammesAndNetworkReadBackThroughThePlatform)
{
    Scratch scratch;
    std::string said;
    ASSERT_EQ(scratch.makeSample(std::string(SERVICE) +
                                     "network 0x3001 \"R\xC3\xA9seau d'essai\"\n"
                                     "programmes version 4\n"
                                     "programme present 0x0101 2026-11-25T20:00:00Z 00:15:00 \"Nachrichten\" "
                                     "\"Der Tag \xE2\x80\x93 kurz\" language deu rating DEU 12 rating AUT 10 "
                                     "component 0x05 0x03 0x21 deu \"Video\"\n"
                                     "programme following 0x0102 2026-11-25T20:15:00Z 01:30:00 \"Film\" \"\"\n"
                                     "programmes version 5 at 50%\n"
                                     "programme following 0x0102 2026-11-25T20:15:00Z 01:30:00 \"Film\" \"\"\n"
                                     "service 0x0002 \"Sample News\" provider \"Sample Broadcaster\" pmt 0x0200 "
                                     "ait 0x0201\nsection\nrepeat 4\n",
                                 said),
              0)
        << said;
    const std::string ts = scratch.path("sample.ts");
    TransportStream stream;
    std::string error;
    ASSERT_TRUE(stream.open(ts, error)) << error;
    EXPECT_EQ(stream.networkId(), 0x3001);
    EXPECT_EQ(stream.networkName(), "R\xC3\xA9seau d'essai");
    EXPECT_EQ(stream.programs().size(), 2u);

    const std::vector<tesmo_test::Bytes> sdt = tesmo_test::sectionsOnPid(ts, 0x0011);
    ASSERT_FALSE(sdt.empty());
    EXPECT_EQ(sdt[0][11 + 2], 0xFD) << "service 1 has a present/following";
    EXPECT_EQ(sdt[0][11 + 5 + sdt[0][11 + 4] + 2], 0xFC) << "service 2 has none";

    std::vector<int> versionsOnAir, versionsTaken;
    ProgrammeGuide first(0x0001), second(0x0002);
    for (const TimedSection& section : stream.sectionsOnPid(0x0012)) {
        versionsOnAir.push_back(section.bytes[5] >> 1 & 0x1F);
        if (first.add(section.bytes))
            versionsTaken.push_back(first.current().version);
        EXPECT_FALSE(second.add(section.bytes));
    }
    EXPECT_THAT(versionsOnAir, ElementsAre(4, 4, 4, 4, 5, 5, 5, 5)) << "from the third of four rounds on";
    EXPECT_THAT(versionsTaken, ElementsAre(4, 5));
    const PresentFollowing& programmes = first.current();
    EXPECT_FALSE(programmes.present);
    ASSERT_TRUE(programmes.following);
    EXPECT_EQ(programmes.following->name, "Film");
    EXPECT_EQ(programmes.following->duration, 5400u);

    ProgrammeGuide atStart(0x0001);
    const std::vector<TimedSection> sections = stream.sectionsOnPid(0x0012);
    atStart.add(sections[0].bytes);
    ASSERT_TRUE(atStart.add(sections[1].bytes));
    ASSERT_TRUE(atStart.current().present);
    const Programme& news = *atStart.current().present;
    EXPECT_EQ(news.eventId, 0x0101);
    EXPECT_EQ(news.startTime, 1795636800);
    EXPECT_EQ(news.duration, 900u);
    EXPECT_EQ(news.language, "deu");
    EXPECT_EQ(news.name, "Nachrichten");
    EXPECT_EQ(news.description, "Der Tag \xE2\x80\x93 kurz") << "written as UTF-8 behind its selector";
    ASSERT_EQ(news.ratings.size(), 2u);
    EXPECT_EQ(news.ratings[1].country, "AUT");
    EXPECT_EQ(news.ratings[1].age, 10);
    ASSERT_EQ(news.components.size(), 1u);
    EXPECT_EQ(news.components[0].componentTag, 0x21);
    EXPECT_EQ(news.components[0].text, "Video");
}

TEST(MakeSampleTest, ProgrammesSubtitlesAndNetworksThatCannotBeAreRefused)
{
    const std::string longName(200, 'n');
    const struct {
        std::string lines;
        int repeat;
        const char* error;
    } cases[] = {
        {"programme present 1 2026-11-25T20:00:00Z 00:15:00 \"a\" \"b\"\n", 1, "cannot read"},
        {"programmes version 1\nprogramme present 1 2026-02-29T20:00:00Z 00:15:00 \"a\" \"b\"\n", 1, "cannot read"},
        {"programmes version 1\nprogramme present 1 2026-11-25T24:00:00Z 00:15:00 \"a\" \"b\"\n", 1, "cannot read"},
        {"programmes version 1\nprogramme present 1 2026-11-25 20:00:00Z 00:15:00 \"a\" \"b\"\n", 1, "cannot read"},
        {"programmes version 1\nprogramme present 1 2038-04-23T00:00:00Z 00:15:00 \"a\" \"b\"\n", 1, "cannot read"},
        {"programmes version 1\nprogramme present 1 1858-11-16T23:00:00Z 00:15:00 \"a\" \"b\"\n", 1, "cannot read"},
        {"programmes version 1\nprogramme present 1 2026-11-25T20:00:00Z 01:60:00 \"a\" \"b\"\n", 1, "cannot read"},
        {"programmes version 1\nprogramme present 1 2026-11-25T20:00:00Z 1:30:00 \"a\" \"b\"\n", 1, "cannot read"},
        {"programmes version 1\nprogramme present 1 2026-11-25T20:00:00Z 01:30:00 \"a\" \"b\" rating GBR 3\n", 1,
         "cannot read"},
        {"programmes version 1\nprogramme present 1 2026-11-25T20:00:00Z 01:30:00 \"a\" \"b\" rating GBR 19\n", 1,
         "cannot read"},
        {"programmes version 1\nprogramme present 1 2026-11-25T20:00:00Z 01:30:00 \"a\" \"b\" rating GB 12\n", 1,
         "cannot read"},
        {"programmes version 1\nprogramme present 1 2026-11-25T20:00:00Z 01:30:00 \"a\" \"b\" "
         "component 0x10 1 1 eng \"\"\n",
         1, "cannot read"},
        {"programmes version 1\nprogramme present 1 2026-11-25T20:00:00Z 01:30:00 \"" + longName + "\" \"" +
             std::string(51, 't') + "\"\n",
         1, "cannot read"},
        {"programmes version 1\nprogramme present 1 2026-11-25T20:00:00Z 01:30:00 \"a\" \"b\"\n"
         "programme present 2 2026-11-25T20:00:00Z 01:30:00 \"a\" \"b\"\n",
         1, "cannot read"},
        {"programmes version 32\n", 1, "cannot read"},
        {"programmes version 1 at 10%\n", 2, "has no programmes from the start"},
        {"programmes version 1\nprogrammes version 1 at 50%\n", 2, "programmes version 1 follows itself"},
        {"programmes version 1\nprogrammes version 2 at 50%\n", 1, "programmes version 2 has no round of its own"},
        {"programmes version 1\nprogrammes version 2 at 60%\nprogrammes version 3 at 70%\n", 4,
         "programmes version 3 has no round of its own"},
        {"subtitles 0x0120 de\n", 1, "cannot read"},
        {"subtitles 0x0101 deu\n", 1, "uses PID 257 that is used already"},
        {"subtitles 0x0120 deu tag 1\n", 1, "gives component tag 1 to two streams"},
        {"av a.ts 0x0110 tags 1,,2\n", 1, "cannot read"},
        {"network 0x0001 \"" + std::string(256, 'n') + "\"\n", 1, "cannot read"},
    };
    for (const auto& c : cases) {
        const std::string description = withCarousel() + c.lines + "repeat " + std::to_string(c.repeat) + "\n";
        SampleDescription sample;
        std::string error;
        EXPECT_FALSE(parseDescriptionText(description, "test", sample, error)) << c.lines;
        EXPECT_THAT(error, HasSubstr(c.error)) << c.lines;
    }
}

}  // namespace
