#ifndef TESMO_BROWSER_CONFIGURATIONOBJECT_H
#define TESMO_BROWSER_CONFIGURATIONOBJECT_H

#include "Options.h"
#include "PageObject.h"

// The configuration object's viewer preferences and local system: this TV's viewer and the
// identity the user agent carries, with the HbbTV version the TV announces.
class ConfigurationObject : public PageObject {
public:
    explicit ConfigurationObject(const Options& settings);

private:
    Reply values() const;

    const Options& settings;
};

#endif
