#ifndef TESMO_TV_SECTIONLOOPS_H
#define TESMO_TV_SECTIONLOOPS_H

#include <cstddef>
#include <cstdint>
#include <optional>

// Whether the loops of a DVB SI section fit it, checked before libdvbpsi's decoders see it:
// they take the loops' lengths on trust and read past the section where a length runs
// beyond. Each takes a whole section, 3 + section_length bytes, CRC last.
namespace sectionLoops {

// An EIT section's events, each with its descriptor loop, filling it to the CRC: how many
// events it has, or none when they do not fit.
std::optional<size_t> eitEvents(const uint8_t* section, size_t size);
// An NIT section's network descriptors and transport stream loop, each stream with its
// descriptors, filling it to the CRC.
bool nitFits(const uint8_t* section, size_t size);

}  // namespace sectionLoops

#endif
