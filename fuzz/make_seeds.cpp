// Writes the seed corpora of fuzz/corpus from readable descriptions; run it again when a
// seed should change (the real sections of ../shared/data are used in place, not copied).

#include <cstdio>
#include <string>
#include <vector>

#include "CarouselWriter.h"
#include "SectionBuilder.h"

using namespace tesmo_test;

namespace {

void write(const std::string& path, const Bytes& bytes)
{
    if (std::FILE* f = std::fopen(path.c_str(), "wb")) {
        std::fwrite(bytes.data(), 1, bytes.size(), f);
        std::fclose(f);
    }
}

App autostartApp()
{
    Recording recording;
    recording.flags = 0x60;
    recording.labels = {"r"};
    recording.componentTags = {7};
    ApplicationDescriptorFields fields;
    fields.labels = {1, 2};
    return App(0x141, 0x1000)
        .with(applicationDescriptor(fields))
        .with(nameDescriptor("ABC"))
        .with(httpTransport(1, "http://hbbtv.example/"))
        .with(carouselTransport(2, 5))
        .with(locationDescriptor("index.html?autostart=abc"))
        .with(recordingDescriptor(recording))
        .with(usageDescriptor(1))
        .with(boundaryDescriptor({"http://a.example/", "dvb://1.2.3/"}));
}

}  // namespace

int main(int argc, char** argv)
{
    const std::string dir = argc > 1 ? argv[1] : "fuzz/corpus";
    const Bytes single =
        AITSection().version(3).common(httpTransport(9, "http://common/")).application(autostartApp()).bytes();
    write(dir + "/fuzz_ait_sections/single-section", single);
    write(dir + "/fuzz_ait_sections/three-sections",
          concat({AITSection().version(1).number(0, 2).application(autostartApp()).bytes(),
                  AITSection()
                      .version(1)
                      .number(2, 2)
                      .application(
                          App(0x141, 0x4000, 2).with(applicationDescriptor({})).with(httpTransport(1, "http://p/")))
                      .bytes(),
                  AITSection()
                      .version(1)
                      .number(1, 2)
                      .common(remoteCarouselTransport(1, 1, 2, 3, 4))
                      .application(App(0x142, 0x7000, 4).with(applicationDescriptor({})))
                      .bytes()}));
    write(dir + "/fuzz_pmt/carousel-and-ait",
          pmtSection(0x0D49,
                     {{0x02, 0x100, descriptor(0x52, {1})},
                      {0x0B, 0x200,
                       concat({descriptor(0x13, {0, 0, 0, 1, 0}), descriptor(0x52, {5}), descriptor(0x14, {0, 1})})},
                      {0x05, 0x7D2, descriptor(0x6F, {0x00, 0x10, 0xE0})}}));
    write(dir + "/fuzz_boundary_descriptor/two-extensions",
          boundaryDescriptor({"http://tvapps:8080/app", "dvb://1.2.3/x"}));
    // Record builders consume the bytes front to back; any bytes make a record.
    write(dir + "/fuzz_xml_ait/small",
          Bytes{2, 0, 5, 'n', 'a', 'm', 'e', 1, 0, 0, 0, 19, 0, 0, 1, 244, 1, 0, 0, 0, 3, 1});
    const std::string urls = "http://tvapps/app/index.html?a=1#x";
    const std::string more = "dvb://current.ait/1a.2";
    write(dir + "/fuzz_urls/http-and-current-ait", Bytes(urls.begin(), urls.end()));
    write(dir + "/fuzz_urls/current-ait", Bytes(more.begin(), more.end()));

    // A small carousel in 64-byte blocks, one module compressed, each section behind its
    // length; and one whose directories are named as a hostile broadcast names them, to extract.
    carousel::CarouselIds ids;
    ids.blockSize = 64;
    auto carouselSeed = [&ids](uint8_t mode, const std::vector<carousel::CarouselFile>& files) {
        Bytes sections{mode};
        for (const Bytes& section : carousel::writeObjectCarousel(files, ids, {files.back().path}))
            sections = concat({sections, {uint8_t(section.size() >> 8), uint8_t(section.size())}, section});
        return sections;
    };
    write(dir + "/fuzz_carousel/small-carousel",
          carouselSeed(2, {{"index.html", "<html><body>seed</body></html>"}, {"d/a.css", std::string(200, 'a')}}));
    write(dir + "/fuzz_carousel/hostile-names-extracted",
          carouselSeed(
              6, {{"index.html", "seed"}, {"../../escaped.txt", "out"}, {"d/./../../x/y", "deep"}, {"e/f", "ok"}}));

    // A present/following of one service: now with every descriptor the guide reads and a
    // UTF-8 text; next with a name in ISO 8859-15 and a start that is not BCD.
    const EitService service{0x0001, 0x0001, 0x0001};
    const Bytes everything = concat({shortEventDescriptor("deu", "Nachrichten",
                                                          "\x15"
                                                          "Der Tag \xE2\x80\x93 kurz"),
                                     parentalRatingDescriptor({{"DEU", 9}, {"AUT", 0x10}}),
                                     componentDescriptor(0x05, 0x03, 0x21, "deu", "Video")});
    write(dir + "/fuzz_eit/present-with-every-descriptor",
          eitPresentFollowingSection(service, 1, 0, {{0x0101, 1795636800, 900, 4, everything}}));
    Bytes following = eitPresentFollowingSection(
        service, 1, 1, {{0x0102, 1795637700, 5400, 1, shortEventDescriptor("eng", "\x0B\xA4 Film", "")}});
    following[14 + 4] = 0xAA;
    write(dir + "/fuzz_eit/following-latin9-not-bcd", following);

    // Component tag 7, event 1: UTF-8 text, then bytes that are not UTF-8 (Latin-1, a zero).
    auto eventSeed = [](const std::string& text) {
        return concat({{7, 0, 1}, carousel::streamEventSection(1, 0, text)});
    };
    write(dir + "/fuzz_stream_event/utf8-text", eventSeed("Test event \xC3\xA4\xC3\xB6\xC3\xBC!"));
    write(dir + "/fuzz_stream_event/latin1-and-zero", eventSeed(std::string("\xE4\xF6\xFC\0!", 5)));
    return 0;
}
