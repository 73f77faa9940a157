// What the platform takes from a capture.

#include "Broadcast.h"

#include <sys/stat.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <set>

#include "AitDecoder.h"
#include "CarouselExtraction.h"
#include "ObjectCarousel.h"
#include "ScriptRunner.h"
#include "ServiceScanner.h"

namespace {

const uint16_t EIT_PID = 0x0012;
const uint8_t PRESENT_FOLLOWING_ACTUAL = 0x4E;

int fail(const Options& options, const std::string& message)
{
    std::fprintf(stderr, "%s: %s\n", options.product.c_str(), message.c_str());
    return 2;
}

bool exists(const std::string& path)
{
    struct stat info;
    return stat(path.c_str(), &info) == 0;
}

// Without a capture: the bundled sample, with its scenario in hbbtv-sim (in the browser the
// viewer has the remote control); its files come from the object carousel in its stream.
void useSample(Options& options)
{
    const std::string dir = TESMO_SAMPLE_DIR;
    options.capture = dir + "/sample.ts";
    if (options.script.empty() && !options.isBrowser() && exists(dir + "/sample.script"))
        options.script = dir + "/sample.script";
}

std::string hex4(unsigned value)
{
    char text[8];
    std::snprintf(text, sizeof text, "0x%04X", value);
    return text;
}

void listServices(const TransportStream& stream, const std::vector<Service>& services, bool json)
{
    if (json)
        return;
    std::printf("capture: %zu-byte packets, %zu packets, transport stream %s, original network %s\n",
                stream.packetSize(), stream.packetCount(), hex4(stream.transportStreamId()).c_str(),
                hex4(stream.originalNetworkId()).c_str());
    if (stream.networkId())
        std::printf("  network %s \"%s\"\n", hex4(stream.networkId()).c_str(), stream.networkName().c_str());
    for (const Service& s : services) {
        std::string ait;
        for (const AitStream& a : s.aitStreams)
            ait += " AIT on PID " + hex4(a.pid) + (a.isHbbTV() ? " (HbbTV)" : " (not HbbTV)");
        std::printf("  service %s \"%s\"%s%s\n", hex4(s.serviceId).c_str(), s.name.c_str(),
                    s.provider.empty() ? "" : (" from \"" + s.provider + "\"").c_str(),
                    ait.empty() ? " without an AIT" : ait.c_str());
    }
}

// Why no service of the capture can be played.
std::string noServiceReason(const TransportStream& stream, const std::vector<Service>& services)
{
    if (stream.programs().empty())
        return "no service can be played: the capture has no PAT";
    size_t withAit = 0;
    std::set<uint16_t> types;
    for (const Service& s : services) {
        withAit += !s.aitStreams.empty();
        for (const AitStream& a : s.aitStreams)
            types.insert(a.applicationTypes.begin(), a.applicationTypes.end());
    }
    std::string listed;
    for (uint16_t type : types)
        listed += " " + hex4(type);
    return "no service of the capture signals an HbbTV AIT: " + std::to_string(withAit) + " of " +
           std::to_string(services.size()) + " service(s) signal an AIT, for application type(s)" +
           (listed.empty() ? " none" : listed) + " only";
}

// The service asked for; else the first that signals an HbbTV AIT; else, as a receiver
// would, the first whose AIT stream lists no application type at all (note says so).
const Service* chooseService(const TransportStream& stream, const std::vector<Service>& services,
                             const Options& options, std::string& note, std::string& error)
{
    for (const Service& s : services)
        if (options.service ? s.serviceId == *options.service : s.hbbtvStream() != nullptr)
            return &s;
    if (options.service) {
        error = "no service " + hex4(*options.service) + " in the capture";
        return nullptr;
    }
    for (const Service& s : services)
        if (const AitStream* unlabelled = s.unlabelledStream()) {
            note = "no service lists application type 0x0010; the AIT of service " + hex4(s.serviceId) + " on PID " +
                   hex4(unlabelled->pid) + " lists no type at all, so it is played as HbbTV";
            return &s;
        }
    error = noServiceReason(stream, services);
    return nullptr;
}

void dumpAit(const std::vector<TimedSection>& sections)
{
    std::set<std::pair<int, int>> shown;
    for (const TimedSection& section : sections) {
        const DecodedAit ait = decodeAit(section.bytes);
        if (!ait.readable || !shown.insert({ait.version, ait.sectionNumber}).second)
            continue;
        std::printf("AIT application type %s, version %d, section %d of %d, %zu application(s)\n",
                    hex4(ait.applicationType).c_str(), ait.version, ait.sectionNumber, ait.lastSectionNumber,
                    ait.applications.size());
        for (const DecodedTransport& t : ait.commonTransports)
            std::printf("  common transport %d: %s\n", t.label, t.describe().c_str());
        for (const DecodedApplication& app : ait.applications) {
            std::printf("  0x%08X.0x%04X \"%s\" %s, priority %d, visibility %d%s\n", app.organisationId,
                        app.applicationId, app.name.c_str(), controlCodeName(app.controlCode).c_str(), app.priority,
                        app.visibility, app.serviceBound ? ", service-bound" : "");
            for (const DecodedProfile& p : app.profiles)
                std::printf("    profile 0x%04X version %d.%d.%d\n", p.profile, p.major, p.minor, p.micro);
            for (const DecodedTransport& t : app.transports)
                std::printf("    transport %d: %s\n", t.label, t.describe().c_str());
            if (!app.location.empty())
                std::printf("    location %s\n", app.location.c_str());
            for (const std::string& b : app.boundaries)
                std::printf("    boundary %s\n", b.c_str());
        }
    }
}

const AitStream* aitStreamOf(const Service& service)
{
    if (const AitStream* hbbtv = service.hbbtvStream())
        return hbbtv;
    if (const AitStream* unlabelled = service.unlabelledStream())
        return unlabelled;
    return service.aitStreams.empty() ? nullptr : &service.aitStreams.front();
}

// The component tags of the local object carousels that the AIT's applications name.
std::set<uint8_t> carouselTags(const std::vector<TimedSection>& aitSections)
{
    std::set<uint8_t> tags;
    for (const TimedSection& section : aitSections) {
        const DecodedAit ait = decodeAit(section.bytes);
        for (const DecodedApplication& app : ait.applications)
            for (const DecodedTransport& t : app.transports)
                if (t.protocol == 0x0001 && !t.remote)
                    tags.insert(t.componentTag);
    }
    return tags;
}

// The PID of the object carousel: as given; else the service's carousel stream whose
// component tag the AIT names; else its first carousel stream.
bool carouselPid(const Service* service, const std::set<uint8_t>& tags, const Options& options, uint16_t& pid)
{
    if (options.carouselPid) {
        pid = *options.carouselPid;
        return true;
    }
    if (!service || service->carouselStreams.empty())
        return false;
    pid = service->carouselStreams.front().pid;
    for (const CarouselStream& stream : service->carouselStreams)
        if (tags.count(stream.componentTag)) {
            pid = stream.pid;
            break;
        }
    return true;
}

// --carousel-list and --carousel-extract: the whole capture's carousel sections at once.
int carouselCommand(const TransportStream& stream, uint16_t pid, const Options& options)
{
    carousel::ObjectCarousel oc(size_t(options.carouselMemoryMb) << 20);
    const std::vector<TimedSection> sections = stream.sectionsOnPid(pid);
    for (const TimedSection& section : sections)
        oc.addSection(section.bytes.data(), section.bytes.size());
    std::printf("object carousel on PID %s: %zu section(s)%s\n", hex4(pid).c_str(), sections.size(),
                oc.hasGateway() ? "" : ", no service gateway (no DownloadServerInitiate)");
    size_t files = 0, written = 0, unreadable = 0;
    for (const carousel::ObjectCarousel::Entry& e : oc.list()) {
        if (options.carouselList) {
            const std::string size = e.kind == "file" && e.problem.empty() ? std::to_string(e.size) + " bytes" : "";
            std::printf("  %-32s %-15s %12s  module %u v%u  %s\n", e.path.c_str(), e.kind.c_str(), size.c_str(),
                        e.module, e.version, e.problem.empty() ? "complete" : e.problem.c_str());
        }
        if (!options.carouselExtract.empty() && !e.problem.empty())
            std::printf("  not extracted: %s (%s)\n", e.path.c_str(), e.problem.c_str());
        if (e.kind != "file")
            continue;
        ++files;
        std::string content;
        if (!e.problem.empty() || oc.file(e.path.substr(1), content) != carousel::ObjectCarousel::Lookup::FOUND)
            ++unreadable;
        else if (!options.carouselExtract.empty() && carousel::extractFile(options.carouselExtract, e.path, content))
            ++written;
        else if (!options.carouselExtract.empty())
            std::printf("  not extracted: %s (cannot be written there)\n", e.path.c_str());
    }
    if (!options.carouselExtract.empty()) {
        std::printf("wrote %zu of %zu file(s) to %s\n", written, files, options.carouselExtract.c_str());
    } else {
        std::printf("%zu file(s), %zu of them not readable from this capture\n", files, unreadable);
        for (const carousel::ObjectCarousel::ModuleStatus& m : oc.moduleStatus())
            std::printf("  module %u v%u: %u bytes%s in %zu block(s), %s\n", m.id, m.version, m.size,
                        m.compressed ? " (zlib)" : "", m.blocks, m.problem.empty() ? "complete" : m.problem.c_str());
        if (oc.unannouncedBlocks() > 0)
            std::printf("  %zu block(s) of modules that no DownloadInfoIndication of the capture announces\n",
                        oc.unannouncedBlocks());
    }
    return oc.hasGateway() ? 0 : 1;
}

}  // namespace

