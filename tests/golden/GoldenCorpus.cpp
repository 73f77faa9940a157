#include "GoldenCorpus.h"

#include <dirent.h>

#include <algorithm>
#include <map>

#include "GoldenActivation.h"
#include "GoldenPrinter.h"
#include "SharedData.h"
#ifdef GOLDEN_HAS_CAPTURE_READER
#include "TsSections.h"
#endif

namespace tesmo_test {

namespace {

GoldenInput sectionsInput(std::string name, std::vector<Bytes> sections)
{
    GoldenInput input;
    input.name = std::move(name);
    input.sections = std::move(sections);
    return input;
}

std::vector<std::string> filesIn(const std::string& dir)
{
    std::vector<std::string> files;
    if (DIR* listing = opendir(dir.c_str())) {
        while (const dirent* entry = readdir(listing))
            if (entry->d_name[0] != '.')
                files.push_back(entry->d_name);
        closedir(listing);
    }
    std::sort(files.begin(), files.end());
    return files;
}

Bytes fromHex(const std::string& text)
{
    Bytes bytes;
    for (size_t i = 0; i + 1 < text.size(); i += 2)
        bytes.push_back(uint8_t(std::stoul(text.substr(i, 2), nullptr, 16)));
    return bytes;
}

// A section with one application that uses most descriptors, shared common transports and
// a second, plainer application: the base of the truncations and mutations.
Bytes richSection()
{
    ApplicationDescriptorFields fields;
    fields.labels = {1, 2};
    fields.profiles = {{0x0000, 1, 1, 1}, {0x0002, 1, 2, 1}};
    Recording recording;
    recording.flags = 0x40 | 0x20;
    recording.labels = {"l1"};
    recording.componentTags = {0x11};
    return AITSection()
        .version(5)
        .common(httpTransport(1, "http://common.tv/apps/"))
        .application(App(0x10, 1, 1)
                         .with(applicationDescriptor(fields))
                         .with(nameDescriptor("Rich"))
                         .with(carouselTransport(2, 0x0A))
                         .with(locationDescriptor("start/index.html?x=1"))
                         .with(boundaryDescriptor({"http://common.tv", "dvb://1.2.3"}))
                         .with(usageDescriptor(1))
                         .with(recordingDescriptor(recording)))
        .application(App(0x10, 2, 2).with(applicationDescriptor({})).with(httpTransport(1, "http://two.tv/")))
        .bytes();
}

Bytes sectionOf(const Bytes& common, const std::vector<App>& apps, uint8_t version = 1)
{
    AITSection section;
    section.version(version).common(common);
    for (const App& app : apps)
        section.application(app);
    return section.bytes();
}

Bytes withLength(Bytes section, int delta)
{
    const size_t length = (size_t(section[1] & 0x0F) << 8 | section[2]) + delta;
    section.resize(length + 3);
    setSectionLength(section);
    return section;
}

// A deterministic stream of numbers, the same on every build and machine.
class Lcg {
public:
    uint32_t next() { return state = state * 1103515245u + 12345u, state >> 8; }

private:
    uint32_t state = 20261124;
};

}  // namespace

const std::vector<std::string>& GoldenCorpus::groups()
{
    static const std::vector<std::string> all{"sections", "captures", "fuzz", "generated"};
    return all;
}

std::vector<GoldenInput> GoldenCorpus::inputs(const std::string& group)
{
    if (group == "sections")
        return sections();
    if (group == "captures")
        return captures();
    if (group == "fuzz")
        return fuzz();
    return generated();
}

std::vector<GoldenInput> GoldenCorpus::sections()
{
    std::vector<GoldenInput> inputs;
    const std::string dir = sharedDataDir();
    if (dir.empty())
        return inputs;
    for (const std::string& file : filesIn(dir + "/sections"))
        if (file.size() > 4 && file.compare(file.size() - 4, 4, ".bin") == 0)
            inputs.push_back(sectionsInput("sections/" + file, {readFileBytes(dir + "/sections/" + file)}));
    return inputs;
}

// One table per PID and version, each distinct section once, in stream order.
std::vector<GoldenInput> GoldenCorpus::captures()
{
    std::vector<GoldenInput> inputs;
#ifdef GOLDEN_HAS_CAPTURE_READER
    const std::string dir = sharedDataDir();
    if (dir.empty())
        return inputs;
    const std::pair<const char*, std::vector<uint16_t>> captures[] = {
        {"abc-au-hbbtv.ts", {0x157C}},
        {"rai-dtt-hbbtv.ts", {0x07D1, 0x07D2}},
        {"mediaset-sat-mhp.ts", {0x1EC5, 0x1EC6, 0x1EC7}},
        {"all-descriptors-synthetic.ts", {0x00C8}},
    };
    for (const auto& capture : captures)
        for (uint16_t pid : capture.second) {
            std::map<int, std::vector<Bytes>> byVersion;
            for (const Bytes& section : sectionsOnPid(dir + "/captures/" + capture.first, pid)) {
                std::vector<Bytes>& table = byVersion[(section[5] >> 1) & 0x1F];
                if (std::find(table.begin(), table.end(), section) == table.end())
                    table.push_back(section);
            }
            for (auto& table : byVersion)
                inputs.push_back(sectionsInput(std::string(capture.first) + " pid " + std::to_string(pid) +
                                                   " version " + std::to_string(table.first),
                                               table.second));
        }
#endif
    return inputs;
}

// The fuzz corpora of the table parser and the boundary descriptor, read as their targets
// read them.
std::vector<GoldenInput> GoldenCorpus::fuzz()
{
    std::vector<GoldenInput> inputs;
    const std::string corpus = GOLDEN_FUZZ_CORPUS;
    for (const std::string& file : filesIn(corpus + "/fuzz_ait_sections")) {
        const Bytes bytes = readFileBytes(corpus + "/fuzz_ait_sections/" + file);
        std::vector<Bytes> sections;
        for (size_t at = 0; bytes.size() - at >= 3;) {
            const size_t length = std::min(3 + (size_t(bytes[at + 1] & 0x0F) << 8 | bytes[at + 2]), bytes.size() - at);
            sections.emplace_back(bytes.begin() + long(at), bytes.begin() + long(at + length));
            setSectionLength(sections.back());
            at += length;
        }
        inputs.push_back(sectionsInput("fuzz_ait_sections/" + file, sections));
    }
    for (const std::string& file : filesIn(corpus + "/fuzz_boundary_descriptor")) {
        GoldenInput input = sectionsInput("fuzz_boundary_descriptor/" + file,
                                          {readFileBytes(corpus + "/fuzz_boundary_descriptor/" + file)});
        input.kind = GoldenInput::BOUNDARY_DESCRIPTOR;
        inputs.push_back(input);
    }
    return inputs;
}

std::vector<GoldenInput> GoldenCorpus::generated()
{
    std::vector<GoldenInput> inputs;
    addFaultyTables(inputs);
    addTruncationsAndMutations(inputs);
    addXmlRecords(inputs);
    return inputs;
}

void GoldenCorpus::addFaultyTables(std::vector<GoldenInput>& inputs)
{
    const Bytes fields = applicationDescriptor({});
    const Bytes http = httpTransport(1, "http://a.tv/");
    auto add = [&inputs](std::string name, std::vector<Bytes> sections) {
        inputs.push_back(sectionsInput(std::move(name), std::move(sections)));
    };
    add("name past its descriptor",
        {fromHex("74b0230010c10000f000f01600000010000101f00d0104656e67071505696e6465781360b8e7")});
    add("name past the loop",
        {sectionOf({}, {App(1, 1).with(fields).with(http).with(descriptor(0x01, {'e', 'n', 'g', 9, 'a'}))})});
    add("names in two descriptors and two in one",
        {sectionOf({}, {App(1, 1)
                            .with(fields)
                            .with(http)
                            .with(nameDescriptor("One"))
                            .with(descriptor(0x01, {'d', 'e', 'u', 3, 'Z', 'w', 'e', 'f', 'r', 'a', 2, 'D', 'e'}))})});
    add("zero-length descriptors",
        {sectionOf(descriptor(0x03, {}), {App(1, 1).with(fields).with(http).with(descriptor(0x15, {})),
                                          App(1, 2).with(descriptor(0x42, {})).with(fields)})});
    for (uint8_t profileBytes : {0, 4, 6, 7, 11}) {
        Bytes body{profileBytes};
        for (uint8_t i = 0; i < profileBytes; ++i)
            body.push_back(uint8_t(i % 5 == 1 ? 0 : 1));
        body.insert(body.end(), {0xFF, 3, 1});
        add("profile area of " + std::to_string(profileBytes) + " bytes",
            {sectionOf({}, {App(1, 1).with(descriptor(0x00, body)).with(http)})});
    }
    ApplicationDescriptorFields twice;
    twice.labels = {1, 1, 2, 1};
    add("duplicate labels",
        {sectionOf(httpTransport(1, "http://common.tv/"), {App(1, 1)
                                                               .with(applicationDescriptor(twice))
                                                               .with(httpTransport(1, "http://local.tv/"))
                                                               .with(httpTransport(1, "http://second.tv/"))
                                                               .with(carouselTransport(2, 5))
                                                               .with(carouselTransport(2, 6))})});
    const std::pair<const char*, Bytes> listedTwice[] = {{"common", {1, 1}}, {"local", {2, 2}}, {"both", {1, 2, 1, 2}}};
    for (const auto& labels : listedTwice) {
        ApplicationDescriptorFields listing;
        listing.labels = labels.second;
        add(std::string("label listed twice, ") + labels.first,
            {sectionOf(
                concat({httpTransport(1, "http://common.tv/"), httpTransport(1, "http://common-again.tv/")}),
                {App(1, 1)
                     .with(applicationDescriptor(listing))
                     .with(carouselTransport(2, 5))
                     .with(httpTransport(2, "http://l.tv/")),
                 App(1, 2, 2).with(applicationDescriptor(listing)).with(httpTransport(2, "http://present.tv/"))})});
    }
    ApplicationDescriptorFields unlisted;
    unlisted.labels = {7, 3};
    add("labels without transports and unknown protocols",
        {sectionOf({},
                   {App(1, 1).with(applicationDescriptor(unlisted)).with(descriptor(0x02, {0x00, 0x04, 3, 0xAA}))})});
    add("remote carousel and empty URL base",
        {sectionOf({}, {App(1, 1).with(applicationDescriptor({})).with(remoteCarouselTransport(1, 0x22, 0x33, 0x44, 9)),
                        App(1, 2)
                            .with(applicationDescriptor({}))
                            .with(httpTransport(1, ""))
                            .with(locationDescriptor("x.html"))})});
    std::vector<App> controls;
    for (uint8_t code : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 0xAB})
        controls.push_back(App(0x20, uint16_t(0x100 + code), code).with(fields).with(http));
    add("every control code", {sectionOf({}, controls)});
    std::vector<App> ids;
    for (uint16_t id : {0x0000, 0x3FFF, 0x4000, 0x7FFF, 0x8000, 0xFFFE, 0xFFFF})
        ids.push_back(App(id == 0 ? 0 : 0xFFFFFFFF, id, 2).with(fields).with(http));
    add("identifier ranges", {sectionOf({}, ids)});
    std::vector<App> many;
    for (uint16_t id = 1; id <= 30; ++id) {
        ApplicationDescriptorFields f;
        f.priority = uint8_t(id * 37);
        many.push_back(App(0x30, id, id % 3 == 0 ? 2 : 1).with(applicationDescriptor(f)).with(http));
    }
    add("thirty applications", {sectionOf({}, many)});
    add("three sections, one repeated",
        {AITSection().version(2).number(2, 2).application(App(1, 3).with(fields).with(http)).bytes(),
         AITSection().version(2).number(0, 2).application(App(1, 1).with(fields).with(http)).bytes(),
         AITSection().version(2).number(2, 2).application(App(1, 3).with(fields).with(http)).bytes(),
         AITSection().version(2).number(1, 2).application(App(1, 2).with(fields).with(http)).bytes()});
    add("versions change between sections",
        {AITSection().version(3).number(0, 1).application(App(1, 1).with(fields).with(http)).bytes(),
         AITSection().version(4).number(1, 1).application(App(1, 2).with(fields).with(http)).bytes()});
    add("section number past the last",
        {AITSection().number(3, 1).application(App(1, 1).with(fields).with(http)).bytes()});
    const Bytes good = sectionOf(httpTransport(1, "http://c.tv/"), {App(1, 1).with(fields).with(nameDescriptor("A"))});
    for (int delta : {-1, -4, -9, 1, 3})
        add("section length " + std::to_string(delta), {withLength(good, delta)});
    Bytes commonTooLong = good;
    commonTooLong[9] = 0xF0 | 0x0F;  // common descriptors claim past the section
    add("common loop past the section", {commonTooLong});
    Bytes appLoopTooLong = good;
    appLoopTooLong[10 + (size_t(good[8] & 0x0F) << 8 | good[9]) + 1] += 40;
    add("application loop past the section", {appLoopTooLong});
    add("wrong table id", {Bytes{0x42, 0xF0, 0x05, 0, 0, 0, 0, 0}});
    add("empty buffers", {Bytes{0x74, 0xF0, 0x00}, Bytes{0x74, 0xF0, 0x01, 0x00}});
    add("rich", {richSection()});
    add("plain apps with usage and boundaries",
        {sectionOf(
            {},
            {App(2, 1, 1).with(fields).with(http).with(usageDescriptor(1)),
             App(2, 2, 1).with(applicationDescriptor({})).with(http).with(boundaryDescriptor({"http://a.tv", ""}))})});
}

