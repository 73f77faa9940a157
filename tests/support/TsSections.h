#ifndef TESMO_HBBTV_TESTS_TSSECTIONS_H
#define TESMO_HBBTV_TESTS_TSSECTIONS_H

#include <cstdint>
#include <string>
#include <vector>

#include "SectionBuilder.h"

namespace tesmo_test {

// The sections carried on one PID of a 188-byte-packet transport stream, in stream order,
// each exactly 3 + section_length bytes. libdvbpsi reassembles them and drops any whose
// CRC fails.
std::vector<Bytes> sectionsOnPid(const std::string& path, uint16_t pid);

}  // namespace tesmo_test

#endif
