// The script side of key sets: read the set, read the most it can hold, write it.

#include <cmath>
#include <cstdint>
#include <limits>

#include "api/ConfigurationManager.h"
#include "bindings/ApplicationManagerBindings.h"
#include "bindings/KeySet.h"
#include "lifecycle/Application.h"
#include "notify/KeysetChangedNotification.h"
#include "notify/NotificationManager.h"
#include "support/LogEntry.h"
#include "support/EntryGuard.h"
#include "tesmo_hbbtv/bindings.h"

using namespace TesmoHbbTV;

namespace {

const int RESULT_OK = 0;
const int RESULT_NOT_FOUND = 3;

void logBinding(const char* name)
{
    LogEntry(LOG_LEVEL_DEBUG, "ApplicationManager") << name;
}

// Truncation toward zero; what does not fit a signed 32-bit value, or is not a number,
// becomes the largest one.
int32_t toKeySetValue(double value)
{
    if (std::isnan(value) || value <= double(std::numeric_limits<int32_t>::min()) - 1.0 ||
        value >= double(std::numeric_limits<int32_t>::max()) + 1.0)
        return std::numeric_limits<int32_t>::max();
    return static_cast<int32_t>(value);
}

}  // namespace

extern "C" {

int native_KeySetGetValue(void* application_id, double* value)
{
    EntryGuard guard;
    logBinding("native_KeySetGetValue");
    Application* app = get_application_from_id(application_id);
    if (!app)
        return RESULT_NOT_FOUND;
    if (value)
        *value = app->getKeySet()->getValue();
    return RESULT_OK;
}

int native_KeySetGetMaximumValue(void*, double* value)
{
    EntryGuard guard;
    logBinding("native_KeySetGetMaximumValue");
    if (value)
        *value = ConfigurationManager::getInstance()->getSupportedKeyInput();
    return RESULT_OK;
}

// The platform hears of every successful write, also of one that changes nothing.
int native_KeySetSetValue(void* application_id, double value, double* result)
{
    EntryGuard guard;
    logBinding("native_KeySetSetValue");
    Application* app = get_application_from_id(application_id);
    if (!app)
        return RESULT_NOT_FOUND;
    const int stored = app->getKeySet()->setValue(toKeySetValue(value));
    if (result)
        *result = stored;
    if (NotificationManager::existingInstance())
        NotificationManager::raise<KeysetChangedNotification>(app->getDaxoWindow(), stored);
    return RESULT_OK;
}

}  // extern "C"
