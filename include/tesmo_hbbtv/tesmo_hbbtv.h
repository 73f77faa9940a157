#ifndef TESMO_HBBTV_TESMO_HBBTV_H
#define TESMO_HBBTV_TESMO_HBBTV_H

/* The library's exported interface.
 *
 * Threads: tesmo_hbbtv_send_event may be called from any thread at any time: before
 * tesmo_hbbtv_init, while the library runs, and across tesmo_hbbtv_shutdown and a later
 * init. Every other function, every listener callback and every script binding runs on
 * the browser thread, the one that calls tesmo_hbbtv_tick. tesmo_hbbtv_init and
 * tesmo_hbbtv_shutdown must not overlap any other call on the browser thread.
 *
 * Released windows: tesmo_hbbtv_release_window drops the queued events that name the window
 * (start by identifiers, start by URL, terminate): they never run, and the record and URL
 * they own are freed. A later window may stand at the same address, so a handle used after
 * its release, in an event or a call, is the platform's error: it may reach that window.
 *
 * Calling back: notification listeners, the script listeners set with
 * native_ApplicationManagerSetListener and native_ApplicationManagerSetAppDestroyedListener,
 * and stream-event callbacks run inside the library call that raised them. They may call
 * every exported function and binding, which acts at once on the state as it is then:
 *  - tesmo_hbbtv_release_window: the window is unreachable at once (not the broadcast
 *    window, its browser windows no longer HbbTV windows, queued work for it dropped) and
 *    starts nothing more; its applications are stopped and their browser windows released
 *    when the outermost library call returns.
 *  - an application stopped or destroyed from a callback is gone for every later call at
 *    once; its memory is freed when the outermost call returns, so the call below the
 *    callback never meets freed memory.
 *  - tesmo_hbbtv_tick runs the next queued event inside the callback.
 *  - tesmo_hbbtv_create_window gives null while tesmo_hbbtv_shutdown closes the windows.
 *  - tesmo_hbbtv_init and tesmo_hbbtv_shutdown are refused with an ERR log line and leave
 *    the library as it was.
 * Calls that do not come from a callback behave as if this list did not exist.
 *
 * Ownership: an HBBTV_EventData record and every string or buffer in it that the event
 * type owns pass to the library with tesmo_hbbtv_send_event (allocate them with malloc;
 * the library frees them after the event has run). When the library is not initialised,
 * nothing is taken and the caller keeps the record.
 * Notification records handed to listeners stay the library's: a listener writes only the
 * answer fields and keeps no pointer into the record after it returns.
 *
 * Results: false, null or HBBTV_STATUS_FAILED mean that the call had no effect; nothing is
 * ever thrown across this interface. */

#include <stdbool.h>
#include <stdint.h>

#include "browser_core.h"
#include "export.h"

