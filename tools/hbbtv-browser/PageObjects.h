#ifndef TESMO_BROWSER_PAGEOBJECTS_H
#define TESMO_BROWSER_PAGEOBJECTS_H

#include <map>
#include <string>

#include "objects/PageObject.h"

// Routes a page's "Object.method" calls to the object that has the method. Each object
// keeps its own method table; this only looks up the object's name.
class PageObjects {
public:
    PageObjects();
    // Methods of objects that hold state of the core (the broadcast picture, the page's
    // paint); the table must outlive this.
    void add(const PageMethods& methods);
    // The answer as JSON text: null for a method that does not exist.
    std::string call(const PageContext& page, const std::string& name, const std::string& argumentsJson) const;

private:
    std::map<std::string, const PageMethods*> objects;  // by object name; the tables are static
};

#endif
