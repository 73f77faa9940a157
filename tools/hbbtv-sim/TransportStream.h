#ifndef TESMO_HBBTV_SIM_TRANSPORTSTREAM_H
#define TESMO_HBBTV_SIM_TRANSPORTSTREAM_H

#include <cstdint>
#include <map>
#include <string>
#include <vector>

struct dvbpsi_s;  // libdvbpsi's handle

using Bytes = std::vector<uint8_t>;

// A section and where it was in the stream.
struct TimedSection {
    size_t packet;  // index of the packet that completed it
    Bytes bytes;    // exactly 3 + section_length bytes
};

struct ServiceName {
    std::string provider;
    std::string name;
};

// A transport stream file read whole: 188-byte packets, or 192 (a timestamp before each)
// or 204 (parity after each). Sections are reassembled, and their CRC checked, by libdvbpsi.
class TransportStream {
public:
    // False with a reason when the file cannot be read or holds no transport stream.
    bool open(const std::string& path, std::string& error);

    size_t packetSize() const { return size; }
    size_t packetCount() const { return packets.size(); }

    std::vector<TimedSection> sectionsOnPid(uint16_t pid) const;

    struct Program {
        uint16_t number;
        uint16_t pmtPid;
    };
    uint16_t transportStreamId() const { return tsid; }
    const std::vector<Program>& programs() const { return patPrograms; }
    // From the SDT, or the NIT's transport-stream loop; 0 when neither tells.
    uint16_t originalNetworkId() const { return onid; }
    const std::map<uint16_t, ServiceName>& serviceNames() const { return names; }

private:
    void pushPackets(dvbpsi_s* handle, uint16_t pid) const;
    void readPat();
    void readSdt();
    void readNit();

    size_t size = 0;
    std::vector<const uint8_t*> packets;  // into data, each at its sync byte
    Bytes data;
    uint16_t tsid = 0;
    uint16_t onid = 0;
    std::vector<Program> patPrograms;
    std::map<uint16_t, ServiceName> names;
};

#endif
