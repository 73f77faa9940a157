#ifndef TESMO_TV_TRANSPORTSTREAM_H
#define TESMO_TV_TRANSPORTSTREAM_H

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

struct dvbpsi_s;  // libdvbpsi's handle

using Bytes = std::vector<uint8_t>;

// A section and where it was in the stream.
struct TimedSection {
    size_t packet;  // index of the packet that completed it
    Bytes bytes;  // exactly 3 + section_length bytes
};

struct ServiceName {
    std::string provider;
    std::string name;
};

// A transport stream file, read as a stream: 188-byte packets, or 192 (a timestamp before
// each) or 204 (parity after each). Each question reads the file once more, a chunk at a
// time, keeping only the sections asked for, so memory stays flat however long the
// recording. Sections are reassembled, and their CRC checked, by libdvbpsi.
class TransportStream {
public:
    // False with a reason when the file cannot be read or holds no transport stream.
    bool open(const std::string& path, std::string& error);

    size_t packetSize() const { return size; }
    size_t packetCount() const { return count; }

    std::vector<TimedSection> sectionsOnPid(uint16_t pid) const;
    // The sections of several PIDs, in one reading.
    std::map<uint16_t, std::vector<TimedSection>> sectionsOnPids(const std::set<uint16_t>& pids) const;

    struct Program {
        uint16_t number;
        uint16_t pmtPid;
    };
    uint16_t transportStreamId() const { return tsid; }
    const std::vector<Program>& programs() const { return patPrograms; }
    // From the SDT, or the NIT's transport-stream loop; 0 when neither tells.
    uint16_t originalNetworkId() const { return onid; }
    // From the NIT actual (its first version): the network the stream is delivered by, and its
    // name (UTF-8); 0 and empty without one.
    uint16_t networkId() const { return nid; }
    const std::string& networkName() const { return network; }
    const std::map<uint16_t, ServiceName>& serviceNames() const { return names; }

    // Every packet in order, with its index among the packets; each is 188 bytes at its sync
    // byte, valid during the call only.
    void forEachPacket(const std::function<void(uint8_t* packet, size_t index)>& visit) const;

private:
    void readServiceInformation();
    void attachPat(dvbpsi_s* handle);
    void attachSdt(dvbpsi_s* handle);

    std::string path;
    size_t size = 0;
    size_t start = 0;  // of the first sync byte
    size_t count = 0;
    uint16_t tsid = 0;
    uint16_t onid = 0;
    uint16_t nid = 0;
    std::string network;
    std::vector<Program> patPrograms;
    std::map<uint16_t, ServiceName> names;
};

#endif
