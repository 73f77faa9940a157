#ifndef TESMO_HBBTV_BROWSER_CORE_H
#define TESMO_HBBTV_BROWSER_CORE_H

/* What the library needs of the browser core (the embeddable HTML engine).
 *
 * The browser core provides the functions declared here; the library calls them, on the
 * browser thread only. Records passed to tesmo_hbbtv_handle_notification stay the core's:
 * the library reads them during the call and writes only the fields marked as answers.
 * Strings the core hands out (tm_get_loading_url) stay the core's. */

#include <stdbool.h>
#include <stdint.h>

#include "export.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct DAXO_Tesmo DAXO_Tesmo;              /* browser-core instance, opaque */
typedef struct DAXO_TesmoWindow DAXO_TesmoWindow;  /* browser-core window, opaque */
typedef int32_t DAXO_KEY_SYM;

/* Notification ids passed to tesmo_hbbtv_handle_notification (browser core's numbering). */
enum {
    DAXO_TESMO_EVT_WINDOW_CLOSE = 2,
    DAXO_TESMO_EVT_LOADING_STARTED = 9,
    DAXO_TESMO_EVT_LOADING_FINISHED = 11,
    DAXO_TESMO_EVT_LOADING_FAILED = 12,
    DAXO_TESMO_EVT_PROTOCOL_LOADING_START = 49,
    DAXO_TESMO_EVT_PROTOCOL_LOADING_STOP = 116,
    DAXO_TESMO_EVT_XML_AIT_PARSE_FAILED = 124,
    DAXO_TESMO_EVT_XHR_REQUEST = 149,
    DAXO_TESMO_EVT_AIT = 157
};

typedef struct DAXO_LoadRecord {          /* id 11 */
    uint8_t core_private[56];
    int32_t outcome;                      /* byte 56; 3 = connection failed */
    int16_t http_status;                  /* byte 60 */
} DAXO_LoadRecord;

typedef struct DAXO_ProtocolRecord {      /* ids 49 and 116 */
    const char* url;                      /* first field */
    void* core_private;
    void* stream;                         /* third field: the request id */
} DAXO_ProtocolRecord;

typedef struct DAXO_RequestRecord {       /* id 149 */
    const char* base_url;
    const char* url;
    int32_t permission;                   /* written by the library: an HBBTV_XHR_Permission */
} DAXO_RequestRecord;

typedef struct DAXO_AITProfile {
    uint16_t profile;
    uint8_t major, minor, micro;
} DAXO_AITProfile;

typedef struct DAXO_AITApplicationTransport {
    int32_t protocol_id;
    const char* url_base;                 /* may be null */
    int32_t remote_connection;
    uint16_t original_network_id;
    uint16_t transport_stream_id;
    uint16_t service_id;
    uint8_t component_tag;
} DAXO_AITApplicationTransport;

typedef struct DAXO_AITApplication {
    const char* name;                     /* may be null */
    uint32_t organisation_id;
    uint32_t application_id;              /* low 16 bits significant */
    int32_t control_code;
    int32_t visibility;
    int32_t service_bound;
    int32_t priority;
    int32_t num_profiles;
    DAXO_AITProfile* profiles;
    int32_t num_transports;
    DAXO_AITApplicationTransport* transports;
    const char* location;                 /* may be null */
    int32_t num_boundaries;
    const char** boundaries;
    int32_t usage_type;
} DAXO_AITApplication;

typedef struct DAXO_AITData {             /* id 157 */
    int32_t num_applications;
    DAXO_AITApplication* applications;
} DAXO_AITData;

