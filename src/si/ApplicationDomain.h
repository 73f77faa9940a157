#ifndef TESMO_HBBTV_SI_APPLICATIONDOMAIN_H
#define TESMO_HBBTV_SI_APPLICATIONDOMAIN_H

#include <string>
#include <vector>

#include "si/SectionReader.h"

namespace TesmoHbbTV {

// The origins that belong to an application. Membership is a plain, case-sensitive prefix
// test, so http://tvapps also admits http://tvappsx/ (relied on by deployed services).
class ApplicationDomain {
public:
    // descriptor starts at the tag byte of a simple application boundary descriptor.
    void parseSimpleApplicationBoundaryExtensionDescriptor(SectionReader descriptor);
    bool addBoundaryExtension(const std::string& extension);
    bool extendDomain(const ApplicationDomain& other);
    bool isWithinBoundaries(const std::string& url) const;

    const std::vector<std::string>& getBoundaries() const { return boundaries; }

    static int extractProtocol(const std::string& text);
    static std::string extractHostName(const std::string& text);
    static std::string removePath(const std::string& text);

private:
    std::vector<std::string> boundaries;
};

}  // namespace TesmoHbbTV

#endif
