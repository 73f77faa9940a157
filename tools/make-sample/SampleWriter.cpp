#include "SampleWriter.h"

#include <sys/stat.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <set>

#include "AvSource.h"
#include "CarouselWriter.h"
#include "ObjectCarousel.h"

using namespace tesmo_test;

namespace {

const size_t MAX_PSI_SECTION = 1024;
const size_t MAX_EIT_SECTION = 4096;
const size_t MAX_BLOCKS = 0xFFFF;  // a block's number is 16 bits
const size_t MAX_FILE = 16u << 20;  // what a receiver takes in one module
const size_t MAX_DSMCC_SECTION = 4096;
const size_t MAX_AV_FILE = 64u << 20;
const uint16_t PAT_PID = 0x0000;
const uint16_t NIT_PID = 0x0010;
const uint16_t SDT_PID = 0x0011;
const uint16_t EIT_PID = 0x0012;
const uint8_t PES_PRIVATE_DATA = 0x06;  // the stream_type of DVB subtitles
const uint8_t STREAM_IDENTIFIER_TAG = 0x52;
const uint8_t SUBTITLES = 0x10, HARD_OF_HEARING_SUBTITLES = 0x20;  // subtitling_type, no aspect ratio given
const uint16_t SUBTITLE_PAGE = 1;  // the composition and ancillary page of every subtitle stream
const uint64_t CLOCK_A_ROUND = 90000;  // a second of the 90 kHz clock from one round's display set to the next
const uint64_t PTS_MASK = (uint64_t(1) << 33) - 1;
const uint8_t RUNNING = 4, NOT_RUNNING = 1;

// What a service puts on air each round.
struct ServiceOnAir {
    Bytes pmt;
    std::vector<Bytes> ait;
    std::vector<Bytes> carousel;
    std::vector<std::vector<Bytes>> eit;  // each version's present and following sections
    uint64_t clockStart = 0;  // of its audio and video, which its subtitles keep to
};

struct MultiplexTables {
    Bytes pat, sdt, nit;  // nit empty without a network
};

struct StreamTags {
    std::vector<uint8_t> av, subtitles;
};

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

Bytes pmtOf(const SampleService& sample, const AvSource& av, const StreamTags& tags)
{
    const Bytes signalling = descriptor(0x6F, {0x80, 0x10, uint8_t(0xE0 | sample.aitVersion)});  // HbbTV, its version
    const Bytes carousel =
        concat({descriptor(STREAM_IDENTIFIER_TAG, {sample.carouselTag}), descriptor(0x13, {0, 0, 0, 1, 0})});
    std::vector<Stream> streams;
    for (size_t i = 0; i < av.streams.size(); ++i)
        streams.push_back({av.streams[i].streamType, av.streams[i].pid,
                           concat({descriptor(STREAM_IDENTIFIER_TAG, {tags.av[i]}), av.streams[i].descriptors})});
    for (size_t i = 0; i < sample.subtitles.size(); ++i) {
        const SampleSubtitles& subtitles = sample.subtitles[i];
        const uint8_t type = subtitles.hardOfHearing ? HARD_OF_HEARING_SUBTITLES : SUBTITLES;
        streams.push_back({PES_PRIVATE_DATA, subtitles.pid,
                           concat({subtitlingDescriptor(subtitles.language, type, SUBTITLE_PAGE, SUBTITLE_PAGE),
                                   descriptor(STREAM_IDENTIFIER_TAG, {tags.subtitles[i]})})});
    }
    streams.push_back({0x05, sample.aitPid, signalling});
    if (sample.carouselPid)
        streams.push_back({0x0B, sample.carouselPid, carousel});
    if (sample.eventPid)
        streams.push_back({0x0C, sample.eventPid, descriptor(STREAM_IDENTIFIER_TAG, {sample.eventTag})});
    return av.streams.empty() ? pmtSection(sample.serviceId, streams)
                              : pmtSection(sample.serviceId, streams, {}, av.pcrPid);
}

// The component tags of the service's audio and video streams, then of its subtitles: each
// the one given, else the first that no stream of the service has.
bool componentTags(const SampleService& service, size_t avStreams, StreamTags& tags, std::string& error)
{
    const std::string which = "service " + std::to_string(service.serviceId);
    if (service.avTags.size() > avStreams) {
        error = which + ": its av line gives " + std::to_string(service.avTags.size()) + " component tags to " +
                std::to_string(avStreams) + " streams";
        return false;
    }
    const std::vector<uint8_t> given = service.givenTags();
    std::set<unsigned> taken(given.begin(), given.end());
    unsigned candidate = 1;
    auto firstFree = [&taken, &candidate] {
        while (taken.count(candidate))
            ++candidate;
        taken.insert(candidate);
        return uint8_t(candidate);
    };
    for (size_t i = 0; i < avStreams; ++i)
        tags.av.push_back(i < service.avTags.size() ? service.avTags[i] : firstFree());
    for (const SampleSubtitles& subtitles : service.subtitles)
        tags.subtitles.push_back(subtitles.componentTag ? *subtitles.componentTag : firstFree());
    if (candidate > 0xFF)
        error = which + " has more streams than component tags";
    return candidate <= 0xFF;
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
    for (const SampleService& service : sample.services) {
        for (uint16_t pid : {service.pmtPid, service.aitPid, service.carouselPid, service.eventPid, service.avPid})
            pids.insert(pid);
        for (const SampleSubtitles& subtitles : service.subtitles)
            pids.insert(subtitles.pid);
    }
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

bool fitsASection(const Bytes& section, size_t limit, const std::string& what, std::string& error)
{
    if (section.size() <= limit)
        return true;
    error = what + " needs a section of more than " + std::to_string(limit) + " bytes";
    return false;
}

std::vector<EitEvent> eventOf(const std::optional<SampleProgramme>& programme, uint8_t runningStatus)
{
    if (!programme)
        return {};
    const SampleProgramme& p = *programme;
    Bytes descriptors = shortEventDescriptor(p.language, dvbText(p.name), dvbText(p.text));
    if (!p.ratings.empty())
        descriptors = concat({descriptors, parentalRatingDescriptor(p.ratings)});
    for (const SampleComponent& c : p.components)
        descriptors = concat({descriptors, componentDescriptor(c.streamContent, c.componentType, c.componentTag,
                                                               c.language, dvbText(c.text))});
    return {{p.eventId, p.startTime, p.duration, runningStatus, descriptors}};
}

// Sections 0 (present) and 1 (following) of each version of the service's present/following.
bool eitSections(const SampleDescription& sample, const SampleService& service,
                 std::vector<std::vector<Bytes>>& versions, std::string& error)
{
    const EitService ids{service.serviceId, sample.transportStreamId, sample.originalNetworkId};
    for (const SampleProgrammes& programmes : service.programmes) {
        const Bytes present =
            eitPresentFollowingSection(ids, programmes.version, 0, eventOf(programmes.present, RUNNING));
        const Bytes following =
            eitPresentFollowingSection(ids, programmes.version, 1, eventOf(programmes.following, NOT_RUNNING));
        const std::string what = "service " + std::to_string(service.serviceId) + "'s programmes";
        if (!fitsASection(present, MAX_EIT_SECTION, what, error) ||
            !fitsASection(following, MAX_EIT_SECTION, what, error))
            return false;
        versions.push_back({present, following});
    }
    return true;
}

// The sections of the version of the present/following on air in a round.
const std::vector<Bytes>& eitOfRound(const SampleService& service, const ServiceOnAir& onAir, int round, int rounds)
{
    size_t version = 0;
    while (version + 1 < service.programmes.size() && service.programmes[version + 1].firstRound(rounds) <= round)
        ++version;
    return onAir.eit[version];
}

void putPts(Bytes& out, uint64_t pts)
{
    out.insert(out.end(), {uint8_t(0x21 | (pts >> 29 & 0x0E)), uint8_t(pts >> 22), uint8_t(pts >> 14 | 0x01),
                           uint8_t(pts >> 7), uint8_t(pts << 1 | 0x01)});
}

// An empty DVB subtitle display set for the page: a page composition segment without
// regions (a mode change, so that a decoder starts on it) and the end of the display set,
// in a PES packet with its presentation time.
Bytes subtitlePes(uint64_t pts)
{
    const uint8_t page[] = {uint8_t(SUBTITLE_PAGE >> 8), uint8_t(SUBTITLE_PAGE)};
    const Bytes data{0x20, 0x00,  // data_identifier, subtitle_stream_id
                     0x0F, 0x10, page[0], page[1], 0x00, 0x02,
                     5,    0x08,  // page composition: 5 s, version 0, mode change
                     0x0F, 0x80, page[0], page[1], 0x00, 0x00,  // end of display set
                     0xFF};
    const size_t length = 3 + 5 + data.size();  // flags, header length and PTS before the data
    Bytes pes{0x00, 0x00, 0x01, 0xBD, uint8_t(length >> 8), uint8_t(length), 0x84, 0x80, 0x05};  // data aligned, PTS
    putPts(pes, pts & PTS_MASK);
    return concat({pes, data});
}

// Everything a service puts on air, read and written once; taken collects the PIDs in use.
bool prepareService(const SampleDescription& sample, const SampleService& service, std::set<uint16_t>& taken,
                    ServiceOnAir& onAir, std::vector<Bytes>& avPackets, std::string& error)
{
    const std::string what = "service " + std::to_string(service.serviceId);
    AvSource av;
    StreamTags tags;
    if (!readAv(sample.directory, service, taken, av, error) || !componentTags(service, av.streams.size(), tags, error))
        return false;
    for (const Stream& avStream : av.streams)
        taken.insert(avStream.pid);
    avPackets.insert(avPackets.end(), av.packets.begin(), av.packets.end());
    onAir.clockStart = av.clockStart;
    onAir.pmt = pmtOf(service, av, tags);
    if (!fitsASection(onAir.pmt, MAX_PSI_SECTION, what, error))
        return false;
    for (size_t i = 0; i < service.sections.size(); ++i) {
        onAir.ait.push_back(aitSection(service, i));
        if (!fitsASection(onAir.ait.back(), MAX_PSI_SECTION, what, error))
            return false;
    }
    return carouselSections(sample.directory, service, onAir.carousel, error) &&
           eitSections(sample, service, onAir.eit, error);
}

// The PAT (its program 0 the NIT's PID when there is a network), the SDT and the NIT.
bool multiplexTables(const SampleDescription& sample, MultiplexTables& tables, std::string& error)
{
    std::vector<Program> programs;
    std::vector<SdtService> names;
    if (sample.networkId) {
        programs.push_back({0, NIT_PID});
        tables.nit = nitSection(*sample.networkId, 0, networkNameDescriptor(dvbText(sample.networkName)),
                                {{sample.transportStreamId, sample.originalNetworkId}});
    }
    for (const SampleService& service : sample.services) {
        programs.push_back({service.serviceId, service.pmtPid});
        names.push_back({service.serviceId, service.provider, service.name, !service.programmes.empty()});
    }
    tables.pat = patSection(sample.transportStreamId, programs);
    tables.sdt = sdtSection(sample.transportStreamId, sample.originalNetworkId, names);
    return fitsASection(tables.pat, MAX_PSI_SECTION, "the PAT", error) &&
           fitsASection(tables.sdt, MAX_PSI_SECTION, "the SDT", error) &&
           fitsASection(tables.nit, MAX_PSI_SECTION, "the NIT", error);
}

// One round: the tables of the services as before, then their subtitles, the NIT and their
// present/following, so that what older descriptions wrote stays where it was.
void playRound(const SampleDescription& sample, const std::vector<ServiceOnAir>& onAir, const MultiplexTables& tables,
               int round, std::vector<PlayedUnit>& units)
{
    units.push_back({PAT_PID, tables.pat});
    for (size_t s = 0; s < sample.services.size(); ++s)
        units.push_back({sample.services[s].pmtPid, onAir[s].pmt});
    units.push_back({SDT_PID, tables.sdt});
    for (size_t s = 0; s < sample.services.size(); ++s) {
        const SampleService& service = sample.services[s];
        for (const Bytes& section : onAir[s].ait)
            units.push_back({service.aitPid, section});
        for (const Bytes& section : onAir[s].carousel)
            units.push_back({service.carouselPid, section});
        std::map<uint16_t, uint8_t> versions;  // each occurrence of an event is a new version
        for (const SampleEventOccurrence& event : service.occurrences)
            units.push_back(
                {service.eventPid, carousel::streamEventSection(event.eventId, versions[event.eventId]++, event.text)});
    }
    for (size_t s = 0; s < sample.services.size(); ++s)
        for (const SampleSubtitles& subtitles : sample.services[s].subtitles)
            units.push_back({subtitles.pid, subtitlePes(onAir[s].clockStart + uint64_t(round) * CLOCK_A_ROUND), true});
    if (!tables.nit.empty())
        units.push_back({NIT_PID, tables.nit});
    for (size_t s = 0; s < sample.services.size(); ++s)
        if (!sample.services[s].programmes.empty())
            for (const Bytes& section : eitOfRound(sample.services[s], onAir[s], round, sample.repeat))
                units.push_back({EIT_PID, section});
}

}  // namespace

bool writeSample(const SampleDescription& sample, SampleStream& stream, std::string& error)
{
    std::vector<ServiceOnAir> onAir(sample.services.size());
    std::set<uint16_t> taken = pidsOf(sample);
    for (size_t s = 0; s < sample.services.size(); ++s)
        if (!prepareService(sample, sample.services[s], taken, onAir[s], stream.avPackets, error))
            return false;
    MultiplexTables tables;
    if (!multiplexTables(sample, tables, error))
        return false;
    for (int round = 0; round < sample.repeat; ++round)
        playRound(sample, onAir, tables, round, stream.units);
    return true;
}
