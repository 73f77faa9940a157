#ifndef TESMO_BROWSER_AVCONTROLOBJECT_H
#define TESMO_BROWSER_AVCONTROLOBJECT_H

#include "PageObject.h"

// The A/V control objects' side in the TV: a timeline line for each thing a page's media
// does (play, pause, seek, stop, its states and errors), which --json records as the
// page's call. Its scripts play the media (DASH among them).
class AvControlObject : public PageObject {
public:
    explicit AvControlObject(ObjectServices& services);

private:
    Reply changed(const PageContext& page, const Arguments& args) const;

    ObjectServices& services;
};

#endif
