#ifndef TESMO_BROWSER_TERMINALOBJECT_H
#define TESMO_BROWSER_TERMINALOBJECT_H

#include "PageObject.h"

// What the terminal says about itself: the configuration object's preferences and local
// system, and the capabilities object's profile description, made from the HbbTV version
// and platform profiles the TV announces to the library.
class TerminalObject {
public:
    static const PageMethods& methods();
    // The capabilities document for the announced version and profiles.
    static std::string capabilitiesXml(bool hbbtv121, uint16_t profiles);
};

#endif
