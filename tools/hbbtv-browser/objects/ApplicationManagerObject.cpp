#include "ApplicationManagerObject.h"

#include <cstdint>

#include "ChannelList.h"
#include "VideoBroadcastObject.h"
#include "tesmo_hbbtv/bindings.h"

namespace {

// Application ids travel to the page as numbers. A page names only the applications it was
// given (its own, those it created); any other number names no application.
void* applicationId(const PageContext& page, const Arguments& args)
{
    const double number = args.number(0);
    if (!(number >= 0 && number <= double(UINT32_MAX)))
        return nullptr;
    const auto id = uintptr_t(number);
    return page.applications->count(id) ? reinterpret_cast<void*>(id) : nullptr;
}

JsonNode* given(const PageContext& page, int result, void* id)
{
    if (result != 0)
        return reply::null();
    page.applications->insert(uintptr_t(id));
    return reply::number(double(uintptr_t(id)));
}

JsonNode* ownerApplication(const PageContext& page, const Arguments&)
{
    void* id = nullptr;
    const int result = native_AppManGetApplicationId(page.handle, &id);
    return given(page, result, id);
}

JsonNode* createApplication(const PageContext& page, const Arguments& args)
{
    void* id = nullptr;
    const int result = native_ApplicationCreateApplication(args.text(1).c_str(), args.boolean(2), applicationId(page, args), &id);
    return given(page, result, id);
}

JsonNode* keysetSetValue(const PageContext& page, const Arguments& args)
{
    double stored = 0;
    const int result = native_KeySetSetValue(applicationId(page, args), args.number(1), &stored);
    return reply::result(result, stored);
}

// A key-set query: the binding's result and the number it wrote.
template <int (*binding)(void*, double*)>
JsonNode* keysetQuery(const PageContext& page, const Arguments& args)
{
    double value = 0;
    const int result = binding(applicationId(page, args), &value);
    return reply::result(result, value);
}

JsonNode* freeMemory(const PageContext&, const Arguments&)
{
    double value = 0;
    native_AppPrivateDataGetFreeMem(nullptr, nullptr, nullptr, &value);
    return reply::number(value);
}

// The channel handle the platform gave the library, resolved to the channel it names.
JsonNode* currentChannel(const PageContext& page, const Arguments& args)
{
    void* handle = nullptr;
    if (native_AppPrivateDataGetCurrentChannel(applicationId(page, args), &handle) != 0)
        return reply::null();
    const Channel* channel = ChannelList::get().byHandle(handle);
    return channel ? VideoBroadcastObject::channelJson(*channel) : reply::null();
}

template <int (*binding)(void*)>
JsonNode* applicationCall(const PageContext& page, const Arguments& args)
{
    return reply::number(binding(applicationId(page, args)));
}

} // namespace

const PageMethods& ApplicationManagerObject::methods()
{
    static const PageMethods table = {
        {"ApplicationManager.getOwnerApplication", ownerApplication},
        {"Application.show", applicationCall<native_ApplicationShow>},
        {"Application.hide", applicationCall<native_ApplicationHide>},
        {"Application.destroyApplication", applicationCall<native_ApplicationDestroyApplication>},
        {"Application.createApplication", createApplication},
        {"KeySet.setValue", keysetSetValue},
        {"KeySet.value", keysetQuery<native_KeySetGetValue>},
        {"KeySet.maximumValue", keysetQuery<native_KeySetGetMaximumValue>},
        {"PrivateData.getFreeMem", freeMemory},
        {"PrivateData.currentChannel", currentChannel},
    };
    return table;
}
