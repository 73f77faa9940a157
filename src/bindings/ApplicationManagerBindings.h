#ifndef TESMO_HBBTV_BINDINGS_APPLICATIONMANAGERBINDINGS_H
#define TESMO_HBBTV_BINDINGS_APPLICATIONMANAGERBINDINGS_H

// How the library reports to the page scripts' application-manager objects: through the two
// listeners the script layer sets with native_ApplicationManagerSetListener and
// native_ApplicationManagerSetAppDestroyedListener. Unset listeners drop the report.

#include <cstdint>

namespace TesmoHbbTV {

class Application;

void call_application_destroyed_listener(Application* application);
void call_application_load_error_listener(Application* application);
void call_low_memory_listener();

// How script-side identities become the library's objects; each logs when it finds nothing.
Application* get_application_from_window(long handle);
Application* get_application_from_id(void* id);
uint32_t get_id_from_application(const Application* application);

}  // namespace TesmoHbbTV

#endif
