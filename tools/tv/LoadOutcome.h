#ifndef TESMO_TV_LOADOUTCOME_H
#define TESMO_TV_LOADOUTCOME_H

#include <string>

// How a page load ended, as a browser core tells the library.
struct LoadOutcome {
    enum End { LOADED, CONNECTION_FAILED, FAILED };
    End end;
    unsigned status;  // the HTTP status of a loaded page (200 where there is none)
    std::string reason;  // why it failed, for the timeline (may be empty)
};

#endif
