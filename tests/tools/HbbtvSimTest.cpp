// hbbtv-sim as an integrator runs it: on the bundled sample, on every shared capture, with
// scripts, in JSON, and on inputs that are not what they should be.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <regex>
#include <sstream>

#include "SectionBuilder.h"
#include "SharedData.h"
#include "TsWriter.h"

using ::testing::HasSubstr;
using ::testing::Not;

namespace {

struct SimRun {
    int status;
    std::string out;
    std::string err;
};

std::string tempFile(const std::string& name)
{
    return ::testing::TempDir() + "hbbtv-sim-" + std::to_string(getpid()) + "-" + name;
}

void writeFile(const std::string& path, const std::string& text)
{
    std::ofstream(path, std::ios::binary) << text;
}

std::string readFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

SimRun sim(const std::string& arguments)
{
    const std::string err = tempFile("stderr");
    const std::string command = "timeout 60 " HBBTV_SIM " " + arguments + " 2>" + err;
    SimRun run{-1, "", ""};
    if (FILE* pipe = popen(command.c_str(), "r")) {
        char buffer[4096];
        size_t n;
        while ((n = fread(buffer, 1, sizeof buffer, pipe)) > 0)
            run.out.append(buffer, n);
        const int status = pclose(pipe);
        run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    run.err = readFile(err);
    return run;
}

std::string capture(const char* name)
{
    return tesmo_test::sharedDataDir() + "/captures/" + name;
}

TEST(HbbtvSimTest, BundledSampleShowsAStartAndAFailover)
{
    const SimRun run = sim("");
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_THAT(run.out, HasSubstr("service 0x0001 \"Sample TV\""));
    EXPECT_THAT(run.out, HasSubstr("AIT v1 complete: the library takes it"));
    EXPECT_THAT(run.out, HasSubstr("start requested: 0x10.0x1 http://sample.example/app/index.html (AUTOSTART)"));
    EXPECT_THAT(run.out, HasSubstr("HTTP 404: http://sample.example/app/index.html"));
    EXPECT_THAT(run.out, HasSubstr("start requested: 0x10.0x1 dvb://1.1.1.5/index.html (AUTOSTART)"));
    EXPECT_THAT(run.out, HasSubstr("carousel: service gateway in module 1"));
    EXPECT_THAT(run.out, HasSubstr("carousel: module 3 v1 complete, 1 object(s)"));
    EXPECT_THAT(run.out, HasSubstr("loaded from the carousel: dvb://1.1.1.5/index.html (573 bytes)"));
    EXPECT_THAT(run.out, HasSubstr("key RED stays with the TV"));
    EXPECT_THAT(run.out, HasSubstr("key RED delivered"));
}

// Each service's present/following, its change partway through the first service's, and the
// network, in words and in JSON.
TEST(HbbtvSimTest, BundledSampleShowsTheProgrammesOfEachService)
{
    const SimRun run = sim("");
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_THAT(run.out, HasSubstr("  network 0x0001 \"Sample Network\"\n"));
    const std::string lines[] = {
        "programmes v1: now \"Evening News\" (20:00-20:15 UTC), next \"The Sample Film\" (20:15-21:45 UTC)",
        "programmes v2: now \"The Sample Film\" (20:15-21:45 UTC), next \"Late News\" (21:45-22:00 UTC)",
        "channel change to \"Sample News\"",
        "programmes v1: now \"News at Eight\" (20:00-20:30 UTC), next \"Business Hour\" (20:30-21:00 UTC)",
        "channel change to \"Sample TV\"",
        "programmes v1: now \"Evening News\"",
    };
    size_t at = 0;
    for (const std::string& line : lines) {
        at = run.out.find(line, at);
        ASSERT_NE(at, std::string::npos) << "in order: " << line;
    }

    const SimRun json = sim("--json");
    ASSERT_EQ(json.status, 0) << json.err;
    EXPECT_THAT(
        json.out,
        HasSubstr("{\"broadcast\":\"programmes\",\"service_id\":1,\"version\":2,\"present\":{\"event_id\":258,"
                  "\"start_time\":1795637700,\"duration\":5400,\"language\":\"eng\",\"name\":\"The Sample Film\","
                  "\"description\":\"A broadcaster tests its signal\",\"ratings\":[{\"country\":\"GBR\",\"age\":12}],"
                  "\"components\":[{\"stream_content\":5,\"component_type\":3,\"component_tag\":1,"
                  "\"language\":\"eng\",\"text\":\"Video\"}]},\"following\":{\"event_id\":259,"));
    EXPECT_THAT(json.out, HasSubstr("\"description\":\"Headlines, reports \xE2\x80\x93 and the weather\""));
}

TEST(HbbtvSimTest, JsonLinesCarryEveryFieldOfTheNotifications)
{
    const SimRun run =
        sim("--json " SAMPLE_DIR "/sample.ts --carousel " SAMPLE_DIR "/carousel --status 'http://*=404'");
    ASSERT_EQ(run.status, 0) << run.err;
    std::istringstream lines(run.out);
    std::string line, start, update, open;
    int objects = 0;
    while (std::getline(lines, line)) {
        ASSERT_EQ(line.front(), '{') << line;
        ASSERT_EQ(line.back(), '}') << line;
        ++objects;
        if (start.empty() && line.find("\"notification\":\"APPLICATION_START\"") != std::string::npos)
            start = line;
        if (update.empty() && line.find("\"notification\":\"AIT_UPDATE\"") != std::string::npos)
            update = line;
        if (open.empty() && line.find("\"call\":\"tm_open_url\"") != std::string::npos)
            open = line;
    }
    EXPECT_GT(objects, 20);
    EXPECT_THAT(
        start,
        HasSubstr(
            "\"flag_a\":1,\"flag_b\":0,\"flag_c\":1,\"organisation_id\":16,\"application_id\":1,"
            "\"url\":\"http://sample.example/app/index.html\",\"reactivate_ait\":null,\"usage_type\":0,\"action\":0"));
    EXPECT_THAT(update, HasSubstr("\"is_xml_ait\":0,\"num_applications\":2"));
    EXPECT_THAT(update, HasSubstr("\"urls\":[\"dvb://1.1.1.5/index.html\",\"http://sample.example/app/index.html\"]"));
    EXPECT_THAT(update, HasSubstr("\"was_corrected\":0"));
    EXPECT_TRUE(std::regex_search(
        open,
        std::regex(R"("call":"tm_open_url","window":"0x10000","url":"http://sample.example/app/index.html","tick":6)")))
        << open;
    EXPECT_THAT(run.out, HasSubstr("{\"call\":\"dsmcc_get_file\",\"path\":\"1.1.1.5/index.html\""));
    EXPECT_THAT(run.out, HasSubstr("{\"call\":\"hbbtv_ait_completed\",\"version_number\":1,"));
}

// A description that would need more than its stream can carry is refused, never written as
// a broken stream.
TEST(HbbtvSimTest, GeneratorRefusesWhatAStreamCannotCarry)
{
    const std::string desc = readFile(SAMPLE_DIR "/sample.desc");
    std::string manyApplications;
    for (int i = 0; i < 20; ++i)
        manyApplications += "  application 0x10 " + std::to_string(0x100 + i) +
                            " PRESENT priority 1 profile 0x0000 1.1.1\n"
                            "    name \"An application with a long name\"\n    transport 1 http http://a.example/\n";
    const std::pair<std::string, std::string> faults[] = {
        {"carousel_block_size 512", "carousel_block_size 0"},
        {"carousel_block_size 512", "carousel_block_size 4067"},
        {"name \"Sample Catalogue\"", "name \"" + std::string(252, 'N') + "\""},
        {"location index.html", "location " + std::string(256, 'l')},
        {"section\n  application 0x10 0x0002", "section\n" + manyApplications + "  application 0x10 0x0002"},
        {"carousel_file app.js", "carousel_file app.js\ncarousel_file app.js"},
        {"carousel_file app.js", "carousel_file data"},
        {"carousel_file app.js", "carousel_file ../sample.desc"},
        {"repeat 2", "repeat 0"},
        {"name \"Sample Catalogue\"", "name \"Sample Catalogue"},
        {"pmt 0x0200", "pmt 0x0101"},
        {"service 0x0002", "service 0x10002"},
    };
    char pattern[] = "/tmp/make-sample-XXXXXX";
    const std::string dir = mkdtemp(pattern);
    symlink(SAMPLE_DIR "/carousel", (dir + "/carousel").c_str());
    auto generate = [&dir](const std::string& description) {
        std::ofstream(dir + "/sample.desc") << description;
        return std::system((MAKE_SAMPLE " " + dir + "/sample.desc " + dir + "/sample.ts 2>/dev/null").c_str());
    };
    ASSERT_EQ(generate(desc), 0) << "the sample itself, beside its carousel";
    for (const auto& fault : faults) {
        std::string bad = desc;
        bad.replace(bad.find(fault.first), fault.first.size(), fault.second);
        EXPECT_NE(generate(bad), 0) << fault.second.substr(0, 40);
    }
    std::system(("rm -rf " + dir).c_str());
}

TEST(HbbtvSimTest, GeneratorRoundTrip)
{
    const std::string ts = tempFile("roundtrip.ts");
    ASSERT_EQ(std::system((MAKE_SAMPLE " " SAMPLE_DIR "/sample.desc " + ts).c_str()), 0);
    EXPECT_EQ(readFile(ts), readFile(SAMPLE_DIR "/sample.ts")) << "the committed sample is the description's";
    const SimRun run = sim("--dump-ait " + ts);
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, "AIT application type 0x0010, version 1, section 0 of 1, 1 application(s)\n"
                       "  0x00000010.0x0001 \"Sample Application\" AUTOSTART, priority 5, visibility 3\n"
                       "    profile 0x0000 version 1.1.1\n"
                       "    transport 1: HTTP http://sample.example/app/\n"
                       "    transport 2: object carousel tag 0x05\n"
                       "    location index.html\n"
                       "    boundary http://sample.example/\n"
                       "AIT application type 0x0010, version 1, section 1 of 1, 1 application(s)\n"
                       "  0x00000010.0x0002 \"Sample Catalogue\" PRESENT, priority 1, visibility 3, service-bound\n"
                       "    profile 0x0000 version 1.1.1\n"
                       "    transport 1: HTTP http://sample.example/catalogue/\n"
                       "    location index.html\n");
    std::remove(ts.c_str());
}

TEST(HbbtvSimTest, SampleCarouselListsAndExtractsAsWritten)
{
    const SimRun list = sim("--carousel-list");
    ASSERT_EQ(list.status, 0) << list.err;
    EXPECT_THAT(list.out, HasSubstr("object carousel on PID 0x0102: 32 section(s)\n"));
    EXPECT_THAT(list.out,
                HasSubstr("  /events/sample                   stream event                  module 1 v1  complete\n"));
    EXPECT_THAT(list.out,
                HasSubstr("  /data/menu.txt                   file                75 bytes  module 5 v1  complete\n"));
    EXPECT_THAT(list.out, HasSubstr("  module 3 v1: 556 bytes (zlib) in 2 block(s), complete\n"));
    EXPECT_THAT(list.out, HasSubstr("  module 4 v1: 3107 bytes in 7 block(s), complete\n"));

    const std::string dir = tempFile("extracted");
    const SimRun extract = sim("--carousel-extract " + dir + " --carousel-pid 0x102 " SAMPLE_DIR "/sample.ts");
    ASSERT_EQ(extract.status, 0) << extract.err;
    EXPECT_THAT(extract.out, HasSubstr("wrote 4 of 4 file(s)"));
    for (const char* file : {"index.html", "style.css", "app.js", "data/menu.txt"})
        EXPECT_EQ(readFile(dir + "/" + file), readFile(std::string(SAMPLE_DIR "/carousel/") + file)) << file;
    std::system(("rm -rf " + dir).c_str());
}

TEST(HbbtvSimTest, RealCapturesHoldPiecesOfCarousels)
{
    REQUIRE_SHARED_DATA();
    const SimRun rai = sim(capture("rai-dtt-hbbtv.ts") + " --carousel-list --carousel-pid 0x0BB9");
    EXPECT_EQ(rai.status, 0) << rai.err;
    EXPECT_THAT(rai.out, HasSubstr("  /                                service gateway               module 0 v0  "
                                   "incomplete: 0 of 6 blocks, missing 0-5\n"));
    EXPECT_THAT(
        rai.out,
        HasSubstr("  module 2 v0: 53375 bytes (zlib) in 14 block(s), incomplete: 0 of 14 blocks, missing 0-13\n"));
    EXPECT_THAT(
        rai.out,
        HasSubstr("  module 4 v0: 21734 bytes (zlib) in 6 block(s), incomplete: 3 of 6 blocks, missing 0, 4-5\n"));

    const SimRun lone = sim(capture("rai-dtt-hbbtv.ts") + " --carousel-list --carousel-pid 0x0BBA");
    EXPECT_EQ(lone.status, 1) << "a block, but no carousel to put it in";
    EXPECT_THAT(lone.out, HasSubstr("1 section(s), no service gateway"));
    EXPECT_THAT(lone.out, HasSubstr("1 block(s) of modules that no DownloadInfoIndication of the capture announces"));

    const SimRun abc = sim(capture("abc-au-hbbtv.ts") + " --carousel-list");
    EXPECT_EQ(abc.status, 2);
    EXPECT_THAT(abc.err, HasSubstr("service 0x0230 signals no object carousel"));
}

TEST(HbbtvSimTest, TimestampedAndParityPacketsReadLikePlainOnes)
{
    const std::string sample = readFile(SAMPLE_DIR "/sample.ts");
    const std::string plain = sim(std::string("--dump-ait ") + SAMPLE_DIR "/sample.ts").out;
    ASSERT_FALSE(plain.empty());
    std::string timestamped, parity;
    for (size_t at = 0; at + 188 <= sample.size(); at += 188) {
        timestamped += std::string("\x00\x01\x02\x03", 4) + sample.substr(at, 188);
        parity += sample.substr(at, 188) + std::string(16, '\x55');
    }
    const std::string path = tempFile("packets.ts");
    for (const std::string& stream : {timestamped, parity}) {
        writeFile(path, stream);
        const SimRun run = sim("--dump-ait " + path);
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(run.out, plain);
    }
    std::remove(path.c_str());
}

TEST(HbbtvSimTest, ScriptDrivesPlatformPageAndViewer)
{
    const std::string script = tempFile("script");
    writeFile(script,
              "# everything a script can do\n"
              "tick 20\nkeyset 0x1FF\nkey 7\nshow\nhide\nbroadband off\nbroadband on\n"
              "xml-ait " SHARED_XML_AIT "\n"
              "tick 5\nlow-memory\ntime-shift on\ntime-shift off\ntick 5\nfail http://*\n"
              "start-url http://portal.example/\ntick 5\nload-fail\nterminate\ndestroy-application\nservice-change\n");
    const SimRun run = sim(SAMPLE_DIR "/sample.ts --script " + script);
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_THAT(run.out, HasSubstr("the page sets its key set to 0x1FF: result 0, now 0x1FF"));
    EXPECT_THAT(run.out, HasSubstr("key 7 delivered"));
    EXPECT_THAT(run.out, HasSubstr("broadband off"));
    EXPECT_THAT(run.out, HasSubstr("the platform reports low memory"));
    EXPECT_THAT(run.out, HasSubstr("the platform starts http://portal.example/"));
    EXPECT_THAT(run.out, HasSubstr("load failed: http://portal.example/"));
    EXPECT_THAT(run.out, HasSubstr("service change: the AIT is withdrawn"));
    std::remove(script.c_str());
}

TEST(HbbtvSimTest, BadOptionsAndScriptsAreRefusedClearly)
{
    EXPECT_EQ(sim("--bogus").status, 2);
    EXPECT_THAT(sim("--key PURPLE@3").err, HasSubstr("--key takes NAME@TICK"));
    EXPECT_THAT(sim("--hbbtv-version 2.0").err, HasSubstr("1.1.1 or 1.2.1"));
    EXPECT_THAT(sim("--service").err, HasSubstr("--service needs a value"));
    EXPECT_EQ(sim("--help").status, 0);
    const std::string script = tempFile("bad-script");
    writeFile(script, "tick 3\ndance\n");
    const SimRun run = sim(SAMPLE_DIR "/sample.ts --script " + script);
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(run.err, HasSubstr(":2: unknown action 'dance'"));
    EXPECT_THAT(sim(SAMPLE_DIR "/sample.ts --service 0x99").err, HasSubstr("no service 0x0099 in the capture"));
    std::remove(script.c_str());
}

TEST(HbbtvSimTest, BrokenInputsEndWithAMessageNeverACrash)
{
    const std::string empty = tempFile("empty.ts");
    writeFile(empty, "");
    EXPECT_THAT(sim(empty).err, HasSubstr("is not an MPEG-2 transport stream"));
    EXPECT_THAT(sim("/nonexistent/capture.ts").err, HasSubstr("cannot read /nonexistent/capture.ts"));

    const std::string sample = readFile(SAMPLE_DIR "/sample.ts");
    const std::string cut = tempFile("cut.ts");
    for (size_t size : {size_t(188 * 3 + 77), size_t(188 * 4), sample.size() - 100}) {
        writeFile(cut, sample.substr(0, size));
        const SimRun run = sim(cut + " --carousel " SAMPLE_DIR "/carousel");
        EXPECT_TRUE(run.status == 0 || run.status == 2) << size << ": " << run.err;
    }
    std::string corrupted = sample;
    for (size_t i = 5; i < corrupted.size(); i += 37)
        corrupted[i] = char(corrupted[i] ^ 0x5A);
    writeFile(cut, corrupted);
    const SimRun run = sim(cut);
    EXPECT_TRUE(run.status == 0 || run.status == 2) << run.err;
    std::remove(empty.c_str());
    std::remove(cut.c_str());
}

TEST(HbbtvSimTest, AbcTableIsShownButRefusedByTheLibrary)
{
    REQUIRE_SHARED_DATA();
    const SimRun run = sim(capture("abc-au-hbbtv.ts"));
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_THAT(run.out, HasSubstr("service 0x0230 \"ABC NEWS\" from \"ABC\" AIT on PID 0x157C (HbbTV)"));
    EXPECT_THAT(run.out, HasSubstr("0x141.0x1000 \"ABC\" AUTOSTART, priority 1, profile 0x0000 version 1.1.1"));
    EXPECT_THAT(run.out, HasSubstr("0x141.0x4000 \"FREEVIEWPLUS\" PRESENT"));
    EXPECT_THAT(run.out, HasSubstr("AIT v1: every section was posted, but the library did not complete the table"));
    EXPECT_THAT(run.out, Not(HasSubstr("start requested")));
}

TEST(HbbtvSimTest, RaiApplicationsAskForAVersionNoTerminalOffers)
{
    REQUIRE_SHARED_DATA();
    for (const char* version : {"1.1.1", "1.2.1"}) {
        const SimRun run = sim(capture("rai-dtt-hbbtv.ts") + " --hbbtv-version " + version);
        ASSERT_EQ(run.status, 0) << run.err;
        EXPECT_THAT(run.out, HasSubstr("service 0x0D49 \"Rai 1\""));
        EXPECT_THAT(run.out,
                    HasSubstr("0x3C0.0x65 \"Telecomando HbbTV\" AUTOSTART, priority 0, profile 0x0000 version 1.4.1"));
        EXPECT_THAT(run.out, HasSubstr("AIT v0 complete: the library takes it"));
        EXPECT_THAT(run.out, HasSubstr("Attempt to start application with unsupported platform profile."));
        EXPECT_THAT(run.out, HasSubstr(std::string("user-agent extension: HbbTV/") + version));
        EXPECT_THAT(run.out, Not(HasSubstr("start requested")));
    }
    const SimRun other = sim(capture("rai-dtt-hbbtv.ts") + " --service 0x0D53 --dump-ait");
    EXPECT_THAT(other.out, HasSubstr("https://www.raiplay.it/hbbtv/launcher/"));
}

TEST(HbbtvSimTest, AitWithoutApplicationTypesIsPlayedWhenNothingElseIs)
{
    using namespace tesmo_test;
    TsWriter ts;
    ts.writeSection(0x0000, patSection(1, {{0x0007, 0x0100}}));
    ts.writeSection(0x0100, pmtSection(0x0007, {{0x05, 0x0101, descriptor(0x6F, {})}}));
    ApplicationDescriptorFields fields;
    ts.writeSection(
        0x0101,
        AITSection()
            .application(App(0x10, 1, 1).with(applicationDescriptor(fields)).with(httpTransport(1, "http://a.tv/")))
            .bytes());
    const std::string path = tempFile("unlabelled.ts");
    writeFile(path, std::string(ts.bytes().begin(), ts.bytes().end()));
    const SimRun run = sim(path);
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_THAT(run.out, HasSubstr("no service lists application type 0x0010; the AIT of service 0x0007 on PID 0x0101 "
                                   "lists no type at all, so it is played as HbbTV"));
    EXPECT_THAT(run.out, HasSubstr("start requested: 0x10.0x1 http://a.tv/"));
    std::remove(path.c_str());
}

TEST(HbbtvSimTest, CapturesWithoutAnHbbTVService)
{
    REQUIRE_SHARED_DATA();
    const SimRun mhp = sim(capture("mediaset-sat-mhp.ts"));
    EXPECT_EQ(mhp.status, 2);
    EXPECT_THAT(mhp.err, HasSubstr("no service of the capture signals an HbbTV AIT: 2 of 20 service(s) signal an AIT, "
                                   "for application type(s) 0x0001 only"));
    EXPECT_THAT(mhp.out, HasSubstr("service 0x0001 \"Italia 1\" from \"Mediaset\" AIT on PID 0x1EC5 (not HbbTV)"));
    const SimRun forced = sim(capture("mediaset-sat-mhp.ts") + " --service 1");
    EXPECT_EQ(forced.status, 0) << forced.err;
    EXPECT_THAT(forced.out, HasSubstr("the library did not complete the table"));

    const SimRun synthetic = sim(capture("all-descriptors-synthetic.ts"));
    EXPECT_EQ(synthetic.status, 2);
    EXPECT_THAT(synthetic.err, HasSubstr("no service can be played: the capture has no PAT"));
}

}  // namespace
