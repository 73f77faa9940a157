#ifndef TESMO_TV_SERVICESCANNER_H
#define TESMO_TV_SERVICESCANNER_H

#include <cstdint>
#include <string>
#include <vector>

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

struct Service {
    uint16_t serviceId;
    uint16_t pmtPid;
    std::string name;
    std::string provider;
    std::vector<AitStream> aitStreams;
    std::vector<CarouselStream> carouselStreams;
    std::vector<CarouselStream> eventStreams;
    std::vector<uint16_t> avPids;  // its video and audio streams, and the PCR's PID if another
    bool hasPicture() const { return !avPids.empty(); }
    const AitStream* hbbtvStream() const;
    // An AIT stream whose application_signalling_descriptor lists no type at all, as some
    // broadcasters send it.
    const AitStream* unlabelledStream() const;
};

// The services of a stream, from its PAT, PMTs and SDT (all read with libdvbpsi).
std::vector<Service> scanServices(const TransportStream& stream);

#endif
