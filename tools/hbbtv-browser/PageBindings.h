#ifndef TESMO_BROWSER_PAGEBINDINGS_H
#define TESMO_BROWSER_PAGEBINDINGS_H

#include <string>

#include "tesmo_hbbtv/browser_core.h"

// What a page's HbbTV objects ask of the library, by name, as the page script sends it:
// each name ends in one of the library's script bindings (or, for a script request, its
// request notification). Runs on the main thread, inside the page's blocking call.
class PageBindings {
public:
    struct Call {
        std::string name;
        std::string text;
        double a, b;
    };
    struct Answer {
        int result;
        double number;
        std::string text;
    };
    // The page's browser window, its handle as the bindings know it, and the page's URL.
    struct Page {
        DAXO_TesmoWindow* window;
        long handle;
        std::string url;
    };

    static Answer answer(const Page& page, const Call& call);
};

#endif
