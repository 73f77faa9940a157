#include "AvSource.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>

using namespace tesmo_test;

namespace {

const size_t PACKET = 188;
const uint16_t FIRST_PID = 0x0020;  // below it the PIDs of DVB's own tables
const uint16_t LAST_PID = 0x1FFE;
const uint8_t LANGUAGE_TAG = 0x0A;

uint16_t pidOf(const uint8_t* packet)
{
    return uint16_t((packet[1] & 0x1F) << 8 | packet[2]);
}

// The payload of a packet that starts a section, from the section's first byte.
bool sectionStart(const uint8_t* packet, const uint8_t*& section, size_t& size)
{
    if (!(packet[1] & 0x40) || !(packet[3] & 0x10))
        return false;
    size_t at = 4;
    if (packet[3] & 0x20)
        at += 1 + packet[4];
    if (at >= PACKET)
        return false;
    at += 1 + packet[at];  // the pointer field
    if (at + 3 > PACKET)
        return false;
    section = packet + at;
    size = PACKET - at;
    const size_t length = 3 + ((section[1] & 0x0F) << 8 | section[2]);
    return length <= size && length >= 12 && ((size = length), true);
}

// The first section of a table on a PID that fits its packet, as muxers write PAT and PMT.
bool findSection(const std::string& bytes, uint16_t pid, uint8_t tableId, Bytes& out)
{
    for (size_t at = 0; at + PACKET <= bytes.size(); at += PACKET) {
        const auto* packet = reinterpret_cast<const uint8_t*>(bytes.data() + at);
        const uint8_t* section = nullptr;
        size_t size = 0;
        if (pidOf(packet) == pid && sectionStart(packet, section, size) && section[0] == tableId) {
            out.assign(section, section + size);
            return true;
        }
    }
    return false;
}

// The ISO 639 language descriptors of a descriptor loop at [from, end) of a section, as they are.
Bytes languageDescriptors(const Bytes& section, size_t from, size_t end)
{
    Bytes found;
    for (size_t at = from; at + 2 <= end && at + 2 + section[at + 1] <= end; at += 2 + section[at + 1])
        if (section[at] == LANGUAGE_TAG)
            found.insert(found.end(), section.begin() + long(at), section.begin() + long(at + 2 + section[at + 1]));
    return found;
}

// The 90 kHz base of a packet's PCR, if its adaptation field has one.
bool pcrOf(const uint8_t* packet, uint64_t& base)
{
    if (!(packet[3] & 0x20) || packet[4] < 7 || !(packet[5] & 0x10))
        return false;
    base = uint64_t(packet[6]) << 25 | uint64_t(packet[7]) << 17 | uint64_t(packet[8]) << 9 | uint64_t(packet[9]) << 1 |
           packet[10] >> 7;
    return true;
}

}  // namespace

bool AvSource::read(const std::string& path, uint16_t firstPid, size_t maxBytes, std::string& error)
{
    std::ifstream in(path, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (!in.good() && !in.eof()) {
        error = "cannot read the audio and video of " + path;
        return false;
    }
    if (bytes.empty() || bytes.size() % PACKET != 0 || bytes.size() > maxBytes) {
        error =
            path + " is not a transport stream of 188-byte packets of at most " + std::to_string(maxBytes) + " bytes";
        return false;
    }
    for (size_t at = 0; at < bytes.size(); at += PACKET)
        if (uint8_t(bytes[at]) != 0x47) {
            error = path + " loses its packets' sync at byte " + std::to_string(at);
            return false;
        }
    Bytes pat, pmt;
    uint16_t pmtPid = 0;
    if (findSection(bytes, 0x0000, 0x00, pat))
        for (size_t at = 8; at + 4 <= pat.size() - 4 && !pmtPid; at += 4)
            if (pat[at] << 8 | pat[at + 1])
                pmtPid = uint16_t((pat[at + 2] & 0x1F) << 8 | pat[at + 3]);
    if (!pmtPid || !findSection(bytes, pmtPid, 0x02, pmt)) {
        error = path + " has no program with a PMT in one packet";
        return false;
    }
    const uint16_t sourcePcr = uint16_t((pmt[8] & 0x1F) << 8 | pmt[9]);
    std::map<uint16_t, uint16_t> moved;  // source PID -> the sample's
    size_t at = 12 + ((pmt[10] & 0x0F) << 8 | pmt[11]);
    const size_t end = pmt.size() - 4;  // before the CRC
    while (at + 5 <= end) {
        const uint8_t type = pmt[at];
        const size_t next = at + 5 + ((pmt[at + 3] & 0x0F) << 8 | pmt[at + 4]);
        const uint16_t pid = uint16_t((pmt[at + 1] & 0x1F) << 8 | pmt[at + 2]);
        if (isAudioOrVideo(type) && (pid < FIRST_PID || pid > LAST_PID || pid == pmtPid || moved.count(pid))) {
            error = path + ": its PMT puts a stream on PID " + std::to_string(pid) + ", which no stream can have";
            return false;
        }
        if (isAudioOrVideo(type)) {
            const unsigned target = firstPid + unsigned(moved.size());
            if (target > LAST_PID) {
                error = path + ": its streams do not fit below PID " + std::to_string(LAST_PID);
                return false;
            }
            moved[pid] = uint16_t(target);
            streams.push_back({type, uint16_t(target), languageDescriptors(pmt, at + 5, std::min(next, end))});
        }
        at = next;
    }
    if (streams.empty() || !moved.count(sourcePcr)) {
        error = path + " has no audio or video stream that carries its clock";
        return false;
    }
    pcrPid = moved[sourcePcr];
    for (size_t offset = 0; offset < bytes.size(); offset += PACKET) {
        const auto* packet = reinterpret_cast<const uint8_t*>(bytes.data() + offset);
        auto found = moved.find(pidOf(packet));
        if (found == moved.end())
            continue;
        if (found->second == pcrPid && !clockStart)
            pcrOf(packet, clockStart);
        Bytes copy(packet, packet + PACKET);
        copy[1] = uint8_t((copy[1] & 0xE0) | (found->second >> 8));
        copy[2] = uint8_t(found->second);
        packets.push_back(std::move(copy));
    }
    return true;
}
