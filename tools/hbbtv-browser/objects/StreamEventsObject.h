#ifndef TESMO_BROWSER_STREAMEVENTSOBJECT_H
#define TESMO_BROWSER_STREAMEVENTSOBJECT_H

#include "PageObject.h"

// A page's stream-event subscriptions, handed to the library's stream-event bindings; the
// events the platform delivers go to the page whose listener subscribed them.
class StreamEventsObject : public PageObject {
public:
    explicit StreamEventsObject(ObjectServices& services);
    void streamEvent(void* listener, const std::string& name, const std::string& data, const std::string& text,
                     const std::string& status) override;
    // What the page's bridge receives for the event: its listener's number and the event's
    // name, data, text and status.
    static JsonNode* payload(int listenerNumber, const std::string& name, const std::string& data,
                             const std::string& text, const std::string& status);

private:
    ObjectServices& services;
};

#endif
