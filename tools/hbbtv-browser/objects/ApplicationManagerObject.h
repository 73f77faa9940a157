#ifndef TESMO_BROWSER_APPLICATIONMANAGEROBJECT_H
#define TESMO_BROWSER_APPLICATIONMANAGEROBJECT_H

#include "PageObject.h"

// The application manager, its applications, their private data and key sets: each method
// ends in one of the library's script bindings, and the library's listeners (low memory, a
// load error, an application destroyed) become the managers' events in every page.
class ApplicationManagerObject : public PageObject {
public:
    explicit ApplicationManagerObject(ObjectServices& services);
    void applicationEvent(const std::string& name, uint32_t applicationId) override;

private:
    ObjectServices& services;
};

#endif
