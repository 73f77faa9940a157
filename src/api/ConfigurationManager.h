#ifndef TESMO_HBBTV_API_CONFIGURATIONMANAGER_H
#define TESMO_HBBTV_API_CONFIGURATIONMANAGER_H

#include <atomic>
#include <cstdint>
#include <mutex>

#include "tesmo_hbbtv/browser_core.h"

namespace TesmoHbbTV {

class OCDownloadManager;
class ThreadsafeEventQueue;

// Holds what the platform configures: the browser-core instance, the event queue, the
// announced HbbTV version, the supported platform profiles and key input.
class ConfigurationManager {
public:
    struct HbbTVVersion {
        uint8_t major;
        uint8_t minor;
        uint8_t micro;
    };

    // Built on first use without a lock, on the browser thread only.
    static ConfigurationManager* getInstance();
    // Deletes the instance if there is one.
    static void destroyInstance();

    // Platform threads reach the queue only through existingEventQueue() and under this
    // lock, which init and destroyInstance take too: a sender never sees the queue
    // half-published or deleted.
    static std::mutex& queueLock() { return queueMutex; }
    // The queue of the instance if both exist, without building either.
    static ThreadsafeEventQueue* existingEventQueue();

    // Clears the instance pointer, so that the next getInstance() builds fresh defaults.
    ~ConfigurationManager();

    ConfigurationManager(const ConfigurationManager&) = delete;
    ConfigurationManager& operator=(const ConfigurationManager&) = delete;

    void init(DAXO_Tesmo* core);

    DAXO_Tesmo* getTesmo() const { return browserCore; }
    ThreadsafeEventQueue* getEventQueue() const { return eventQueue; }
    OCDownloadManager* getDownloadManager() const { return downloadManager; }
    const HbbTVVersion& getHbbTVVersion() const { return hbbTVVersion; }
    void setHbbTVVersion(const HbbTVVersion& version) { hbbTVVersion = version; }
    uint16_t getSupportedPlatformProfiles() const { return supportedPlatformProfiles; }
    void setSupportedPlatformProfiles(int profiles) { supportedPlatformProfiles = static_cast<uint16_t>(profiles); }
    int32_t getSupportedKeyInput() const { return supportedKeyInput; }

private:
    ConfigurationManager() = default;

    DAXO_Tesmo* browserCore = nullptr;  // borrowed from the platform
    ThreadsafeEventQueue* eventQueue = nullptr;  // owned
    OCDownloadManager* downloadManager = nullptr;  // owned
    HbbTVVersion hbbTVVersion{1, 1, 1};
    uint16_t supportedPlatformProfiles = 0;
    int32_t supportedKeyInput = 0;

    static std::atomic<ConfigurationManager*> instance;
    static std::mutex queueMutex;
};

}  // namespace TesmoHbbTV

#endif
