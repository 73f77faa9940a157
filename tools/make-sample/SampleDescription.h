#ifndef TESMO_HBBTV_MAKESAMPLE_SAMPLEDESCRIPTION_H
#define TESMO_HBBTV_MAKESAMPLE_SAMPLEDESCRIPTION_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "SectionBuilder.h"

// A sample stream described in words: its services, each with its AIT in sections and
// perhaps an object carousel, repeated. The lines (samples/sample.desc shows them at work):
//   transport_stream TSID network ONID          network NID "NAME"  (an NIT)
//   service SID "NAME" provider "PROVIDER" pmt PID ait PID [carousel PID], then its lines:
//     ait version V / section / application ... / name / transport / location / boundary
//     carousel_tag T / carousel_folder DIR / carousel_block_size N / carousel_file PATH [compressed]
//     stream_events PID tag T / carousel_stream_event PATH NAME=ID... / event ID "TEXT"
//     av FILE PID [tags T1,T2,...]  (audio and video from a transport stream, their languages kept)
//     subtitles PID LANGUAGE [tag T] [hard-of-hearing]
//     programmes version V [at P%]  (present/following from P% of the rounds on; first at 0%)
//     programme present|following EVENT_ID 2026-11-25T20:15:00Z 01:30:00 "NAME" "TEXT"
//               [language L] [rating COUNTRY AGE]... [component CONTENT TYPE TAG LANGUAGE "TEXT"]...
//   repeat ROUNDS
// A stream without a component tag given takes the first one that no stream of its service
// has, the audio and video first, in their order.
struct SampleApplication {
    uint32_t organisationId = 0;
    uint16_t applicationId = 0;
    uint8_t controlCode = 1;
    tesmo_test::ApplicationDescriptorFields descriptor;
    std::string name;
    std::string location;
    std::vector<tesmo_test::Bytes> transports;
    std::vector<std::string> boundaries;
};

// A stream event object of the carousel, and an occurrence of an event on the stream of
// stream descriptors.
struct SampleStreamEvent {
    std::string path;
    std::vector<std::pair<std::string, uint16_t>> events;  // name, id
};
struct SampleEventOccurrence {
    uint16_t eventId;
    std::string text;
};

// A file of the object carousel, below the description's carousel/ folder.
struct SampleCarouselFile {
    std::string path;
    bool compressed = false;
};

// A programme of a service's present/following, its texts in UTF-8.
struct SampleComponent {
    uint8_t streamContent = 0;
    uint8_t componentType = 0;
    uint8_t componentTag = 0;
    std::string language;
    std::string text;
};
struct SampleProgramme {
    uint16_t eventId = 0;
    int64_t startTime = 0;  // seconds since 1970, UTC
    uint32_t duration = 0;  // seconds
    std::string name;
    std::string text;
    std::string language = "eng";
    std::vector<tesmo_test::Rating> ratings;
    std::vector<SampleComponent> components;
};
// One version of a service's present/following, on air from the round that starts atPercent
// of the way through the sample's rounds.
struct SampleProgrammes {
    uint8_t version = 0;
    unsigned atPercent = 0;
    std::optional<SampleProgramme> present;
    std::optional<SampleProgramme> following;

    // The first of the sample's rounds that carries this version.
    int firstRound(int rounds) const { return int((atPercent * unsigned(rounds) + 99) / 100); }
};

// A DVB subtitle stream of a service.
struct SampleSubtitles {
    uint16_t pid = 0;
    std::string language;
    std::optional<uint8_t> componentTag;  // else the first one no other stream of the service has
    bool hardOfHearing = false;
};

struct SampleService {
    uint16_t serviceId = 1;
    std::string name;
    std::string provider;
    uint16_t pmtPid = 0x100;
    uint16_t aitPid = 0x101;
    uint16_t carouselPid = 0;  // 0: no carousel
    uint8_t carouselTag = 0;
    uint8_t aitVersion = 0;
    std::vector<std::vector<SampleApplication>> sections;
    std::vector<SampleCarouselFile> carouselFiles;
    std::string carouselFolder = "carousel";  // below the description's directory
    uint16_t carouselBlockSize = 4066;
    uint16_t eventPid = 0;  // the stream of stream descriptors; 0: none
    uint8_t eventTag = 0;
    std::vector<SampleStreamEvent> streamEvents;
    std::vector<SampleEventOccurrence> occurrences;
    std::string avFile;  // a transport stream whose audio and video the service carries
    uint16_t avPid = 0;  // the first of the PIDs they go on
    std::vector<uint8_t> avTags;  // component tags of its streams in their order; the rest take free ones
    std::vector<SampleSubtitles> subtitles;
    std::vector<SampleProgrammes> programmes;  // in the order they go on air

    // The component tags the description gives: the carousel's, the stream events', the
    // audio and video's and the subtitles'.
    std::vector<uint8_t> givenTags() const;
};

struct SampleDescription {
    uint16_t transportStreamId = 1;
    uint16_t originalNetworkId = 1;
    std::optional<uint16_t> networkId;  // with a network name, the sample has an NIT
    std::string networkName;
    std::vector<SampleService> services;
    std::string directory;  // of the description
    int repeat = 1;
};

// False with a message naming the line on anything it does not understand, and on a value
// that does not fit where it goes.
bool parseDescription(const std::string& path, SampleDescription& sample, std::string& error);
// The same from the text itself; name is what the messages call it.
bool parseDescriptionText(const std::string& text, const std::string& name, SampleDescription& sample,
                          std::string& error);

#endif
