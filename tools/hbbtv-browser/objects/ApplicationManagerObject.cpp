#include "ApplicationManagerObject.h"

#include <cstdint>

#include "ChannelList.h"
#include "VideoBroadcastObject.h"
#include "tesmo_hbbtv/bindings.h"

namespace {

// Application ids travel to the page as numbers.
void* applicationId(double number)
{
    return reinterpret_cast<void*>(uintptr_t(number));
}

JsonNode* idOrNull(int result, void* id)
{
    return result == 0 ? reply::number(double(uintptr_t(id))) : reply::null();
}

JsonNode* ownerApplication(const PageContext& page, const Arguments&)
{
    void* id = nullptr;
    const int result = native_AppManGetApplicationId(page.handle, &id);
    return idOrNull(result, id);
}

JsonNode* createApplication(const PageContext&, const Arguments& args)
{
    void* id = nullptr;
    const int result = native_ApplicationCreateApplication(args.text(1).c_str(), args.boolean(2), applicationId(args.number(0)), &id);
    return idOrNull(result, id);
}

JsonNode* keysetSetValue(const PageContext&, const Arguments& args)
{
    double stored = 0;
    const int result = native_KeySetSetValue(applicationId(args.number(0)), args.number(1), &stored);
    return reply::result(result, stored);
}

// A key-set query: the binding's result and the number it wrote.
template <int (*binding)(void*, double*)>
JsonNode* keysetQuery(const PageContext&, const Arguments& args)
{
    double value = 0;
    const int result = binding(applicationId(args.number(0)), &value);
    return reply::result(result, value);
}

JsonNode* freeMemory(const PageContext&, const Arguments&)
{
    double value = 0;
    native_AppPrivateDataGetFreeMem(nullptr, nullptr, nullptr, &value);
    return reply::number(value);
}

// The channel handle the platform gave the library, resolved to the channel it names.
JsonNode* currentChannel(const PageContext&, const Arguments& args)
{
    void* handle = nullptr;
    if (native_AppPrivateDataGetCurrentChannel(applicationId(args.number(0)), &handle) != 0)
        return reply::null();
    const Channel* channel = ChannelList::get().byHandle(handle);
    return channel ? VideoBroadcastObject::channelJson(*channel) : reply::null();
}

template <int (*binding)(void*)>
JsonNode* applicationCall(const PageContext&, const Arguments& args)
{
    return reply::number(binding(applicationId(args.number(0))));
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
