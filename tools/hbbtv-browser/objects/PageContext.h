#ifndef TESMO_BROWSER_PAGECONTEXT_H
#define TESMO_BROWSER_PAGECONTEXT_H

#include <cstdint>
#include <set>
#include <string>

#include "tesmo_hbbtv/browser_core.h"

// The page a call comes from.
struct PageContext {
    DAXO_TesmoWindow* window;
    long handle;  // the page's browser window as the library's bindings know it
    std::string url;  // the page's URL
    std::set<uintptr_t>* applications;  // the application ids the page was given (its view's)
};

#endif
