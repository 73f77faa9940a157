#include "StreamEventsObject.h"

#include <cstdint>

#include "tesmo_hbbtv/bindings.h"

namespace {

// A listener as the platform knows it: the page's browser window handle and the page's own
// number for it.
void* listenerCookie(const PageContext& page, double listener)
{
    return reinterpret_cast<void*>(uintptr_t(page.handle) << 16 | (uintptr_t(wholeNumber(listener)) & 0xFFFF));
}

// (target URL, event name, listener): a stream event object of the carousel.
JsonNode* addListener(const PageContext& page, const Arguments& args)
{
    const std::string target = args.text(0);
    std::string eventName = args.text(1);
    return reply::number(native_BroadcastAddStreamEventListener(target.c_str(), listenerCookie(page, args.number(2)),
                                                                &eventName[0], nullptr, nullptr, page.handle));
}

// (event name, component tag, event id, listener): from an XML event description.
JsonNode* addXmlListener(const PageContext& page, const Arguments& args)
{
    std::string eventName = args.text(0);
    return reply::number(native_BroadcastAddXMLStreamEventListener(&eventName[0], args.number(1), args.number(2),
                                                                   listenerCookie(page, args.number(3)), nullptr,
                                                                   nullptr, page.handle));
}

JsonNode* removeListener(const PageContext& page, const Arguments& args)
{
    return reply::number(native_BroadcastRemoveStreamEventListener(nullptr, listenerCookie(page, args.number(0)), nullptr));
}

} // namespace

const PageMethods& StreamEventsObject::methods()
{
    static const PageMethods methods = {{"StreamEvents.add", addListener},
                                        {"StreamEvents.addXml", addXmlListener},
                                        {"StreamEvents.remove", removeListener}};
    return methods;
}

long StreamEventsObject::pageOf(void* listener)
{
    return long(uintptr_t(listener) >> 16);
}

int StreamEventsObject::numberOf(void* listener)
{
    return int(uintptr_t(listener) & 0xFFFF);
}
