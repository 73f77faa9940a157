#ifndef TESMO_BROWSER_REQUESTSOBJECT_H
#define TESMO_BROWSER_REQUESTSOBJECT_H

#include "PageObject.h"

// A page's script requests, each vetted through the library's request notification before
// it leaves.
class RequestsObject {
public:
    static const PageMethods& methods();
};

#endif
