#include "SampleWriter.h"

#include <sys/stat.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <set>

#include "AvSource.h"
#include "CarouselWriter.h"
#include "ObjectCarousel.h"

using namespace tesmo_test;

namespace {

const size_t MAX_PSI_SECTION = 1024;
const size_t MAX_BLOCKS = 0xFFFF;  // a block's number is 16 bits
const size_t MAX_FILE = 16u << 20;  // what a receiver takes in one module
const size_t MAX_DSMCC_SECTION = 4096;
const size_t MAX_AV_FILE = 64u << 20;

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

Bytes pmtOf(const SampleService& sample, const AvSource& av)
{
    const Bytes signalling = descriptor(0x6F, {0x80, 0x10, uint8_t(0xE0 | sample.aitVersion)});  // HbbTV, its version
    const Bytes carousel = concat({descriptor(0x52, {sample.carouselTag}), descriptor(0x13, {0, 0, 0, 1, 0})});
    std::vector<Stream> streams = av.streams;
    streams.push_back({0x05, sample.aitPid, signalling});
    if (sample.carouselPid)
        streams.push_back({0x0B, sample.carouselPid, carousel});
    if (sample.eventPid)
        streams.push_back({0x0C, sample.eventPid, descriptor(0x52, {sample.eventTag})});
    return av.streams.empty() ? pmtSection(sample.serviceId, streams)
                              : pmtSection(sample.serviceId, streams, {}, av.pcrPid);
}

// The service's audio and video, on PIDs that nothing else of the sample uses.
bool readAv(const std::string& directory, const SampleService& service, const std::set<uint16_t>& taken, AvSource& av,
            std::string& error)
{
    if (service.avFile.empty())
        return true;
    if (!av.read(directory + "/" + service.avFile, service.avPid, MAX_AV_FILE, error))
        return false;
    for (const Stream& stream : av.streams)
        if (stream.pid != service.avPid && taken.count(stream.pid)) {
            error = "service " + std::to_string(service.serviceId) + ": its audio and video need PID " +
                    std::to_string(stream.pid) + ", which is used already";
            return false;
        }
    return true;
}

std::set<uint16_t> pidsOf(const SampleDescription& sample)
{
    std::set<uint16_t> pids;
    for (const SampleService& service : sample.services)
        for (uint16_t pid : {service.pmtPid, service.aitPid, service.carouselPid, service.eventPid, service.avPid})
            pids.insert(pid);
    return pids;
}

bool readCarouselFile(const std::string& path, size_t limit, std::string& content)
{
    struct stat info;
    if (stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode) || size_t(info.st_size) > limit)
        return false;
    std::ifstream in(path, std::ios::binary);
    content.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    return bool(in) || in.eof();
}

// What a receiver's carousel client makes of the sections: every file as it was given, or
// why not (a section too large, more blocks than a module can number, and the like).
std::string readBack(const std::vector<Bytes>& sections, const std::vector<carousel::CarouselFile>& files)
{
    carousel::ObjectCarousel oc;
    for (const Bytes& section : sections) {
        if (section.size() > MAX_DSMCC_SECTION)
            return "the carousel needs a section of more than " + std::to_string(MAX_DSMCC_SECTION) + " bytes";
        oc.addSection(section.data(), section.size());
    }
    for (const carousel::CarouselFile& file : files) {
        std::string content;
        if (oc.file(file.path, content) != carousel::ObjectCarousel::Lookup::FOUND || content != file.content)
            return "the carousel cannot carry " + file.path + " as written (too large or too many objects?)";
    }
    return "";
}

