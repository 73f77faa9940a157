#ifndef TESMO_TV_AITDECODER_H
#define TESMO_TV_AITDECODER_H

#include <cstdint>
#include <string>
#include <vector>

#include "TransportStream.h"

// An AIT section as it reads, for showing it to a person; independent of what the library
// makes of it.
struct DecodedTransport {
    uint16_t protocol = 0;
    uint8_t label = 0;
    std::string urlBase;
    bool remote = false;
    uint16_t originalNetworkId = 0, transportStreamId = 0, serviceId = 0;
    uint8_t componentTag = 0;
    std::string describe() const;
};

struct DecodedProfile {
    uint16_t profile;
    uint8_t major, minor, micro;
};

struct DecodedApplication {
    uint32_t organisationId = 0;
    uint16_t applicationId = 0;
    uint8_t controlCode = 0;
    uint8_t priority = 0;
    bool serviceBound = false;
    uint8_t visibility = 0;
    std::vector<DecodedProfile> profiles;
    std::vector<uint8_t> labels;
    std::vector<DecodedTransport> transports;
    std::string location;
    std::string name;  // UTF-8
    std::vector<std::string> boundaries;
};

struct DecodedAit {
    bool readable = false;  // false when the header itself could not be read
    uint16_t applicationType = 0;
    uint8_t version = 0;
    uint8_t sectionNumber = 0;
    uint8_t lastSectionNumber = 0;
    std::vector<DecodedTransport> commonTransports;
    std::vector<DecodedApplication> applications;
};

DecodedAit decodeAit(const Bytes& section);
std::string controlCodeName(uint8_t code);

#endif
