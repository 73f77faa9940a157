#ifndef TESMO_TV_DVBTEXT_H
#define TESMO_TV_DVBTEXT_H

#include <cstdint>
#include <string>

// DVB text (EN 300 468 Annex A) to UTF-8: the first bytes select the character table.
std::string dvbTextToUtf8(const std::string& text);

// Bytes that should be UTF-8 but come from a broadcast (a stream event's payload): each byte
// that is not part of a valid sequence, and each zero byte, becomes U+FFFD, so that nothing
// is lost and what GLib, JSON and D-Bus are given is always UTF-8.
std::string validUtf8(const std::string& bytes);

// A three-letter code from broadcast bytes (an ISO 639 language, an ISO 3166 country): what is
// not printable ASCII becomes '?'.
std::string letterCode(const uint8_t* bytes);

#endif
