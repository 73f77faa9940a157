#ifndef TESMO_HBBTV_MAKESAMPLE_SAMPLEDESCRIPTION_H
#define TESMO_HBBTV_MAKESAMPLE_SAMPLEDESCRIPTION_H

#include <cstdint>
#include <string>
#include <vector>

#include "SectionBuilder.h"

// A sample stream described in words: its services, each with its AIT in sections and
// perhaps an object carousel, repeated.
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
};

struct SampleDescription {
    uint16_t transportStreamId = 1;
    uint16_t originalNetworkId = 1;
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
