#include "PageBindings.h"

#include <cstdint>
#include <functional>
#include <map>

#include "tesmo_hbbtv/bindings.h"
#include "tesmo_hbbtv/tesmo_hbbtv.h"

namespace {

const int NO_SUCH_CALL = 3;

// Application ids travel to the page as numbers.
void* applicationId(double number)
{
    return reinterpret_cast<void*>(uintptr_t(number));
}

double number(void* id)
{
    return double(uintptr_t(id));
}

PageBindings::Answer withId(int result, void* id)
{
    return {result, number(id), ""};
}

PageBindings::Answer withNumber(int result, double value)
{
    return {result, value, ""};
}

// A script request goes through the library's request notification; the permission it
// leaves is the answer (1: refused).
PageBindings::Answer vetRequest(const PageBindings::Page& page, const std::string& url)
{
    DAXO_RequestRecord record{page.url.c_str(), url.c_str(), 0};
    int result = 0;
    const bool handled = tesmo_hbbtv_handle_notification(nullptr, page.window, DAXO_TESMO_EVT_XHR_REQUEST, &record, &result);
    return {handled ? record.permission : 0, double(result), ""};
}

using Binding = std::function<PageBindings::Answer(const PageBindings::Page&, const PageBindings::Call&)>;

const std::map<std::string, Binding>& bindings()
{
    using Page = PageBindings::Page;
    using Call = PageBindings::Call;
    static const std::map<std::string, Binding> table = {
        {"getOwnerApplication", [](const Page& p, const Call&) {
             void* id = nullptr;
             const int result = native_AppManGetApplicationId(p.handle, &id);
             return withId(result, id);
         }},
        {"show", [](const Page&, const Call& c) { return withId(native_ApplicationShow(applicationId(c.a)), nullptr); }},
        {"hide", [](const Page&, const Call& c) { return withId(native_ApplicationHide(applicationId(c.a)), nullptr); }},
        {"createApplication", [](const Page&, const Call& c) {
             void* id = nullptr;
             const int result = native_ApplicationCreateApplication(c.text.c_str(), c.b != 0, applicationId(c.a), &id);
             return withId(result, id);
         }},
        {"destroyApplication",
         [](const Page&, const Call& c) { return withId(native_ApplicationDestroyApplication(applicationId(c.a)), nullptr); }},
        {"keysetSetValue", [](const Page&, const Call& c) {
             double stored = 0;
             const int result = native_KeySetSetValue(applicationId(c.a), c.b, &stored);
             return withNumber(result, stored);
         }},
        {"keysetValue", [](const Page&, const Call& c) {
             double value = 0;
             const int result = native_KeySetGetValue(applicationId(c.a), &value);
             return withNumber(result, value);
         }},
        {"keysetMaximum", [](const Page&, const Call& c) {
             double value = 0;
             const int result = native_KeySetGetMaximumValue(applicationId(c.a), &value);
             return withNumber(result, value);
         }},
        {"getFreeMem", [](const Page&, const Call&) {
             double value = 0;
             const int result = native_AppPrivateDataGetFreeMem(nullptr, nullptr, nullptr, &value);
             return withNumber(result, value);
         }},
        {"currentChannel", [](const Page&, const Call& c) {
             void* channel = nullptr;
             const int result = native_AppPrivateDataGetCurrentChannel(applicationId(c.a), &channel);
             return withId(result, channel);
         }},
        {"addStreamEventListener", [](const Page& p, const Call& c) {
             const int result = native_BroadcastAddStreamEventListener(c.text.c_str(), applicationId(c.a), nullptr,
                                                                       nullptr, nullptr, p.handle);
             return withNumber(result, 0);
         }},
        {"removeStreamEventListener", [](const Page&, const Call& c) {
             return withNumber(native_BroadcastRemoveStreamEventListener(nullptr, applicationId(c.a), nullptr), 0);
         }},
        {"request", [](const Page& p, const Call& c) { return vetRequest(p, c.text); }},
    };
    return table;
}

} // namespace

PageBindings::Answer PageBindings::answer(const Page& page, const Call& call)
{
    auto found = bindings().find(call.name);
    return found == bindings().end() ? Answer{NO_SUCH_CALL, 0, "no such call"} : found->second(page, call);
}
