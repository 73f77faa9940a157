#ifndef TESMO_TV_LIBRARYNUMBERS_H
#define TESMO_TV_LIBRARYNUMBERS_H

#include <cstdint>

// Numbers the library's C interface uses without naming them, named once for the hosts.
namespace library {

// DAXO_LoadRecord::outcome: the server could not be reached (the library then tries the
// application's next transport).
const int32_t LOAD_CONNECTION_FAILED = 3;

// The result slot of tesmo_hbbtv_handle_notification: what the library refuses as invalid
// (a request with no application behind it, a protocol it does not serve).
const int NOTIFICATION_INVALID = -3;

// The script bindings' results.
const int BINDING_OK = 0;
const int BINDING_NO_SUCH = 3;  // no such manager, window or application

// The application-manager listener's events.
const uint32_t APPLICATION_LOW_MEMORY = 0;
const uint32_t APPLICATION_LOAD_ERROR = 3;

// hbbtv_keyset_get_supported_values: every key of the key-set table.
const int KEYSET_ALL = 0x3FF;

}  // namespace library

#endif
