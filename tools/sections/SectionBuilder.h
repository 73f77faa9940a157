#ifndef TESMO_HBBTV_TOOLS_SECTIONBUILDER_H
#define TESMO_HBBTV_TOOLS_SECTIONBUILDER_H

// Composes AIT, PMT and DVB SI sections from named fields, CRC included, so that a test reads
// like the broadcast it models.

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

namespace tesmo_test {

using Bytes = std::vector<uint8_t>;

uint32_t crc32Mpeg(const uint8_t* data, size_t length);

// ---- descriptors (tag, length, body) ----
Bytes descriptor(uint8_t tag, const Bytes& body);

struct Profile {
    uint16_t profile;
    uint8_t major, minor, micro;
};

struct ApplicationDescriptorFields {
    std::vector<Profile> profiles{{0x0000, 1, 1, 1}};
    bool serviceBound = false;
    uint8_t visibility = 3;
    uint8_t priority = 1;
    Bytes labels{1};
};
Bytes applicationDescriptor(const ApplicationDescriptorFields& fields);
Bytes nameDescriptor(const std::string& name, const std::string& language = "eng");
Bytes httpTransport(uint8_t label, const std::string& urlBase);
Bytes carouselTransport(uint8_t label, uint8_t componentTag);
Bytes remoteCarouselTransport(uint8_t label, uint16_t onid, uint16_t tsid, uint16_t sid, uint8_t componentTag);
Bytes locationDescriptor(const std::string& path);
Bytes usageDescriptor(uint8_t usageType);
Bytes boundaryDescriptor(const std::vector<std::string>& extensions);

struct Recording {
    uint8_t flags = 0;  // scheduled, trick mode aware, time shift, dynamic, av synced, replay: 0x80 .. 0x04
    std::vector<std::string> labels;
    Bytes componentTags;
};
Bytes recordingDescriptor(const Recording& recording);

// ---- application loop entries ----
class App {
public:
    App(uint32_t organisationId, uint16_t applicationId, uint8_t controlCode = 1)
        : organisationId(organisationId), applicationId(applicationId), controlCode(controlCode)
    {
    }
    App& with(const Bytes& descriptorBytes);
    Bytes bytes() const;

private:
    uint32_t organisationId;
    uint16_t applicationId;
    uint8_t controlCode;
    Bytes descriptors;
};

// ---- AIT sections ----
class AITSection {
public:
    AITSection& version(uint8_t v)
    {
        versionNumber = v;
        return *this;
    }
    AITSection& number(uint8_t section, uint8_t last)
    {
        sectionNumber = section;
        lastSectionNumber = last;
        return *this;
    }
    AITSection& common(const Bytes& descriptorBytes);
    AITSection& application(const App& app);
    // The whole section, exactly 3 + section_length bytes.
    Bytes bytes() const;

private:
    uint8_t versionNumber = 0;
    uint8_t sectionNumber = 0;
    uint8_t lastSectionNumber = 0;
    Bytes commonDescriptors;
    Bytes applications;
};

// Rewrites section_length so that the section is exactly bytes.size() long.
void setSectionLength(Bytes& bytes);

// ---- PMT sections ----
struct Stream {
    uint8_t streamType;
    uint16_t pid;
    Bytes descriptors;
};
Bytes pmtSection(uint16_t programNumber, const std::vector<Stream>& streams, const Bytes& programDescriptors = {},
                 uint16_t pcrPid = 0x0100);
// Whether a PMT's stream_type is a video or audio coding a TV decodes (MPEG-1/2 video and
// audio, MPEG-4 visual, AAC, H.264, HEVC).
bool isAudioOrVideo(uint8_t streamType);

// ---- PAT and SDT sections ----
struct Program {
    uint16_t number;
    uint16_t pmtPid;
};
Bytes patSection(uint16_t transportStreamId, const std::vector<Program>& programs);

struct SdtService {
    uint16_t serviceId;
    std::string provider;
    std::string name;
    bool presentFollowing = false;  // the service has an EIT present/following
};
Bytes sdtSection(uint16_t transportStreamId, uint16_t originalNetworkId, const std::vector<SdtService>& services);

// ---- DVB times and texts
// A UTC time (seconds since 1970) as an event's start_time: the Modified Julian Date in 16
// bits, then hours, minutes and seconds in BCD. Days past the date's 16 bits wrap.
Bytes dvbStartTime(int64_t seconds);
// A duration as hours (up to 99), minutes and seconds in BCD.
Bytes dvbDuration(uint32_t seconds);
// A UTF-8 text as a DVB string: printable ASCII as it is (the default table agrees with it),
// anything else as UTF-8 behind its table selector 0x15.
std::string dvbText(const std::string& utf8);

// ---- EIT present/following and NIT sections
// The texts of these descriptors go on air as they are given (see dvbText).
Bytes shortEventDescriptor(const std::string& language, const std::string& name, const std::string& text);
struct Rating {
    std::string country;
    uint8_t rating;  // minimum age - 3
};
Bytes parentalRatingDescriptor(const std::vector<Rating>& ratings);
Bytes componentDescriptor(uint8_t streamContent, uint8_t componentType, uint8_t componentTag,
                          const std::string& language, const std::string& text);
Bytes networkNameDescriptor(const std::string& name);
Bytes subtitlingDescriptor(const std::string& language, uint8_t subtitlingType, uint16_t compositionPage,
                           uint16_t ancillaryPage);

struct EitEvent {
    uint16_t eventId;
    int64_t startTime;  // seconds since 1970, UTC
    uint32_t duration;  // seconds
    uint8_t runningStatus;  // 4 running, 1 not running
    Bytes descriptors;
};
struct EitService {
    uint16_t serviceId;
    uint16_t transportStreamId;
    uint16_t originalNetworkId;
};
// Section 0 (present) or 1 (following) of a service's EIT present/following actual.
Bytes eitPresentFollowingSection(const EitService& service, uint8_t version, uint8_t sectionNumber,
                                 const std::vector<EitEvent>& events);

struct NitTransportStream {
    uint16_t transportStreamId;
    uint16_t originalNetworkId;
};
// The NIT actual in one section.
Bytes nitSection(uint16_t networkId, uint8_t version, const Bytes& networkDescriptors,
                 const std::vector<NitTransportStream>& streams);

Bytes concat(std::initializer_list<Bytes> parts);

}  // namespace tesmo_test

#endif
