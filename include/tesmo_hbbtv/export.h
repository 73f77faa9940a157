#ifndef TESMO_HBBTV_EXPORT_H
#define TESMO_HBBTV_EXPORT_H

/* The library is built with hidden visibility; this marks what crosses the shared-object
   boundary in either direction: the library's exports, and the platform and browser-core
   functions that the host program provides and the library resolves at load time. */
#if defined(__GNUC__) || defined(__clang__)
#define TESMO_HBBTV_API __attribute__((visibility("default")))
#else
#define TESMO_HBBTV_API
#endif

#endif
