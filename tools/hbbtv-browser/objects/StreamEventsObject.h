#ifndef TESMO_BROWSER_STREAMEVENTSOBJECT_H
#define TESMO_BROWSER_STREAMEVENTSOBJECT_H

#include "PageObject.h"

// A page's stream-event subscriptions, handed to the library's stream-event bindings.
class StreamEventsObject {
public:
    static const PageMethods& methods();
};

#endif
