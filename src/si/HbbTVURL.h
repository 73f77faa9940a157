#ifndef TESMO_HBBTV_SI_HBBTVURL_H
#define TESMO_HBBTV_SI_HBBTVURL_H

#include <string>

namespace TesmoHbbTV {

// An application URL split once into base, query parameters and anchor.
class HbbTVURL {
public:
    enum URLType { URL_TYPE_OTHER = 0, URL_TYPE_DVB = 1, URL_TYPE_DVB_CURRENT_AIT = 2 };

    explicit HbbTVURL(const std::string& url);
    HbbTVURL(const HbbTVURL& other) = default;
    HbbTVURL& operator=(const HbbTVURL& other) = default;
    ~HbbTVURL() = default;

    URLType getType() const { return type; }
    static URLType getURLType(const std::string& base);

    const std::string& getBaseUrl() const { return baseUrl; }
    const std::string& getParameters() const { return parameters; }
    const std::string& getAnchor() const { return anchor; }
    bool empty() const { return baseUrl.empty(); }

    std::string getFullUrl() const;
    std::string getHostName() const;

    void addParameters(const std::string& extra);
    void addAnchor(const std::string& newAnchor, bool overwrite);

    // Resolves this URL against base; false when the browser core could not.
    bool resolveRelativeUrl(const HbbTVURL& base);
    // Same base URL as url (parameters and anchors are not compared).
    bool matches(const std::string& url) const;

protected:
    URLType type = URL_TYPE_OTHER;
    std::string baseUrl;
    std::string parameters;
    std::string anchor;
};

}  // namespace TesmoHbbTV

#endif