/* Functions the browser core provides; the library calls them. 0 is success where an int is returned. */
TESMO_HBBTV_API int  tm_open_url(DAXO_TesmoWindow* window, const char* url);
TESMO_HBBTV_API void tm_clear_history(DAXO_TesmoWindow* window);
TESMO_HBBTV_API int  tm_get_loading_url(DAXO_TesmoWindow* window, const char** url, int flags);   /* url stays the core's */
TESMO_HBBTV_API int  tm_get_window(DAXO_Tesmo* core, long handle, DAXO_TesmoWindow** window);
TESMO_HBBTV_API int  tm_resolve_relative_url(const char* base, const char* relative, char** result); /* result may stay null */
TESMO_HBBTV_API void tm_protocol_set_mime_type(void* stream, const char* mime_type);
TESMO_HBBTV_API void tm_protocol_write(void* stream, const unsigned char* data, unsigned int length);
TESMO_HBBTV_API void tm_protocol_finished(void* stream, int status);
TESMO_HBBTV_API void tm_protocol_failed(void* stream, int status);
TESMO_HBBTV_API void tm_set_uastring_extension(DAXO_Tesmo* core, const char* text);
TESMO_HBBTV_API void daxo_keyboard_evt(int action, DAXO_KEY_SYM key, uint8_t modifiers);

#ifdef __cplusplus
}
#endif

#if defined(__cplusplus)
#define TESMO_HBBTV_STATIC_ASSERT static_assert
#else
#define TESMO_HBBTV_STATIC_ASSERT _Static_assert
#endif

#if defined(__SIZEOF_POINTER__) && __SIZEOF_POINTER__ == 4
#include <stddef.h>
/* Byte positions the browser core relies on, on the 32-bit receiver. */
TESMO_HBBTV_STATIC_ASSERT(offsetof(DAXO_LoadRecord, outcome) == 56, "load outcome at byte 56");
TESMO_HBBTV_STATIC_ASSERT(offsetof(DAXO_LoadRecord, http_status) == 60, "HTTP status at byte 60");
TESMO_HBBTV_STATIC_ASSERT(offsetof(DAXO_ProtocolRecord, url) == 0, "protocol URL first");
TESMO_HBBTV_STATIC_ASSERT(offsetof(DAXO_ProtocolRecord, stream) == 8, "protocol stream third");
TESMO_HBBTV_STATIC_ASSERT(offsetof(DAXO_RequestRecord, url) == 4, "request URL second");
TESMO_HBBTV_STATIC_ASSERT(offsetof(DAXO_RequestRecord, permission) == 8, "request permission third");
TESMO_HBBTV_STATIC_ASSERT(sizeof(DAXO_AITProfile) == 6, "profile entry of 6 bytes");
TESMO_HBBTV_STATIC_ASSERT(offsetof(DAXO_AITApplicationTransport, url_base) == 4, "transport URL base");
TESMO_HBBTV_STATIC_ASSERT(offsetof(DAXO_AITApplicationTransport, original_network_id) == 12, "transport ids");
TESMO_HBBTV_STATIC_ASSERT(offsetof(DAXO_AITApplicationTransport, component_tag) == 18, "transport tag");
TESMO_HBBTV_STATIC_ASSERT(sizeof(DAXO_AITApplicationTransport) == 20, "transport record size");
TESMO_HBBTV_STATIC_ASSERT(offsetof(DAXO_AITApplication, organisation_id) == 4, "application org id");
TESMO_HBBTV_STATIC_ASSERT(offsetof(DAXO_AITApplication, priority) == 24, "application priority");
TESMO_HBBTV_STATIC_ASSERT(offsetof(DAXO_AITApplication, profiles) == 32, "application profiles");
TESMO_HBBTV_STATIC_ASSERT(offsetof(DAXO_AITApplication, transports) == 40, "application transports");
TESMO_HBBTV_STATIC_ASSERT(offsetof(DAXO_AITApplication, location) == 44, "application location");
TESMO_HBBTV_STATIC_ASSERT(offsetof(DAXO_AITApplication, boundaries) == 52, "application boundaries");
TESMO_HBBTV_STATIC_ASSERT(offsetof(DAXO_AITApplication, usage_type) == 56, "application usage type");
TESMO_HBBTV_STATIC_ASSERT(sizeof(DAXO_AITData) == 8, "AIT record size");
#endif

#endif