void GoldenCorpus::addTruncationsAndMutations(std::vector<GoldenInput>& inputs)
{
    const Bytes rich = richSection();
    for (size_t length = 3; length < rich.size(); length += 3) {
        Bytes cut(rich.begin(), rich.begin() + long(length));
        setSectionLength(cut);
        inputs.push_back(sectionsInput("rich cut to " + std::to_string(length), {cut}));
    }
    Lcg random;
    for (int i = 0; i < 96; ++i) {
        Bytes mutant = rich;
        for (uint32_t flips = 1 + random.next() % 3; flips > 0; --flips)
            mutant[3 + random.next() % (mutant.size() - 3)] ^= uint8_t(1 + random.next() % 255);
        inputs.push_back(sectionsInput("rich mutant " + std::to_string(i), {mutant}));
    }
}

void GoldenCorpus::addXmlRecords(std::vector<GoldenInput>& inputs)
{
    auto add = [&inputs](std::string name, std::vector<XmlAitInput::Application> apps,
                         std::optional<int32_t> count = {}) {
        GoldenInput input;
        input.name = "xml " + std::move(name);
        input.kind = GoldenInput::XML_AIT;
        input.xml.applications = std::move(apps);
        input.xml.declaredCount = count;
        inputs.push_back(std::move(input));
    };
    XmlAitInput::Application app;
    app.name = "From XML";
    app.transports = {{3, std::string("http://xml.tv/"), 0, 0, 0, 0, 0}};
    app.location = "start.html";
    add("one application", {app});
    add("count of none", {app}, 0);
    add("negative count", {app}, -1);

    XmlAitInput::Application bare;
    add("nothing but identifiers", {bare});
    XmlAitInput::Application missing = app;
    missing.profilesMissing = true;
    missing.transportsMissing = true;
    missing.name.reset();
    missing.location.reset();
    add("arrays missing behind their counts", {missing});

    XmlAitInput::Application transports = app;
    transports.transports = {{1, std::nullopt, 1, 0x22, 0x33, 0x44, 5},
                             {0, std::string("http://zero.tv/"), 0, 0, 0, 0, 0},
                             {-1, std::string("http://negative.tv/"), 0, 0, 0, 0, 0},
                             {3, std::nullopt, 0, 0, 0, 0, 0},
                             {3, std::string("http://second.tv"), 0, 0, 0, 0, 0}};
    transports.boundaries = {std::string("http://xml.tv"), std::nullopt, std::string("dvb://1.2.3"), std::string("")};
    add("transports and boundaries of every kind", {transports});

    std::vector<XmlAitInput::Application> several;
    for (int32_t code : {1, 2, 7, 99, -3}) {
        XmlAitInput::Application a = app;
        a.applicationId = uint32_t(500 + code);
        a.controlCode = code;
        a.priority = code * 60;
        a.serviceBound = code == 2;
        a.usageType = code == 7 ? 1 : 0;
        a.visibility = code & 3;
        a.profiles = {{uint16_t(code == 99 ? 0x0004 : 0), 1, uint8_t(code == 7 ? 3 : 1), 1}};
        several.push_back(a);
    }
    XmlAitInput::Application wide = app;
    wide.organisationId = 0xFFFFFFFF;
    wide.applicationId = 0x12345;
    several.push_back(wide);
    add("several applications", several);
}

std::string goldenText(const std::string& group)
{
    std::string text;
    for (GoldenInput& input : GoldenCorpus::inputs(group)) {
        GoldenPrinter parsed;
        GoldenActivation activated;
        if (input.kind == GoldenInput::SECTIONS) {
            parsed.sections(input.sections);
            activated.sections(input.sections, false);
            activated.sections(input.sections, true);
        } else if (input.kind == GoldenInput::XML_AIT) {
            parsed.xmlAit(input.xml);
            activated.xmlAit(input.xml);
        } else {
            parsed.boundaryDescriptor(input.sections.at(0));
        }
        text += "== " + input.name + "\n" + parsed.text() + activated.text();
    }
    return text;
}

}  // namespace tesmo_test
