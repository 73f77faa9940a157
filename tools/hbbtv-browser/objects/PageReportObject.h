#ifndef TESMO_BROWSER_PAGEREPORTOBJECT_H
#define TESMO_BROWSER_PAGEREPORTOBJECT_H

#include <chrono>

#include "PageObject.h"

// What a page tells of itself: its first paint, which the TV measures from the AIT the
// library completed first (from the start for a page the platform starts itself), and its
// debug() lines; and the bound its media and requests keep, as the core keeps it for loads.
class PageReportObject : public PageObject {
public:
    PageReportObject(ObjectServices& services, std::chrono::milliseconds loadTimeout);

    void started() override;
    void tableCompleted() override;

private:
    Reply painted(const PageContext& page);

    ObjectServices& services;
    std::chrono::steady_clock::time_point clockStart;
    bool firstPaintSeen = false;
    bool tableSeen = false;
};

#endif
