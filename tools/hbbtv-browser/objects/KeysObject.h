#ifndef TESMO_BROWSER_KEYSOBJECT_H
#define TESMO_BROWSER_KEYSOBJECT_H

#include "PageObject.h"

// The key names a page compares with, from the one key table.
class KeysObject : public PageObject {
public:
    KeysObject();
};

#endif
