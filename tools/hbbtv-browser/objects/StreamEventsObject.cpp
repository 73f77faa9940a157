#include "StreamEventsObject.h"

#include <cstdint>

#include "tesmo_hbbtv/bindings.h"

namespace {

void* listenerId(double number)
{
    return reinterpret_cast<void*>(uintptr_t(number));
}

// (target URL, event name, listener id)
JsonNode* addListener(const PageContext& page, const Arguments& args)
{
    const std::string target = args.text(0);
    return reply::number(
        native_BroadcastAddStreamEventListener(target.c_str(), listenerId(args.number(2)), nullptr, nullptr, nullptr, page.handle));
}

JsonNode* removeListener(const PageContext&, const Arguments& args)
{
    return reply::number(native_BroadcastRemoveStreamEventListener(nullptr, listenerId(args.number(0)), nullptr));
}

} // namespace

const PageMethods& StreamEventsObject::methods()
{
    static const PageMethods methods = {{"StreamEvents.add", addListener}, {"StreamEvents.remove", removeListener}};
    return methods;
}