#ifdef __cplusplus
namespace TesmoHbbTV { class Window; }
typedef TesmoHbbTV::Window HBBTV_Window;
extern "C" {
#else
typedef struct HBBTV_Window HBBTV_Window;       /* the library's Window, opaque to the platform */
#endif

typedef enum { HBBTV_STATUS_OK = 0, HBBTV_STATUS_FAILED = 1 } HBBTV_STATUS;

/* ---- platform events ---- */
typedef enum {
    HBBTV_EVENT_AIT_SECTION = 0, HBBTV_EVENT_AIT_WITHDRAWN = 1,
    HBBTV_EVENT_START_APPLICATION = 2, HBBTV_EVENT_START_BROADCAST_INDEPENDENT = 3,
    HBBTV_EVENT_TERMINATE_APPLICATION = 4,
    HBBTV_EVENT_DSMCC_FILE_READY = 5, HBBTV_EVENT_DSMCC_FILE_ERROR = 6,
    HBBTV_EVENT_BROADBAND_UP = 7, HBBTV_EVENT_BROADBAND_DOWN = 8,
    HBBTV_EVENT_DSMCC_STREAM_EVENT = 9, HBBTV_EVENT_LOW_MEMORY = 10,
    HBBTV_EVENT_TERMINAL_IDENTITY = 11, HBBTV_EVENT_PLATFORM_PROFILES = 12
} HBBTV_EventType;

/* A stream event (type 9): the library calls callback(a, b, c, d, e) with the five words the
 * platform put in the record, in order, then frees a, b, c and d (heap strings, free()d; null
 * is allowed). Their meaning is the platform's own: the library only carries them, which lets
 * the platform's carousel thread hand an event to the browser thread through the library.
 * e is not freed (a listener, say). */
typedef void (*HBBTV_StreamEventCallback)(char* a, char* b, char* c, char* d, void* e);

typedef union HBBTV_EventData {
    struct { unsigned char* section; uint16_t original_network_id; uint16_t transport_stream_id;
             uint16_t service_id; int32_t ait_present; void* channel; } ait_section;       /* 0 */
    struct { HBBTV_Window* window; void* reserved; uint32_t organisation_id;
             uint16_t application_id; } start_application;                                  /* 2 */
    struct { HBBTV_Window* window; char* url; } start_broadcast_independent;                 /* 3 */
    struct { HBBTV_Window* window; } terminate_application;                                 /* 4 */
    struct { void* handle; } dsmcc_file;                                                    /* 5, 6 */
    struct { void* reserved; HBBTV_StreamEventCallback callback;
             char* a; char* b; char* c; char* d; void* e; } stream_event;                     /* 9 */
    struct { uint16_t version; char* strings[6]; } terminal_identity;                       /* 11 */
    struct { uint16_t profiles; } platform_profiles;                                        /* 12 */
} HBBTV_EventData;

/* ---- notifications to the platform ---- */
typedef enum {
    HBBTV_NOTIFICATION_APPLICATION_START = 0, HBBTV_NOTIFICATION_APPLICATION_STOP = 1,
    HBBTV_NOTIFICATION_AIT_UPDATE = 2, HBBTV_NOTIFICATION_TRUSTED = 3,
    HBBTV_NOTIFICATION_BROADCAST_RELATED_CHANGE = 4, HBBTV_NOTIFICATION_XHR = 5,
    HBBTV_NOTIFICATION_REQUEST_WINDOW = 6, HBBTV_NOTIFICATION_RELEASE_WINDOW = 7,
    HBBTV_NOTIFICATION_SHOW_WINDOW = 8, HBBTV_NOTIFICATION_HIDE_WINDOW = 9,
    HBBTV_NOTIFICATION_KEYSET_CHANGED = 10, HBBTV_NOTIFICATION_GET_FREE_MEMORY = 11
} HBBTV_NotificationType;

typedef enum { HBBTV_APPLICATION_ACTION_START = 0, HBBTV_APPLICATION_ACTION_BLOCK_AND_KILL = 1,
               HBBTV_APPLICATION_ACTION_BLOCK_AND_KEEP = 2 } HBBTV_ApplicationActionType;
typedef enum { HBBTV_XHR_PERMISSION_DEFAULT = 0, HBBTV_XHR_PERMISSION_DENY = 1,
               HBBTV_XHR_PERMISSION_CORE_DECIDES = 2 } HBBTV_XHR_Permission;

/* Types 0, 1, 3 and 4. The flags are 0 or 1:
 * flag_a  start: the application comes from a broadcast AIT (not an XML AIT);
 *         stop and trusted: the application is broadcast-related;
 *         broadcast-related change: the new broadcast-related value.
 * flag_b  trusted: the answer, preset to the library's verdict, which the listener may
 *         overturn; broadcast-related change: always 1; start and stop: 0.
 * flag_c  start, trusted and broadcast-related change: the application was launched as
 *         AUTOSTART; stop: 0.
 * An application started by URL alone has flag_a, flag_c and its identifiers 0. */
typedef struct HBBTV_ApplicationNotificationData {
    void* window; int32_t flag_a; int32_t flag_b; int32_t flag_c;
    uint32_t organisation_id; uint16_t application_id; char* url;
    bool* reactivate_ait; uint8_t usage_type; int32_t action;
} HBBTV_ApplicationNotificationData;

typedef struct HBBTV_AITApplicationInfo {
    char* name; uint32_t organisation_id; uint16_t application_id;
    int32_t num_urls; char** urls; int32_t usage_type; int32_t control_code;
} HBBTV_AITApplicationInfo;

typedef struct HBBTV_AITNotificationData {              /* type 2 */
    void* window; int32_t is_xml_ait; int32_t num_applications;
    HBBTV_AITApplicationInfo* applications; int32_t was_corrected;
} HBBTV_AITNotificationData;

typedef struct { char* base_url; char* target_url; int32_t permission; } HBBTV_XHRNotificationData;
typedef struct { DAXO_TesmoWindow** window_slot; int32_t granted; void* window; } HBBTV_RequestWindowData;
typedef struct { DAXO_TesmoWindow** window_slot; int32_t released; } HBBTV_ReleaseWindowData;
typedef struct { DAXO_TesmoWindow** window_slot; } HBBTV_WindowVisibilityData;   /* types 8, 9 */
typedef struct { DAXO_TesmoWindow* daxo_window; int32_t keyset; } HBBTV_KeysetChangedData;
typedef struct { long* free_memory; } HBBTV_FreeMemoryData;

typedef union HBBTV_NotificationData {
    HBBTV_ApplicationNotificationData application;
    HBBTV_AITNotificationData ait;
    HBBTV_XHRNotificationData xhr;
    HBBTV_RequestWindowData request_window;
    HBBTV_ReleaseWindowData release_window;
    HBBTV_WindowVisibilityData visibility;
    HBBTV_KeysetChangedData keyset_changed;
    HBBTV_FreeMemoryData get_free_memory;
} HBBTV_NotificationData;

typedef HBBTV_STATUS (*HBBTV_NotificationListener)(HBBTV_NotificationType type,
                                                    HBBTV_NotificationData* data);

/* ---- entry points ---- */
TESMO_HBBTV_API void tesmo_hbbtv_init(DAXO_Tesmo* core);
TESMO_HBBTV_API void tesmo_hbbtv_shutdown(void);
TESMO_HBBTV_API void tesmo_hbbtv_tick(void);
TESMO_HBBTV_API void tesmo_hbbtv_send_event(HBBTV_EventType type, HBBTV_EventData* data);
TESMO_HBBTV_API bool tesmo_hbbtv_handle_notification(void* sender, DAXO_TesmoWindow* window, int id,
                                                     void* data, int* result);
TESMO_HBBTV_API bool tesmo_hbbtv_key_input(DAXO_TesmoWindow* window, int query_only, DAXO_KEY_SYM key,
                                           uint8_t modifiers);
TESMO_HBBTV_API bool tesmo_hbbtv_add_notification_listener(HBBTV_NotificationListener listener);
TESMO_HBBTV_API HBBTV_Window* tesmo_hbbtv_create_window(void);
TESMO_HBBTV_API void tesmo_hbbtv_release_window(HBBTV_Window* window);
TESMO_HBBTV_API HBBTV_Window* tesmo_hbbtv_get_window_identifier(DAXO_TesmoWindow* daxo_window);
TESMO_HBBTV_API bool tesmo_hbbtv_is_hbbtv_window(DAXO_TesmoWindow* daxo_window);
TESMO_HBBTV_API void tesmo_hbbtv_set_broadcast_window(HBBTV_Window* window);
TESMO_HBBTV_API HBBTV_Window* tesmo_hbbtv_get_broadcast_window(void);
TESMO_HBBTV_API DAXO_TesmoWindow* tesmo_hbbtv_get_daxo_window(HBBTV_Window* window);
TESMO_HBBTV_API bool tesmo_hbbtv_is_within_boundaries(HBBTV_Window* window, const char* url);
TESMO_HBBTV_API HBBTV_STATUS tesmo_hbbtv_set_time_shifted(HBBTV_Window* window, int time_shifted);

/* Lets an embedding register a log output without C++ access: lines of min_level and above
   (1 DEBUG, 2 LOG, 3 WARN, 4 ERR) go to the file at path, appended, or to standard output
   when path is null. Returns false when the file cannot be opened. */
TESMO_HBBTV_API bool tesmo_hbbtv_add_log_output(int min_level, const char* path);

#ifdef __cplusplus
}
#endif

