#ifndef TESMO_HBBTV_BINDINGS_H
#define TESMO_HBBTV_BINDINGS_H

/* The script bindings the browser core's script engine calls, on the browser thread.
 *
 * An application id is the library's application identifier carried in a void*; a window
 * handle is the script side's long. Results: 0 success, 1 the operation failed, 3 no such
 * manager, window or application, 6 not trusted. */

#include <stdbool.h>
#include <stdint.h>

#include "export.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef void (*HBBTV_AppManagerListener)(uint32_t event, uint32_t application_id);
typedef void (*HBBTV_AppDestroyedListener)(uint32_t application_id);

TESMO_HBBTV_API int native_ApplicationManagerSetListener(HBBTV_AppManagerListener listener);
TESMO_HBBTV_API int native_ApplicationManagerSetAppDestroyedListener(HBBTV_AppDestroyedListener listener);
TESMO_HBBTV_API int native_AppManGetApplicationId(long window_handle, void** application_id);
TESMO_HBBTV_API int native_AppManNotifySetChannelCalled(long window_handle, const char* text, void* channel);
TESMO_HBBTV_API int native_ApplicationShow(void* application_id);
TESMO_HBBTV_API int native_ApplicationHide(void* application_id);
TESMO_HBBTV_API int native_ApplicationCreateApplication(const char* url, int child, void* parent_id,
                                                        void** application_id);
TESMO_HBBTV_API int native_ApplicationDestroyApplication(void* application_id);
TESMO_HBBTV_API int native_AppPrivateDataGetFreeMem(void* a, void* b, void* c, double* free_memory);
TESMO_HBBTV_API int native_AppPrivateDataGetCurrentChannel(void* application_id, void** channel);
TESMO_HBBTV_API int native_PermissionsIsTrusted(long window_handle, const char* url);
TESMO_HBBTV_API int native_PermissionsIsBroadcastRelated(long window_handle, const char* url);

TESMO_HBBTV_API int native_KeySetGetValue(void* application_id, double* value);
TESMO_HBBTV_API int native_KeySetGetMaximumValue(void* application_id, double* value);
TESMO_HBBTV_API int native_KeySetSetValue(void* application_id, double value, double* result);

TESMO_HBBTV_API int native_BroadcastAddStreamEventListener(const char* target, void* a, void* b, void* c,
                                                           void* d, long window_handle);
TESMO_HBBTV_API int native_BroadcastAddXMLStreamEventListener(void* first, double a, double b, void* x,
                                                              void* y, void* z, long window_handle);
TESMO_HBBTV_API int native_BroadcastRemoveStreamEventListener(void* unused, void* a, void* b);
TESMO_HBBTV_API int native_BroadcastRemoveAllStreamEventListeners(void* a);

#ifdef __cplusplus
}
#endif

#endif
