// make-sample: builds the bundled sample transport stream from its readable description.
//   make-sample DESCRIPTION OUTPUT.ts

#include <cstdio>
#include <fstream>
#include <iterator>
#include <map>
#include <set>

#include "CarouselWriter.h"
#include "SampleDescription.h"
#include "TsWriter.h"

using namespace tesmo_test;

namespace {

const size_t MAX_PSI_SECTION = 1024;

Bytes aitSection(const SampleService& sample, size_t index)
{
    AITSection section;
    section.version(sample.aitVersion).number(uint8_t(index), uint8_t(sample.sections.size() - 1));
    for (const SampleApplication& app : sample.sections[index]) {
        App entry(app.organisationId, app.applicationId, app.controlCode);
        entry.with(applicationDescriptor(app.descriptor));
        if (!app.name.empty())
            entry.with(nameDescriptor(app.name));
        for (const Bytes& transport : app.transports)
            entry.with(transport);
        if (!app.location.empty())
            entry.with(locationDescriptor(app.location));
        if (!app.boundaries.empty())
            entry.with(boundaryDescriptor(app.boundaries));
        section.application(entry);
    }
    return section.bytes();
}

Bytes pmtOf(const SampleService& sample)
{
    const Bytes signalling = descriptor(0x6F, {0x80, 0x10, uint8_t(0xE0 | sample.aitVersion)});  // HbbTV, its version
    const Bytes carousel = concat({descriptor(0x52, {sample.carouselTag}), descriptor(0x13, {0, 0, 0, 1, 0})});
    std::vector<Stream> streams = {{0x05, sample.aitPid, signalling}};
    if (sample.carouselPid)
        streams.push_back({0x0B, sample.carouselPid, carousel});
    if (sample.eventPid)
        streams.push_back({0x0C, sample.eventPid, descriptor(0x52, {sample.eventTag})});
    return pmtSection(sample.serviceId, streams);
}

// The files of the service's carousel folder that the description names, as an object
// carousel.
bool carouselSections(const std::string& directory, const SampleService& sample, std::vector<Bytes>& sections,
                      std::string& error)
{
    std::vector<carousel::CarouselFile> files;
    std::set<std::string> compressed;
    for (const SampleCarouselFile& file : sample.carouselFiles) {
        std::ifstream in(directory + "/" + sample.carouselFolder + "/" + file.path, std::ios::binary);
        if (!in) {
            error = "cannot read the carousel file " + file.path;
            return false;
        }
        files.push_back({file.path, std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>())});
        if (file.compressed)
            compressed.insert(file.path);
    }
    carousel::CarouselIds ids;
    ids.associationTag = sample.carouselTag;
    ids.blockSize = sample.carouselBlockSize;
    std::vector<carousel::CarouselStreamEvent> streamEvents;
    for (const SampleStreamEvent& streamEvent : sample.streamEvents)
        streamEvents.push_back({streamEvent.path, streamEvent.events, sample.eventTag});
    if (!files.empty())
        sections = carousel::writeObjectCarousel(files, ids, compressed, streamEvents);
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: make-sample DESCRIPTION OUTPUT.ts\n");
        return 2;
    }
    SampleDescription sample;
    std::string error;
    if (!parseDescription(argv[1], sample, error)) {
        std::fprintf(stderr, "make-sample: %s\n", error.c_str());
        return 2;
    }
    std::vector<std::vector<Bytes>> carousels;
    for (const SampleService& service : sample.services) {
        carousels.emplace_back();
        if (!carouselSections(sample.directory, service, carousels.back(), error)) {
            std::fprintf(stderr, "make-sample: %s\n", error.c_str());
            return 2;
        }
    }
    std::vector<Program> programs;
    std::vector<SdtService> names;
    for (const SampleService& service : sample.services) {
        programs.push_back({service.serviceId, service.pmtPid});
        names.push_back({service.serviceId, service.provider, service.name});
    }
    // An AIT or PMT section holds at most 1024 bytes: a description that needs more is refused.
    for (const SampleService& service : sample.services) {
        bool fits = pmtOf(service).size() <= MAX_PSI_SECTION;
        for (size_t i = 0; i < service.sections.size(); ++i)
            fits = fits && aitSection(service, i).size() <= MAX_PSI_SECTION;
        if (!fits) {
            std::fprintf(stderr, "make-sample: service %u needs a section of more than %zu bytes\n", service.serviceId,
                         MAX_PSI_SECTION);
            return 2;
        }
    }
    TsWriter ts;
    for (int round = 0; round < sample.repeat; ++round) {
        ts.writeSection(0x0000, patSection(sample.transportStreamId, programs));
        for (const SampleService& service : sample.services)
            ts.writeSection(service.pmtPid, pmtOf(service));
        ts.writeSection(0x0011, sdtSection(sample.transportStreamId, sample.originalNetworkId, names));
        for (size_t s = 0; s < sample.services.size(); ++s) {
            const SampleService& service = sample.services[s];
            for (size_t i = 0; i < service.sections.size(); ++i)
                ts.writeSection(service.aitPid, aitSection(service, i));
            for (const Bytes& section : carousels[s])
                ts.writeSection(service.carouselPid, section);
            std::map<uint16_t, uint8_t> versions;  // each occurrence of an event is a new version
            for (const SampleEventOccurrence& event : service.occurrences)
                ts.writeSection(service.eventPid, carousel::streamEventSection(event.eventId, versions[event.eventId]++, event.text));
        }
    }
    std::ofstream out(argv[2], std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(ts.bytes().data()), std::streamsize(ts.bytes().size()));
    if (!out) {
        std::fprintf(stderr, "make-sample: cannot write %s\n", argv[2]);
        return 2;
    }
    return 0;
}
