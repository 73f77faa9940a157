#ifndef TESMO_HBBTV_BINDINGS_APPLICATIONMANAGERBINDINGS_H
#define TESMO_HBBTV_BINDINGS_APPLICATIONMANAGERBINDINGS_H

// How the library reports to the page scripts' application-manager objects: through the two
// listeners the script layer sets with native_ApplicationManagerSetListener and
// native_ApplicationManagerSetAppDestroyedListener. Unset listeners drop the report.

namespace TesmoHbbTV {

class Application;

void call_application_destroyed_listener(Application* application);
void call_application_load_error_listener(Application* application);
void call_low_memory_listener();

} // namespace TesmoHbbTV

#endif
