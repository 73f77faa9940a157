#ifndef TESMO_BROWSER_STREAMEVENTSOBJECT_H
#define TESMO_BROWSER_STREAMEVENTSOBJECT_H

#include "PageObject.h"

// A page's stream-event subscriptions, handed to the library's stream-event bindings.
class StreamEventsObject {
public:
    static const PageMethods& methods();
    // The page (its browser window handle) and the page's listener number a listener the
    // platform calls back stands for.
    static long pageOf(void* listener);
    static int numberOf(void* listener);
};

#endif
