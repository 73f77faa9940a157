#include "si/HbbTVCurrentAITDVBURL.h"

#include <cstdint>
#include <cstdlib>

#include "si/SiText.h"

namespace TesmoHbbTV {

namespace {

const std::string PREFIX = "dvb://current.ait/";

// What does not fit 32 bits becomes the largest value, as on the 32-bit receiver, on every
// build.
uint32_t hexValue(const std::string& text)
{
    const unsigned long long value = std::strtoull(text.c_str(), nullptr, 16);
    return value > UINT32_MAX ? UINT32_MAX : static_cast<uint32_t>(value);
}

}  // namespace

HbbTVCurrentAITDVBURL::HbbTVCurrentAITDVBURL(const std::string& url) : HbbTVURL(url)
{
    type = URL_TYPE_DVB_CURRENT_AIT;
    if (baseUrl.compare(0, PREFIX.size(), PREFIX) != 0)
        return;
    const size_t dot = baseUrl.find('.', PREFIX.size());
    if (dot == std::string::npos)
        return;
    const std::string organisation = baseUrl.substr(PREFIX.size(), dot - PREFIX.size());
    const std::string application = baseUrl.substr(dot + 1);
    if (!isHexadecimalNumberString(organisation) || !isHexadecimalNumberString(application))
        return;
    organisationId = hexValue(organisation);
    applicationId = hexValue(application);
    valid = true;
}

}  // namespace TesmoHbbTV
