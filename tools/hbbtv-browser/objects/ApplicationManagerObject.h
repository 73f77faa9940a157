#ifndef TESMO_BROWSER_APPLICATIONMANAGEROBJECT_H
#define TESMO_BROWSER_APPLICATIONMANAGEROBJECT_H

#include "PageObject.h"

// The application manager, its applications, their private data and key sets: each method
// ends in one of the library's script bindings.
class ApplicationManagerObject {
public:
    static const PageMethods& methods();
};

#endif
