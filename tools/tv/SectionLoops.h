#ifndef TESMO_TV_SECTIONLOOPS_H
#define TESMO_TV_SECTIONLOOPS_H

#include <cstddef>
#include <cstdint>
#include <optional>

#include "ByteReader.h"

// Whether the loops of a DVB SI section fit it, checked before libdvbpsi's decoders see it:
// they take the loops' lengths on trust and read past the section where a length runs
// beyond. Each takes a whole section, 3 + section_length bytes, CRC last. In the header
// alone, as ByteReader, so that whatever builds TransportStream in builds them too.

namespace sectionLoops {
namespace detail {

const size_t EIT_HEADER = 14;  // up to last_table_id
const size_t NIT_HEADER = 8;  // up to last_section_number
const size_t CRC = 4;
const size_t EVENT_HEADER = 10;  // event_id, start_time and duration before the loop's length
const size_t STREAM_HEADER = 4;  // transport_stream_id and original_network_id
const size_t MAX_SECTION = 4096;

// A loop of descriptors behind its 12-bit length: every descriptor within it, to its end.
inline bool descriptorLoopFits(ByteReader& in)
{
    ByteReader loop = in.part(in.u16() & 0x0FFF);
    while (in.good() && loop.good() && loop.left() > 0) {
        loop.u8();  // the tag
        loop.skip(loop.u8());
    }
    return in.good() && loop.good();
}

// The section's body between its header and its CRC, if the section is whole.
inline bool body(const uint8_t* section, size_t size, size_t header, ByteReader& out)
{
    if (size < header + CRC || size > MAX_SECTION || size != 3 + size_t((section[1] & 0x0F) << 8 | section[2]))
        return false;
    out = ByteReader(section + header, size - header - CRC);
    return true;
}

}  // namespace detail

// An EIT section's events, each with its descriptor loop, filling it to the CRC: how many
// events it has, or none when they do not fit.
inline std::optional<size_t> eitEvents(const uint8_t* section, size_t size)
{
    ByteReader in(nullptr, 0);
    if (!detail::body(section, size, detail::EIT_HEADER, in))
        return std::nullopt;
    size_t events = 0;
    for (; in.left() > 0; ++events) {
        in.skip(detail::EVENT_HEADER);
        if (!detail::descriptorLoopFits(in))
            return std::nullopt;
    }
    return events;
}

// An NIT section's network descriptors and transport stream loop, each stream with its
// descriptors, filling it to the CRC.
inline bool nitFits(const uint8_t* section, size_t size)
{
    ByteReader in(nullptr, 0);
    if (!detail::body(section, size, detail::NIT_HEADER, in) || !detail::descriptorLoopFits(in))
        return false;
    ByteReader streams = in.part(in.u16() & 0x0FFF);
    while (in.good() && streams.good() && streams.left() > 0) {
        streams.skip(detail::STREAM_HEADER);
        if (!detail::descriptorLoopFits(streams))
            return false;
    }
    return in.good() && streams.good() && in.left() == 0;
}

}  // namespace sectionLoops

#endif