// The files of the service's carousel folder that the description names, as an object
// carousel, read back before it is taken.
bool carouselSections(const std::string& directory, const SampleService& sample, std::vector<Bytes>& sections,
                      std::string& error)
{
    std::vector<carousel::CarouselFile> files;
    std::set<std::string> compressed, named;
    const size_t limit = std::min(MAX_FILE, size_t(sample.carouselBlockSize) * MAX_BLOCKS) - 1024;  // room for BIOP
    for (const SampleCarouselFile& file : sample.carouselFiles) {
        std::string content;
        if (!named.insert(file.path).second) {
            error = "the carousel file " + file.path + " is named twice";
            return false;
        }
        if (!readCarouselFile(directory + "/" + sample.carouselFolder + "/" + file.path, limit, content)) {
            error = "the carousel file " + file.path + " is not a readable file of at most " + std::to_string(limit) +
                    " bytes (its module's room in blocks of " + std::to_string(sample.carouselBlockSize) + ")";
            return false;
        }
        files.push_back({file.path, std::move(content)});
        if (file.compressed)
            compressed.insert(file.path);
    }
    for (const SampleStreamEvent& streamEvent : sample.streamEvents)
        if (!named.insert(streamEvent.path).second) {
            error = "the carousel object " + streamEvent.path + " is named twice";
            return false;
        }
    carousel::CarouselIds ids;
    ids.associationTag = sample.carouselTag;
    ids.blockSize = sample.carouselBlockSize;
    std::vector<carousel::CarouselStreamEvent> streamEvents;
    for (const SampleStreamEvent& streamEvent : sample.streamEvents)
        streamEvents.push_back({streamEvent.path, streamEvent.events, sample.eventTag});
    if (files.empty() && streamEvents.empty())
        return true;
    sections = carousel::writeObjectCarousel(files, ids, compressed, streamEvents);
    error = readBack(sections, files);
    return error.empty();
}

bool fitsAPsiSection(const Bytes& section, const std::string& what, std::string& error)
{
    if (section.size() <= MAX_PSI_SECTION)
        return true;
    error = what + " needs a section of more than " + std::to_string(MAX_PSI_SECTION) + " bytes";
    return false;
}

}  // namespace

bool writeSample(const SampleDescription& sample, SampleStream& stream, std::string& error)
{
    std::vector<Program> programs;
    std::vector<SdtService> names;
    std::vector<std::vector<Bytes>> ait, carousels;
    std::vector<Bytes> pmts;
    std::set<uint16_t> taken = pidsOf(sample);
    for (const SampleService& service : sample.services) {
        programs.push_back({service.serviceId, service.pmtPid});
        names.push_back({service.serviceId, service.provider, service.name});
        const std::string what = "service " + std::to_string(service.serviceId);
        AvSource av;
        if (!readAv(sample.directory, service, taken, av, error))
            return false;
        for (const Stream& avStream : av.streams)
            taken.insert(avStream.pid);
        stream.avPackets.insert(stream.avPackets.end(), av.packets.begin(), av.packets.end());
        pmts.push_back(pmtOf(service, av));
        if (!fitsAPsiSection(pmts.back(), what, error))
            return false;
        ait.emplace_back();
        for (size_t i = 0; i < service.sections.size(); ++i) {
            ait.back().push_back(aitSection(service, i));
            if (!fitsAPsiSection(ait.back().back(), what, error))
                return false;
        }
        carousels.emplace_back();
        if (!carouselSections(sample.directory, service, carousels.back(), error))
            return false;
    }
    const Bytes pat = patSection(sample.transportStreamId, programs);
    const Bytes sdt = sdtSection(sample.transportStreamId, sample.originalNetworkId, names);
    if (!fitsAPsiSection(pat, "the PAT", error) || !fitsAPsiSection(sdt, "the SDT", error))
        return false;
    std::vector<PlayedSection>& sections = stream.sections;
    for (int round = 0; round < sample.repeat; ++round) {
        sections.push_back({0x0000, pat});
        for (size_t s = 0; s < sample.services.size(); ++s)
            sections.push_back({sample.services[s].pmtPid, pmts[s]});
        sections.push_back({0x0011, sdt});
        for (size_t s = 0; s < sample.services.size(); ++s) {
            const SampleService& service = sample.services[s];
            for (const Bytes& section : ait[s])
                sections.push_back({service.aitPid, section});
            for (const Bytes& section : carousels[s])
                sections.push_back({service.carouselPid, section});
            std::map<uint16_t, uint8_t> versions;  // each occurrence of an event is a new version
            for (const SampleEventOccurrence& event : service.occurrences)
                sections.push_back({service.eventPid, carousel::streamEventSection(
                                                          event.eventId, versions[event.eventId]++, event.text)});
        }
    }
    return true;
}