int Broadcast::prepare(int argc, char** argv, Options& options)
{
    this->options = &options;
    const int commandLine = readCommandLine(argc, argv, options, ScriptRunner::help());
    if (commandLine != PLAY)
        return commandLine;
    if (options.capture.empty() && !options.startUrl.empty())
        return readScript(options);
    if (options.capture.empty())
        useSample(options);

    std::string error;
    if (!stream.open(options.capture, error))
        return fail(options, error);
    services = scanServices(stream);
    const bool carouselOnly = options.carouselList || !options.carouselExtract.empty();
    listServices(stream, services, options.json || options.dumpAit || carouselOnly);
    std::string note;
    const Service* service = chooseService(stream, services, options, note, error);
    const AitStream* ait = service ? aitStreamOf(*service) : nullptr;
    aitSections = ait ? stream.sectionsOnPid(ait->pid) : std::vector<TimedSection>();
    uint16_t ocPid = 0;
    if (carouselOnly) {
        if (!carouselPid(service, carouselTags(aitSections), options, ocPid))
            return fail(options,
                        service ? "service " + hex4(service->serviceId) + " signals no object carousel" : error);
        return carouselCommand(stream, ocPid, options);
    }
    if (!service)
        return fail(options, error);
    if (!ait)
        return fail(options, "service " + hex4(service->serviceId) + " signals no AIT");
    if (options.dumpAit) {
        dumpAit(aitSections);
        return 0;
    }
    const int scriptProblem = readScript(options);
    if (scriptProblem != PLAY)
        return scriptProblem;
    if (!options.json && !note.empty())
        std::printf("%s\n", note.c_str());
    if (!options.json)
        std::printf("playing service %s: %zu AIT section(s) on PID %s\n\n", hex4(service->serviceId).c_str(),
                    aitSections.size(), hex4(ait->pid).c_str());
    if (options.carouselDir.empty() && carouselPid(service, carouselTags(aitSections), options, ocPid))
        carouselSections = stream.sectionsOnPid(ocPid);
    eventSections = eventSectionsOf(*service);
    eitSections = eitSectionsOf(*service);
    ids = {stream.originalNetworkId(), stream.transportStreamId(), service->serviceId};
    serviceName = service->name;
    std::vector<Channel> channels;
    for (const Service& s : services)
        channels.push_back({ChannelList::ccidOf(ids.originalNetworkId, ids.transportStreamId, s.serviceId),
                            ids.originalNetworkId, ids.transportStreamId, s.serviceId, s.name,
                            aitStreamOf(s) != nullptr, s.components, stream.networkId()});
    ChannelList::get().set(std::move(channels));
    channel = ChannelList::get().byTriplet(ids.originalNetworkId, ids.transportStreamId, ids.serviceId);
    return PLAY;
}

