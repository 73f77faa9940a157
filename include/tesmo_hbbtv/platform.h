#ifndef TESMO_HBBTV_PLATFORM_H
#define TESMO_HBBTV_PLATFORM_H

/* What the library needs of the TV platform: the AIT acquisition service, the key
 * capabilities and the DSM-CC object-carousel client.
 *
 * The platform provides these functions; the library calls them on the browser thread.
 * dsmcc_get_mime_type hands over a malloc'ed string that the library frees; the buffer of
 * dsmcc_read stays the client's. The opaque arguments of the stream-event functions are
 * passed through unchanged from the browser core's script objects. */

#include <stdbool.h>
#include <stdint.h>

#include "export.h"

#ifdef __cplusplus
extern "C" {
#endif

enum { DSMCC_OK = 0, DSMCC_FILE_ERROR_CODE = 1, DSMCC_PENDING = 2, DSMCC_UNKNOWN_ID = 3 };

TESMO_HBBTV_API void hbbtv_ait_start(void);
TESMO_HBBTV_API void hbbtv_ait_stop(void);
TESMO_HBBTV_API void hbbtv_ait_completed(int version_number);
TESMO_HBBTV_API void hbbtv_ait_invalidate(void);
TESMO_HBBTV_API int  hbbtv_keyset_get_supported_values(void);

TESMO_HBBTV_API void dsmcc_start(void);
TESMO_HBBTV_API void dsmcc_stop(void);
TESMO_HBBTV_API void dsmcc_clear_cache(void);
TESMO_HBBTV_API int  dsmcc_get_file(const char* path, void* id);
TESMO_HBBTV_API int  dsmcc_get_mime_type(void* id, char** mime_type);          /* malloc'ed; the library frees it */
TESMO_HBBTV_API int  dsmcc_read(void* id, const unsigned char** data, unsigned int* length); /* data stays the client's */
TESMO_HBBTV_API int  dsmcc_close_file(void* id);
TESMO_HBBTV_API int  dsmcc_same_carousel(const char* url, const char* other_url, int* same);
TESMO_HBBTV_API int  dsmcc_stream_event_subscribe(const char* path, void* a, void* b, void* c, void* d);
TESMO_HBBTV_API int  dsmcc_xml_stream_event_subscribe(void* first, uint16_t a, uint16_t service_id, uint16_t b,
                                                      void* x, void* y, void* z);
TESMO_HBBTV_API int  dsmcc_stream_event_unsubscribe(void* a, void* b);
TESMO_HBBTV_API int  dsmcc_stream_event_unsubscribe_all(void* a);

#ifdef __cplusplus
}
#endif

#endif
