#include "bindings/ApplicationManagerBindings.h"

#include "lifecycle/Application.h"
#include "tesmo_hbbtv/bindings.h"

namespace TesmoHbbTV {

namespace {

// Written by the set-listener bindings, on the browser thread only.
HBBTV_AppManagerListener applicationManagerListener = nullptr;
HBBTV_AppDestroyedListener applicationDestroyedListener = nullptr;

const uint32_t EVENT_LOW_MEMORY = 0;
const uint32_t EVENT_LOAD_ERROR = 3;

uint32_t idOf(const Application* application)
{
    return application ? application->getID() : 0;
}

} // namespace

void call_application_destroyed_listener(Application* application)
{
    if (applicationDestroyedListener)
        applicationDestroyedListener(idOf(application));
}

void call_application_load_error_listener(Application* application)
{
    if (applicationManagerListener)
        applicationManagerListener(EVENT_LOAD_ERROR, idOf(application));
}

void call_low_memory_listener()
{
    if (applicationManagerListener)
        applicationManagerListener(EVENT_LOW_MEMORY, 0);
}

} // namespace TesmoHbbTV

using namespace TesmoHbbTV;

extern "C" {

int native_ApplicationManagerSetListener(HBBTV_AppManagerListener listener)
{
    applicationManagerListener = listener;
    return 0;
}

int native_ApplicationManagerSetAppDestroyedListener(HBBTV_AppDestroyedListener listener)
{
    applicationDestroyedListener = listener;
    return 0;
}

} // extern "C"
