#ifndef TESMO_TV_DVBTEXT_H
#define TESMO_TV_DVBTEXT_H

#include <string>

// DVB text (EN 300 468 Annex A) to UTF-8: the first bytes select the character table.
std::string dvbTextToUtf8(const std::string& text);

#endif
