// hbbtv-sim: plays a broadcast capture through libtesmo_hbbtv, acting as the TV platform
// and the browser core, and shows what the TV would do.

#include <sys/stat.h>

#include <cstdio>
#include <set>
#include <string>
#include <vector>

#include "AitDecoder.h"
#include "Options.h"
#include "Script.h"
#include "ServiceScanner.h"
#include "SimulatedTv.h"
#include "Timeline.h"
#include "TransportStream.h"

namespace {

int fail(const std::string& message)
{
    std::fprintf(stderr, "hbbtv-sim: %s\n", message.c_str());
    return 2;
}

bool exists(const std::string& path)
{
    struct stat info;
    return stat(path.c_str(), &info) == 0;
}

// Without a capture: the bundled sample, with its scenario and carousel.
void useSample(Options& options)
{
    const std::string dir = TESMO_SAMPLE_DIR;
    options.capture = dir + "/sample.ts";
    if (options.script.empty() && exists(dir + "/sample.script"))
        options.script = dir + "/sample.script";
    if (options.carouselDir.empty())
        options.carouselDir = dir + "/carousel";
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
    for (const Service& s : services) {
        std::string ait;
        for (const AitStream& a : s.aitStreams)
            ait += " AIT on PID " + hex4(a.pid) + (a.isHbbTV() ? " (HbbTV)" : " (not HbbTV)");
        std::printf("  service %s \"%s\"%s%s\n", hex4(s.serviceId).c_str(), s.name.c_str(),
                    s.provider.empty() ? "" : (" from \"" + s.provider + "\"").c_str(), ait.empty() ? " without an AIT" : ait.c_str());
    }
}

const Service* chooseService(const std::vector<Service>& services, const Options& options, std::string& error)
{
    for (const Service& s : services)
        if (options.service ? s.serviceId == *options.service : s.hbbtvStream() != nullptr)
            return &s;
    error = options.service ? "no service " + hex4(*options.service) + " in the capture"
                            : std::string("no service of the capture signals an HbbTV AIT");
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

} // namespace

int main(int argc, char** argv)
{
    Options options;
    std::string error;
    bool wantHelp = false;
    if (!parseOptions(argc, argv, options, error, wantHelp))
        return fail(error + " (see --help)");
    if (wantHelp) {
        std::fputs(usage().c_str(), stdout);
        return 0;
    }
    if (options.capture.empty())
        useSample(options);

    TransportStream stream;
    if (!stream.open(options.capture, error))
        return fail(error);
    const std::vector<Service> services = scanServices(stream);
    listServices(stream, services, options.json || options.dumpAit);
    const Service* service = chooseService(services, options, error);
    if (!service)
        return fail(error);
    const AitStream* ait = service->hbbtvStream();
    if (!ait && !service->aitStreams.empty())
        ait = &service->aitStreams.front();
    if (!ait)
        return fail("service " + hex4(service->serviceId) + " signals no AIT");
    const std::vector<TimedSection> sections = stream.sectionsOnPid(ait->pid);
    if (options.dumpAit) {
        dumpAit(sections);
        return 0;
    }

    std::vector<ScriptAction> script;
    if (!options.script.empty() && !loadScript(options.script, script, error))
        return fail(error);
    if (!options.json)
        std::printf("playing service %s: %zu AIT section(s) on PID %s\n\n", hex4(service->serviceId).c_str(),
                    sections.size(), hex4(ait->pid).c_str());

    Timeline timeline(stdout, options.json);
    SimulatedTv& tv = SimulatedTv::get();
    tv.configure(options, timeline);
    tv.run(sections, {stream.originalNetworkId(), stream.transportStreamId(), service->serviceId}, script);
    return 0;
}
