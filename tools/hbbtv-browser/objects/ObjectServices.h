#ifndef TESMO_BROWSER_OBJECTSERVICES_H
#define TESMO_BROWSER_OBJECTSERVICES_H

#include <json-glib/json-glib.h>

#include <string>

#include "PageContext.h"
#include "Timeline.h"

// What the TV gives its page objects: the timeline, and events for pages.
class ObjectServices {
public:
    virtual ~ObjectServices() = default;
    // A line in the timeline; a record in its JSON form.
    virtual void say(const std::string& line) = 0;
    virtual void record(JsonLine line) = 0;
    // The page's window as the timeline names it.
    virtual std::string where(const PageContext& page) const = 0;
    // An event for the page in the window of that handle; takes the payload.
    virtual void toPage(long handle, const std::string& event, JsonNode* payload) = 0;
    // An event for every page; takes the payload.
    virtual void toEveryPage(const std::string& event, JsonNode* payload) = 0;
};

#endif
