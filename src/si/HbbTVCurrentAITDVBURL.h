#ifndef TESMO_HBBTV_SI_HBBTVCURRENTAITDVBURL_H
#define TESMO_HBBTV_SI_HBBTVCURRENTAITDVBURL_H

#include <cstdint>

#include "si/HbbTVURL.h"

namespace TesmoHbbTV {

// dvb://current.ait/<organisation id>.<application id>, both hexadecimal.
class HbbTVCurrentAITDVBURL : public HbbTVURL {
public:
    explicit HbbTVCurrentAITDVBURL(const std::string& url);

    bool isValid() const { return valid; }
    uint32_t getOrgId() const { return organisationId; }
    uint32_t getAppId() const { return applicationId; }

private:
    bool valid = false;
    uint32_t organisationId = 0;
    uint32_t applicationId = 0;
};

}  // namespace TesmoHbbTV

#endif
