#ifndef TESMO_BROWSER_PAGEOBJECTS_H
#define TESMO_BROWSER_PAGEOBJECTS_H

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "objects/ObjectRegistry.h"

// The registry's page objects, and the one way a page's call reaches one: the method looked
// up by its name, the arguments checked against its signature, the reply put in its envelope
// and recorded (and told, unless the method is a quiet one). The TV's happenings reach every
// object from here.
class PageObjects {
public:
    explicit PageObjects(const ObjectParts& parts);
    PageObjects(const PageObjects&) = delete;
    PageObjects& operator=(const PageObjects&) = delete;

    // The reply envelope as JSON text.
    std::string call(const PageContext& page, const std::string& name, const std::string& argumentsJson);
    // The envelope of a call that reaches no page object.
    static std::string unanswered(const std::string& why);

    void started();
    void channelChanged(const Channel& channel);
    void programmesChanged();
    void pictureChanged(const std::string& state);
    void tableCompleted();
    void applicationEvent(const std::string& name, uint32_t applicationId);
    void streamEvent(void* listener, const std::string& name, const std::string& data, const std::string& text,
                     const std::string& status);

private:
    Reply answer(const PageContext& page, const PageObject::Method* method, const std::string& name,
                 const std::string& argumentsJson) const;
    void tell(const PageContext& page, const PageObject::Method* method, const std::string& name,
              const std::string& arguments, const Reply& reply);

    std::vector<std::unique_ptr<PageObject>> objects;
    std::map<std::string, const PageObject::Method*> methods;
    ObjectServices& services;
};

#endif
