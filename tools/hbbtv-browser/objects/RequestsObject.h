#ifndef TESMO_BROWSER_REQUESTSOBJECT_H
#define TESMO_BROWSER_REQUESTSOBJECT_H

#include "PageObject.h"

// Every request a page's engine makes, put to the library's request notification and the
// platform's policy before it leaves.
class RequestsObject {
public:
    static const PageMethods& methods();
};

#endif
