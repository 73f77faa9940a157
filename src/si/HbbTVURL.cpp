#include "si/HbbTVURL.h"

#include "tesmo_hbbtv/browser_core.h"

namespace TesmoHbbTV {

namespace {

const std::string DVB_PREFIX = "dvb:";
const std::string CURRENT_AIT_PREFIX = "dvb://current.ait/";

bool startsWith(const std::string& text, const std::string& prefix)
{
    return text.compare(0, prefix.size(), prefix) == 0;
}

}  // namespace

HbbTVURL::HbbTVURL(const std::string& url)
{
    const size_t q = url.find('?');
    const size_t h = url.find('#');
    if (q != std::string::npos) {
        // h - q - 1 wraps when "#" precedes "?", and the parameters then run to the end:
        // a#b?c has parameters c. Kept as it is.
        const size_t length = h != std::string::npos ? h - q - 1 : std::string::npos;
        parameters = url.substr(q + 1, length);
    }
    if (h != std::string::npos)
        anchor = url.substr(h + 1);
    baseUrl = url.substr(0, q != std::string::npos ? q : h);
    type = getURLType(baseUrl);
}

HbbTVURL::URLType HbbTVURL::getURLType(const std::string& base)
{
    if (!startsWith(base, DVB_PREFIX))
        return URL_TYPE_OTHER;
    if (startsWith(base, CURRENT_AIT_PREFIX))
        return URL_TYPE_DVB_CURRENT_AIT;
    return URL_TYPE_DVB;
}

std::string HbbTVURL::getFullUrl() const
{
    std::string full = baseUrl;
    if (!parameters.empty())
        full += "?" + parameters;
    if (!anchor.empty())
        full += "#" + anchor;
    return full;
}

std::string HbbTVURL::getHostName() const
{
    size_t start = 0;
    if (startsWith(baseUrl, "http://"))
        start = 7;
    else if (startsWith(baseUrl, "https://"))
        start = 8;
    else if (startsWith(baseUrl, "dvb://"))
        start = 6;
    const size_t slash = baseUrl.find('/', start);
    return baseUrl.substr(start, slash == std::string::npos ? std::string::npos : slash - start);
}

void HbbTVURL::addParameters(const std::string& extra)
{
    if (!extra.empty() && !parameters.empty())
        parameters += "&";
    parameters += extra;
}

void HbbTVURL::addAnchor(const std::string& newAnchor, bool overwrite)
{
    if (!newAnchor.empty() && (anchor.empty() || overwrite))
        anchor = newAnchor;
}

bool HbbTVURL::resolveRelativeUrl(const HbbTVURL& base)
{
    if (type == URL_TYPE_DVB) {
        if (baseUrl.find("dvb://") != std::string::npos)
            return true;
        const size_t lastSlash = base.baseUrl.rfind('/');
        if (lastSlash != std::string::npos)
            baseUrl.replace(0, DVB_PREFIX.size(), base.baseUrl.substr(0, lastSlash));
        return true;
    }
    char* resolved = nullptr;
    if (tm_resolve_relative_url(base.baseUrl.c_str(), baseUrl.c_str(), &resolved) != 0)
        return false;
    // The core's string is copied and left to the core.
    if (resolved)
        baseUrl = resolved;
    return true;
}

bool HbbTVURL::matches(const std::string& url) const
{
    return HbbTVURL(url).baseUrl == baseUrl;
}

}  // namespace TesmoHbbTV
