#include "ApplicationManagerObject.h"

#include "ChannelList.h"
#include "LibraryNumbers.h"
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

// A binding's answer: an application the library no longer knows is an error of the page.
Reply checked(const char* method, int result, JsonNode* value)
{
    if (result != library::BINDING_NO_SUCH)
        return value;
    json_node_unref(value);
    return Reply::error("InvalidStateError", std::string(method) + ": the application is gone");
}

Reply given(const PageContext& page, int result, void* id)
{
    if (result != library::BINDING_OK)
        return reply::null();
    page.applications->insert(uintptr_t(id));
    return reply::number(double(uintptr_t(id)));
}

Reply ownerApplication(const PageContext& page, const Arguments&)
{
    void* id = nullptr;
    const int result = native_AppManGetApplicationId(page.handle, &id);
    return given(page, result, id);
}

Reply createApplication(const PageContext& page, const Arguments& args)
{
    void* id = nullptr;
    const int result =
        native_ApplicationCreateApplication(args.text(1).c_str(), args.boolean(2), applicationId(page, args), &id);
    return given(page, result, id);
}

Reply keysetSetValue(const PageContext& page, const Arguments& args)
{
    double stored = 0;
    const int result = native_KeySetSetValue(applicationId(page, args), args.number(1), &stored);
    return checked("KeySet.setValue", result, reply::number(stored));
}

Reply keysetValue(const PageContext& page, const Arguments& args)
{
    double value = 0;
    const int result = native_KeySetGetValue(applicationId(page, args), &value);
    return checked("KeySet.value", result, reply::number(value));
}

// What the terminal supports, whether or not the application is still there.
Reply keysetMaximumValue(const PageContext& page, const Arguments& args)
{
    double value = 0;
    native_KeySetGetMaximumValue(applicationId(page, args), &value);
    return reply::number(value);
}

Reply freeMemory(const PageContext&, const Arguments&)
{
    double value = 0;
    native_AppPrivateDataGetFreeMem(nullptr, nullptr, nullptr, &value);
    return reply::number(value);
}

// The channel handle the platform gave the library, resolved to the channel it names.
Reply currentChannel(const PageContext& page, const Arguments& args)
{
    void* handle = nullptr;
    if (native_AppPrivateDataGetCurrentChannel(applicationId(page, args), &handle) != library::BINDING_OK)
        return reply::null();
    const Channel* channel = ChannelList::get().byHandle(handle);
    return channel ? VideoBroadcastObject::channelJson(*channel) : reply::null();
}

// show, hide, destroy: the binding's result.
Reply applicationCall(const char* method, int (*binding)(void*), const PageContext& page, const Arguments& args)
{
    const int result = binding(applicationId(page, args));
    return checked(method, result, reply::number(result));
}

PageObject::Handler applicationMethod(const char* method, int (*binding)(void*))
{
    return [method, binding](const PageContext& page, const Arguments& args) {
        return applicationCall(method, binding, page, args);
    };
}

}  // namespace

ApplicationManagerObject::ApplicationManagerObject(ObjectServices& objectServices) : services(objectServices)
{
    table = {
        {"ApplicationManager.getOwnerApplication", "", QUIET, ownerApplication},
        {"Application.show", "n", TOLD, applicationMethod("Application.show", native_ApplicationShow)},
        {"Application.hide", "n", TOLD, applicationMethod("Application.hide", native_ApplicationHide)},
        {"Application.destroyApplication", "n", TOLD,
         applicationMethod("Application.destroyApplication", native_ApplicationDestroyApplication)},
        {"Application.createApplication", "nsb", TOLD, createApplication},
        {"KeySet.setValue", "nn", TOLD, keysetSetValue},
        {"KeySet.value", "n", QUIET, keysetValue},
        {"KeySet.maximumValue", "n", QUIET, keysetMaximumValue},
        {"PrivateData.getFreeMem", "", QUIET, freeMemory},
        {"PrivateData.currentChannel", "n", QUIET, currentChannel},
    };
}

void ApplicationManagerObject::applicationEvent(const std::string& name, uint32_t applicationId)
{
    services.toEveryPage("ApplicationManager." + name, reply::number(applicationId));
}
