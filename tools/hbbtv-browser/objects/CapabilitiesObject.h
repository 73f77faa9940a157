#ifndef TESMO_BROWSER_CAPABILITIESOBJECT_H
#define TESMO_BROWSER_CAPABILITIESOBJECT_H

#include <cstdint>

#include "Options.h"
#include "PageObject.h"

// The capabilities object's profile description, made from the HbbTV version and platform
// profiles the TV announces to the library.
class CapabilitiesObject : public PageObject {
public:
    explicit CapabilitiesObject(const Options& settings);
    // The capabilities document for the announced version and profiles.
    static std::string capabilitiesXml(bool hbbtv121, uint16_t profiles);
};

#endif
