#ifndef TESMO_HBBTV_SI_HBBTVDVBURL_H
#define TESMO_HBBTV_SI_HBBTVDVBURL_H

#include "si/HbbTVURL.h"

namespace TesmoHbbTV {

// A URL taken as a dvb: URL whatever its text.
class HbbTVDVBURL : public HbbTVURL {
public:
    explicit HbbTVDVBURL(const std::string& url) : HbbTVURL(url) { type = URL_TYPE_DVB; }
};

}  // namespace TesmoHbbTV

#endif
