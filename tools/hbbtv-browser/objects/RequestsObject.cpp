#include "RequestsObject.h"

#include "LibraryNumbers.h"
#include "TvPlatform.h"
#include "tesmo_hbbtv/tesmo_hbbtv.h"

namespace {

// A request of the page, as the engine is about to make it. The library decides first (and
// asks the platform's listener about URLs inside the application); where it leaves the
// decision to the browser core, or knows nothing of the window, the platform's policy
// decides. A page whose window has no application requests nothing.
JsonNode* vet(const PageContext& page, const Arguments& args)
{
    const std::string url = args.text(0);
    DAXO_RequestRecord record{page.url.c_str(), url.c_str(), HBBTV_XHR_PERMISSION_DEFAULT};
    int result = 0;
    const bool handled = tesmo_hbbtv_handle_notification(nullptr, page.window, DAXO_TESMO_EVT_XHR_REQUEST, &record, &result);
    if (handled && result == library::NOTIFICATION_INVALID)
        return reply::boolean(false);
    if (record.permission == HBBTV_XHR_PERMISSION_DENY)
        return reply::boolean(false);
    return reply::boolean(!TvPlatform::get().requestPolicy().refusing(url));
}

} // namespace

const PageMethods& RequestsObject::methods()
{
    static const PageMethods methods = {{"Requests.vet", vet}};
    return methods;
}
