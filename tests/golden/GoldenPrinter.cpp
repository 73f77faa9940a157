#include "GoldenPrinter.h"

#include <cstdio>

#include "ExactBuffer.h"
#include "si/AIT.h"
#include "si/ApplicationDomain.h"

using namespace TesmoHbbTV;

namespace tesmo_test {

namespace {

// URLs every domain is asked about, besides the application's own.
const char* const fixedProbes[] = {
    "http://example.tv/",
    "https://www.raiplay.it/hbbtv/x.html",
    "http://hbbtv.freeviewaustralia.tv/index.html",
    "dvb://1.2.3.5/index.html",
    "dvb://current.ait/1.1",
    "http://app1.tv/index.html",
    "",
};

std::string hex(unsigned long value)
{
    char text[24];
    std::snprintf(text, sizeof text, "0x%lx", value);
    return text;
}

std::string indexOf(const AIT& ait, const AITApplication* app)
{
    for (unsigned i = 0; i < ait.getNumApplications(); ++i)
        if (ait.getAITApplication(i) == app)
            return std::to_string(i);
    return app ? "?" : "none";
}

}  // namespace

std::string quoted(const std::string& text)
{
    std::string out = "\"";
    for (unsigned char c : text) {
        if (c == '"' || c == '\\') {
            out += '\\';
            out += char(c);
        } else if (c < 0x20 || c > 0x7E) {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\x%02x", c);
            out += escaped;
        } else {
            out += char(c);
        }
    }
    return out + "\"";
}

void GoldenPrinter::sections(const std::vector<Bytes>& sections)
{
    ref_ptr<AIT> ait(new AIT(0x1, 0x2, 0x3, nullptr));
    for (size_t i = 0; i < sections.size(); ++i) {
        ExactBuffer section(sections[i]);
        out << "section " << i << " (" << sections[i].size() << " bytes): parse " << ait->parse(section.get()) << "\n";
    }
    table(*ait);
}

void GoldenPrinter::xmlAit(XmlAitInput& input)
{
    ref_ptr<AIT> ait(new AIT());
    out << "xml record: parse " << ait->parse(input.record()) << "\n";
    table(*ait);
}

void GoldenPrinter::boundaryDescriptor(const Bytes& descriptor)
{
    ExactBuffer bytes(descriptor);
    ApplicationDomain parsed;
    parsed.parseSimpleApplicationBoundaryExtensionDescriptor(SectionReader(bytes.get(), bytes.size));
    out << "boundary descriptor (" << descriptor.size() << " bytes)\n";
    domain(parsed, {});
    ApplicationDomain extended;
    out << "extend http://example.tv/app: add " << extended.addBoundaryExtension("http://example.tv/app") << " extend "
        << extended.extendDomain(parsed) << "\n";
    domain(extended, {});
}

void GoldenPrinter::table(const AIT& ait)
{
    out << "table: complete " << ait.isComplete() << " invalid " << ait.isInvalid() << " xml " << ait.isXMLAIT()
        << " corrected " << ait.wasCorrected() << " version " << int(ait.getVersionNumber()) << " last_section "
        << int(ait.getLastSectionNumber()) << " ids " << hex(ait.getOriginalNetworkId()) << "."
        << hex(ait.getTransportStreamId()) << "." << hex(ait.getServiceId()) << " applications "
        << ait.getNumApplications() << "\n";
    const auto common = ait.getCommonTransports();
    for (const auto& labelled : common) {
        out << "  common label " << int(labelled.first) << ": ";
        if (labelled.second)
            transport(*labelled.second, "");
        else
            out << "null\n";
    }
    for (unsigned i = 0; i < ait.getNumApplications(); ++i) {
        out << "app " << i << ":";
        application(*ait.getAITApplication(i));
    }
    lookups(ait);
}

void GoldenPrinter::lookups(const AIT& ait)
{
    for (bool broadband : {true, false}) {
        out << "  failover broadband " << broadband << ":";
        const AITApplication* app = ait.getAITApplication(AITApplication::AUTOSTART, broadband);
        for (int step = 0; app && step <= int(ait.getNumApplications()); ++step) {
            out << " " << indexOf(ait, app);
            app = ait.getNextAITApplication(app, AITApplication::AUTOSTART, broadband);
        }
        out << " | present " << indexOf(ait, ait.getAITApplication(AITApplication::PRESENT, broadband)) << "\n";
    }
    out << "  teletext " << indexOf(ait, ait.getFirstDigitalTeletextAITApplication()) << " usage 1 "
        << indexOf(ait, ait.getFirstAITApplicationOfUsageType(AITApplication::DIGITAL_TELETEXT)) << " by id:";
    for (unsigned i = 0; i < ait.getNumApplications(); ++i) {
        const AITApplication* app = ait.getAITApplication(i);
        out << " "
            << indexOf(ait, ait.getAITApplication(app->getOrganisationIdentifier(), app->getApplicationIdentifier()))
            << (ait.isHandledAITApplication(app) ? "h" : "");
    }
    out << "\n";
}

void GoldenPrinter::application(const AITApplication& app)
{
    out << " org " << hex(app.getOrganisationIdentifier()) << " app " << hex(app.getApplicationIdentifier())
        << " control " << int(app.getControlCode()) << " usage " << int(app.getApplicationUsageType()) << " signed "
        << app.isSigned() << " valid_id " << app.hasValidAppId() << " xml " << app.isXMLAITbased() << " service_bound "
        << app.isSignalledAsServiceBound() << " priority " << int(app.getApplicationPriority()) << " profile_supported "
        << app.isPlatformProfileSupported() << "\n";
    out << "  name " << quoted(app.getApplicationName()) << " location " << quoted(app.getApplicationLocation())
        << "\n";
    descriptors(app);
    transports(app);
    std::vector<std::string> probes;
    for (const auto& t : app.getTransports())
        if (t)
            probes.push_back(t->getURL(app.getApplicationLocation()));
    domain(*app.getApplicationDomain(), probes);
}

void GoldenPrinter::descriptors(const AITApplication& app)
{
    if (const ApplicationDescriptor* d = app.getApplicationDescriptor()) {
        out << "  descriptor: visibility " << d->visibility << " priority " << int(d->priority) << " service_bound "
            << d->serviceBound << " labels";
        for (uint8_t label : d->transportProtocolLabels)
            out << " " << int(label);
        out << " profiles";
        for (const PlatformProfile& p : d->profiles)
            out << " " << hex(p.applicationProfile) << "/" << int(p.major) << "." << int(p.minor) << "." << int(p.micro)
                << (p.isCompatible(0x0000, 1, 1, 1) ? "+" : "-") << (p.isCompatible(0x000F, 1, 2, 1) ? "+" : "-");
        out << "\n";
    } else {
        out << "  descriptor: none\n";
    }
    if (const ApplicationRecordingDescriptor* r = app.getApplicationRecordingDescriptor()) {
        out << "  recording: scheduled " << r->scheduledRecording << " trick " << r->trickModeAware << " time_shift "
            << r->timeShift << " dynamic " << r->dynamic << " av_synced " << r->avSynced << " replay "
            << r->initiatingReplay << " tags";
        for (uint8_t tag : r->componentTags)
            out << " " << hex(tag);
        out << "\n";
    }
}

void GoldenPrinter::transports(const AITApplication& app)
{
    int index = 0;
    for (const auto& t : app.getTransports()) {
        out << "  transport " << index++ << ": ";
        if (t)
            transport(*t, app.getApplicationLocation());
        else
            out << "null\n";
    }
    for (bool broadband : {true, false}) {
        out << "  usable broadband " << broadband << ":";
        const AITApplicationTransport* t = app.getFirstAvailableTransport(broadband);
        for (int step = 0; t && step <= int(app.getNumTransports()); ++step) {
            out << " " << int(t->getLabel()) << "/" << int(t->getProtocolId());
            t = app.getNextAvailableTransport(t, broadband);
        }
        out << "\n";
    }
    AITApplicationTransport::ProtocolId preferred{};
    const bool hasPreferred = app.getPreferredTransportProtocol(preferred);
    out << "  preferred " << (hasPreferred ? std::to_string(int(preferred)) : "none") << " over http "
        << app.isTransportedOverProtocol(AITApplicationTransport::HTTP) << " over carousel "
        << app.isTransportedOverProtocol(AITApplicationTransport::OBJECT_CAROUSEL) << "\n";
}

void GoldenPrinter::transport(const AITApplicationTransport& t, const std::string& location)
{
    out << "protocol " << int(t.getProtocolId()) << " label " << int(t.getLabel()) << " base " << quoted(t.getUrlBase())
        << " remote " << t.isRemoteConnection() << " service " << hex(t.getOriginalNetworkId()) << "."
        << hex(t.getTransportStreamId()) << "." << hex(t.getServiceId()) << " tag " << hex(t.getComponentTag())
        << " url " << quoted(t.getURL(location)) << " host " << quoted(t.getHostname()) << "\n";
}

void GoldenPrinter::domain(const ApplicationDomain& domain, std::vector<std::string> probes)
{
    out << "  boundaries";
    for (const std::string& boundary : domain.getBoundaries()) {
        out << " " << quoted(boundary);
        probes.push_back(boundary + "/index.html");
    }
    out << "\n  within";
    for (const char* probe : fixedProbes)
        probes.push_back(probe);
    for (const std::string& probe : probes)
        out << " " << domain.isWithinBoundaries(probe);
    out << "\n";
}

}  // namespace tesmo_test
