#ifndef TESMO_BROWSER_PAGEOBJECT_H
#define TESMO_BROWSER_PAGEOBJECT_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "Arguments.h"
#include "ObjectServices.h"
#include "PageContext.h"
#include "Reply.h"

struct Channel;

// A page object's side in the TV: the methods its script calls, and what it does on the TV's
// happenings (it sends its own events).
class PageObject {
public:
    // Whether the timeline tells a call: a page's questions (what is the key set, which
    // channel) are only recorded.
    enum Telling { TOLD, QUIET };
    using Handler = std::function<Reply(const PageContext& page, const Arguments& args)>;
    struct Method {
        std::string name;  // "Object.method", as the script calls it
        std::string signature;  // see Arguments
        Telling telling;
        Handler run;
    };

    virtual ~PageObject() = default;
    const std::vector<Method>& methods() const { return table; }

    // ---- the TV's happenings
    virtual void channelChanged(const Channel&) {}
    // The TV's broadcast picture: "none", "connecting", "playing" or "error".
    virtual void pictureChanged(const std::string& /*state*/) {}
    // The TV has started; the library has taken a complete AIT.
    virtual void started() {}
    virtual void tableCompleted() {}
    // The service's present/following programmes changed.
    virtual void programmesChanged() {}
    virtual void applicationEvent(const std::string& /*name*/, uint32_t /*applicationId*/) {}
    virtual void streamEvent(void* /*listener*/, const std::string& /*name*/, const std::string& /*data*/,
                             const std::string& /*text*/, const std::string& /*status*/)
    {
    }

protected:
    std::vector<Method> table;
};

#endif
