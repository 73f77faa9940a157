#include "PlatformEvents.h"

#include <cstdlib>

HBBTV_EventData* newEvent()
{
    return static_cast<HBBTV_EventData*>(std::calloc(1, sizeof(HBBTV_EventData)));
}
