#ifndef TESMO_BROWSER_AVCONTROLOBJECT_H
#define TESMO_BROWSER_AVCONTROLOBJECT_H

#include <functional>
#include <string>

#include "PageObject.h"

// The A/V control objects' side in the TV: a timeline line for each thing a page's media
// does (play, pause, seek, stop, its states and errors), which --json records as the
// page's call.
class AvControlObject {
public:
    using Say = std::function<void(const PageContext& page, const std::string& line)>;

    explicit AvControlObject(Say say);
    AvControlObject(const AvControlObject&) = delete;
    AvControlObject& operator=(const AvControlObject&) = delete;

    const PageMethods& methods() const { return table; }

private:
    JsonNode* changed(const PageContext& page, const Arguments& args) const;

    Say say;
    PageMethods table;
};

#endif
