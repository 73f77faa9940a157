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

long pageOf(void* listener)
{
    return long(uintptr_t(listener) >> 16);
}

int numberOf(void* listener)
{
    return int(uintptr_t(listener) & 0xFFFF);
}

// (target URL, event name, listener): a stream event object of the carousel.
Reply addListener(const PageContext& page, const Arguments& args)
{
    const std::string target = args.text(0);
    std::string eventName = args.text(1);
    return reply::number(native_BroadcastAddStreamEventListener(target.c_str(), listenerCookie(page, args.number(2)),
                                                                &eventName[0], nullptr, nullptr, page.handle));
}

// (event name, component tag, event id, listener): from an XML event description.
Reply addXmlListener(const PageContext& page, const Arguments& args)
{
    std::string eventName = args.text(0);
    return reply::number(native_BroadcastAddXMLStreamEventListener(&eventName[0], args.number(1), args.number(2),
                                                                   listenerCookie(page, args.number(3)), nullptr,
                                                                   nullptr, page.handle));
}

Reply removeListener(const PageContext& page, const Arguments& args)
{
    return reply::number(
        native_BroadcastRemoveStreamEventListener(nullptr, listenerCookie(page, args.number(0)), nullptr));
}

}  // namespace

StreamEventsObject::StreamEventsObject(ObjectServices& objectServices) : services(objectServices)
{
    table = {{"StreamEvents.add", "ssn", TOLD, addListener},
             {"StreamEvents.addXml", "snnn", TOLD, addXmlListener},
             {"StreamEvents.remove", "n", TOLD, removeListener}};
}

void StreamEventsObject::streamEvent(void* listener, const std::string& name, const std::string& data,
                                     const std::string& text, const std::string& status)
{
    services.toPage(pageOf(listener), "StreamEvents.event", payload(numberOf(listener), name, data, text, status));
}

JsonNode* StreamEventsObject::payload(int listenerNumber, const std::string& name, const std::string& data,
                                      const std::string& text, const std::string& status)
{
    JsonObject* event = json_object_new();
    json_object_set_int_member(event, "listener", listenerNumber);
    json_object_set_string_member(event, "name", name.c_str());
    json_object_set_string_member(event, "data", data.c_str());
    json_object_set_string_member(event, "text", text.c_str());
    json_object_set_string_member(event, "status", status.c_str());
    return reply::object(event);
}
