#ifndef TESMO_HBBTV_TESTS_PLATFORMLISTENER_H
#define TESMO_HBBTV_TESTS_PLATFORMLISTENER_H

// A platform's notification listener for tests: records every notification with its
// fields, grants browser windows and answers the library's questions as programmed.

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tesmo_hbbtv/tesmo_hbbtv.h"

namespace tesmo_test {

struct Notice {
    HBBTV_NotificationType type;
    void* window = nullptr;
    int32_t flagA = 0, flagB = 0, flagC = 0;
    uint32_t organisationId = 0;
    uint16_t applicationId = 0;
    std::string url;
    uint8_t usageType = 0;
    DAXO_TesmoWindow* browserWindow = nullptr;  // request, release, show, hide, key set
    int32_t keyset = 0;
    // AIT update: per application, its identifiers and URLs ("" for a null slot).
    struct Entry {
        std::string name;
        uint32_t organisationId;
        uint16_t applicationId;
        int32_t controlCode;
        std::vector<std::string> urls;
    };
    bool hasPayload = true;
    int32_t isXmlAit = 0, wasCorrected = 0;
    std::vector<Entry> applications;
};

class PlatformListener {
public:
    static PlatformListener& get();
    void reset();
    // Registers with the library (after tesmo_hbbtv_init).
    void install();

    std::vector<HBBTV_NotificationType> types() const;
    std::vector<Notice> ofType(HBBTV_NotificationType type) const;
    // The URLs of the applications the platform was asked to start, in order.
    std::vector<std::string> startedUrls() const;
    // The browser windows granted so far; each request gets a new one.
    DAXO_TesmoWindow* lastGrantedWindow() const { return lastGranted; }

    std::vector<Notice> notices;

    // ---- answers ----
    bool grantWindows = true;
    std::optional<int32_t> startAction;  // written into every start record when set
    std::optional<bool> reactivateAit;  // written through the stop record when set
    std::optional<bool> trusted;
    long freeMemory = -1;  // left as is when -1
    // A TV with one HbbTV browser window grants the same one to every request.
    bool grantOneWindow = false;
    // Called after a notification is recorded and answered: what an integrator's listener
    // does besides answering, such as calling back into the library.
    std::function<void(HBBTV_NotificationType, HBBTV_NotificationData*)> onNotice;

    static HBBTV_STATUS listen(HBBTV_NotificationType type, HBBTV_NotificationData* data);

private:
    PlatformListener() = default;
    void handle(HBBTV_NotificationType type, HBBTV_NotificationData* data);

    uintptr_t nextWindow = 0x1000;
    DAXO_TesmoWindow* lastGranted = nullptr;
};

}  // namespace tesmo_test

#endif
