#ifndef TESMO_TV_SERVICESCANNER_H
#define TESMO_TV_SERVICESCANNER_H

#include <cstdint>
#include <string>
#include <vector>

#include "SectionBuilder.h"
#include "TransportStream.h"

// What a PMT signals about application information tables.
struct AitStream {
    uint16_t pid;
    std::vector<uint16_t> applicationTypes;  // from the application_signalling_descriptor
    bool isHbbTV() const;
};

// An object carousel's stream (stream_type 0x0B), or a stream of stream descriptors that
// carries stream events (0x0C or 0x0D), with its component tag.
struct CarouselStream {
    uint16_t pid;
    uint8_t componentTag;
};

// A video, audio or subtitle stream of a service, as a receiver lists it for pages.
struct Component {
    enum Kind { VIDEO = 0, AUDIO = 1, SUBTITLE = 2 };  // the pages' COMPONENT_TYPE_ values
    Kind kind = VIDEO;
    uint16_t pid = 0;
    int componentTag = -1;  // -1 without a stream_identifier_descriptor
    std::string encoding;  // a media format label: "AVC_SD_25", "MPEG1_L2", "HEAAC", "DVB-SUBT", ...
    std::string language;  // the ISO 639 code signalled, "" for none
    bool audioDescription = false;  // audio for the visually impaired
    bool hearingImpaired = false;  // subtitles for the hard of hearing
};

struct Service {
    uint16_t serviceId;
    uint16_t pmtPid;
    std::string name;
    std::string provider;
    std::vector<AitStream> aitStreams;
    std::vector<CarouselStream> carouselStreams;
    std::vector<CarouselStream> eventStreams;
    std::vector<uint16_t> avPids;  // its video and audio streams, and the PCR's PID if another
    std::vector<Component> components;  // in the PMT's order
    // Its audio and video streams with their descriptors, and the PCR's PID: what a PMT of the
    // picture alone lists.
    std::vector<tesmo_test::Stream> avStreams;
    uint16_t pcrPid = 0x1FFF;
    bool hasPicture() const { return !avPids.empty(); }
    const AitStream* hbbtvStream() const;
    // An AIT stream whose application_signalling_descriptor lists no type at all, as some
    // broadcasters send it.
    const AitStream* unlabelledStream() const;
};

// The services of a stream, from its PAT, PMTs and SDT (all read with libdvbpsi).
std::vector<Service> scanServices(const TransportStream& stream);

#endif