#if defined(__SIZEOF_POINTER__) && __SIZEOF_POINTER__ == 4
#include <stddef.h>
/* Byte positions the platform relies on, on the 32-bit receiver. */
TESMO_HBBTV_STATIC_ASSERT(offsetof(HBBTV_EventData, ait_section.original_network_id) == 4, "AIT onid");
TESMO_HBBTV_STATIC_ASSERT(offsetof(HBBTV_EventData, ait_section.transport_stream_id) == 6, "AIT tsid");
TESMO_HBBTV_STATIC_ASSERT(offsetof(HBBTV_EventData, ait_section.service_id) == 8, "AIT sid");
TESMO_HBBTV_STATIC_ASSERT(offsetof(HBBTV_EventData, ait_section.ait_present) == 12, "AIT tested word");
TESMO_HBBTV_STATIC_ASSERT(offsetof(HBBTV_EventData, ait_section.channel) == 16, "AIT channel");
TESMO_HBBTV_STATIC_ASSERT(offsetof(HBBTV_EventData, start_application.organisation_id) == 8, "start org id");
TESMO_HBBTV_STATIC_ASSERT(offsetof(HBBTV_EventData, start_application.application_id) == 12, "start app id");
TESMO_HBBTV_STATIC_ASSERT(offsetof(HBBTV_EventData, start_broadcast_independent.url) == 4, "start URL");
TESMO_HBBTV_STATIC_ASSERT(offsetof(HBBTV_EventData, stream_event.callback) == 4, "stream callback");
TESMO_HBBTV_STATIC_ASSERT(offsetof(HBBTV_EventData, stream_event.a) == 8, "stream first argument");
TESMO_HBBTV_STATIC_ASSERT(offsetof(HBBTV_EventData, stream_event.e) == 24, "stream fifth argument");
TESMO_HBBTV_STATIC_ASSERT(offsetof(HBBTV_EventData, terminal_identity.strings) == 4, "identity strings");
TESMO_HBBTV_STATIC_ASSERT(sizeof(HBBTV_EventData) == 28, "event record size");
TESMO_HBBTV_STATIC_ASSERT(offsetof(HBBTV_ApplicationNotificationData, flag_c) == 12, "flag_c");
TESMO_HBBTV_STATIC_ASSERT(offsetof(HBBTV_ApplicationNotificationData, organisation_id) == 16, "org id");
TESMO_HBBTV_STATIC_ASSERT(offsetof(HBBTV_ApplicationNotificationData, application_id) == 20, "app id");
TESMO_HBBTV_STATIC_ASSERT(offsetof(HBBTV_ApplicationNotificationData, url) == 24, "url");
TESMO_HBBTV_STATIC_ASSERT(offsetof(HBBTV_ApplicationNotificationData, reactivate_ait) == 28, "reactivate");
TESMO_HBBTV_STATIC_ASSERT(offsetof(HBBTV_ApplicationNotificationData, usage_type) == 32, "usage type");
TESMO_HBBTV_STATIC_ASSERT(offsetof(HBBTV_ApplicationNotificationData, action) == 36, "action");
TESMO_HBBTV_STATIC_ASSERT(sizeof(HBBTV_NotificationData) == 40, "payload block size");
TESMO_HBBTV_STATIC_ASSERT(offsetof(HBBTV_AITNotificationData, applications) == 12, "AIT entries");
TESMO_HBBTV_STATIC_ASSERT(offsetof(HBBTV_AITNotificationData, was_corrected) == 16, "AIT corrected");
TESMO_HBBTV_STATIC_ASSERT(offsetof(HBBTV_AITApplicationInfo, urls) == 16, "entry urls");
TESMO_HBBTV_STATIC_ASSERT(offsetof(HBBTV_AITApplicationInfo, control_code) == 24, "entry control code");
TESMO_HBBTV_STATIC_ASSERT(sizeof(HBBTV_AITApplicationInfo) == 28, "entry size");
TESMO_HBBTV_STATIC_ASSERT(offsetof(HBBTV_XHRNotificationData, permission) == 8, "XHR permission");
TESMO_HBBTV_STATIC_ASSERT(offsetof(HBBTV_RequestWindowData, window) == 8, "request window");
TESMO_HBBTV_STATIC_ASSERT(offsetof(HBBTV_KeysetChangedData, keyset) == 4, "keyset value");
#endif

#endif
