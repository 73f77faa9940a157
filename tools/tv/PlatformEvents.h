#ifndef TESMO_TV_PLATFORMEVENTS_H
#define TESMO_TV_PLATFORMEVENTS_H

#include <functional>

#include "tesmo_hbbtv/tesmo_hbbtv.h"

// How the platform's parts send the library an event: a record from newEvent (the library
// frees it), or none.
using PostEvent = std::function<void(HBBTV_EventType type, HBBTV_EventData* data)>;

// A zeroed record, allocated as the library frees it.
HBBTV_EventData* newEvent();

#endif
