#include "RequestsObject.h"

#include "tesmo_hbbtv/tesmo_hbbtv.h"

namespace {

const int32_t REFUSED = 1;

// The permission the library (and the platform's listener) leaves decides.
JsonNode* vet(const PageContext& page, const Arguments& args)
{
    const std::string url = args.text(0);
    DAXO_RequestRecord record{page.url.c_str(), url.c_str(), 0};
    int result = 0;
    const bool handled = tesmo_hbbtv_handle_notification(nullptr, page.window, DAXO_TESMO_EVT_XHR_REQUEST, &record, &result);
    return reply::boolean(!handled || record.permission != REFUSED);
}

} // namespace

const PageMethods& RequestsObject::methods()
{
    static const PageMethods methods = {{"Requests.vet", vet}};
    return methods;
}