TvPlatform::Tuned Broadcast::takeFirst()
{
    return {std::move(aitSections), std::move(carouselSections), std::move(eventSections), std::move(eitSections)};
}

TvPlatform::Tuned Broadcast::tune(const Channel& to) const
{
    for (const Service& service : services)
        if (service.serviceId == to.serviceId)
            return sectionsOf(service);
    return {};
}

TvPlatform::Tuned Broadcast::sectionsOf(const Service& service) const
{
    TvPlatform::Tuned tuned;
    const AitStream* ait = aitStreamOf(service);
    if (ait)
        tuned.aitSections = stream.sectionsOnPid(ait->pid);
    uint16_t ocPid = 0;
    if (options->carouselDir.empty() && carouselPid(&service, carouselTags(tuned.aitSections), *options, ocPid))
        tuned.carouselSections = stream.sectionsOnPid(ocPid);
    tuned.eventSections = eventSectionsOf(service);
    tuned.eitSections = eitSectionsOf(service);
    return tuned;
}

std::map<uint8_t, std::vector<TimedSection>> Broadcast::eventSectionsOf(const Service& service) const
{
    std::map<uint8_t, std::vector<TimedSection>> sections;
    for (const CarouselStream& events : service.eventStreams)
        sections[events.componentTag] = stream.sectionsOnPid(events.pid);
    return sections;
}

// The present/following sections of the service among the EIT's.
std::vector<TimedSection> Broadcast::eitSectionsOf(const Service& service) const
{
    std::vector<TimedSection> sections;
    for (TimedSection& section : stream.sectionsOnPid(EIT_PID))
        if (section.bytes.size() >= 5 && section.bytes[0] == PRESENT_FOLLOWING_ACTUAL &&
            (section.bytes[3] << 8 | section.bytes[4]) == service.serviceId)
            sections.push_back(std::move(section));
    return sections;
}

int Broadcast::readScript(const Options& options)
{
    std::string error;
    if (!options.script.empty() && !loadScript(options.script, ScriptRunner::verbs(), script, error))
        return fail(options, error);
    if (!options.startUrl.empty())
        script.insert(script.begin(), {0, "start-url", options.startUrl, 0});
    return PLAY;
}
