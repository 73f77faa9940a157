#include "RequestsObject.h"

#include "LibraryNumbers.h"
#include "tesmo_hbbtv/tesmo_hbbtv.h"

namespace {

// What the record's permission holds when the library did not write it.
const int32_t NOT_WRITTEN = -1;

}  // namespace

RequestsObject::RequestsObject(ObjectServices& objectServices, const RequestPolicy& requestPolicy,
                               const BroadcastPicture& broadcastPictures)
    : services(objectServices), policy(requestPolicy), pictures(broadcastPictures)
{
    table = {{"Requests.vet", "s", QUIET,
              [this](const PageContext& page, const Arguments& args) { return vet(page, args); }}};
}

// The library decides first, and asks the platform's listener (the policy) about URLs inside
// the application. Where it leaves the decision to the browser core, or knows nothing of the
// window, the policy is asked here: once per request either way. A page whose window runs no
// application requests nothing.
Reply RequestsObject::vet(const PageContext& page, const Arguments& args) const
{
    const std::string url = args.text(0);
    if (pictures.serves(url))
        return refuse(page, url, "the TV's own picture");
    DAXO_RequestRecord record{page.url.c_str(), url.c_str(), NOT_WRITTEN};
    int result = 0;
    const bool handled =
        tesmo_hbbtv_handle_notification(nullptr, page.window, DAXO_TESMO_EVT_XHR_REQUEST, &record, &result);
    if (handled && result == library::NOTIFICATION_INVALID)
        return refuse(page, url, "the window runs no application");
    if (record.permission == HBBTV_XHR_PERMISSION_DENY)
        return refuse(page, url, "outside the application's boundaries, or the platform's policy");
    if (record.permission == HBBTV_XHR_PERMISSION_DEFAULT)
        return reply::boolean(true);
    if (const std::string* pattern = policy.refusing(url))
        return refuse(page, url, "the platform's policy: " + *pattern);
    return reply::boolean(true);
}

Reply RequestsObject::refuse(const PageContext& page, const std::string& url, const std::string& why) const
{
    services.say("the page's request for " + url + " is refused (" + why + ") in " + services.where(page));
    return reply::boolean(false);
}
