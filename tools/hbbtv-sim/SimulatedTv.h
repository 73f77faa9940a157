#ifndef TESMO_HBBTV_SIM_SIMULATEDTV_H
#define TESMO_HBBTV_SIM_SIMULATEDTV_H

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "AitDecoder.h"
#include "CarouselFeed.h"
#include "Options.h"
#include "Script.h"
#include "Timeline.h"
#include "TransportStream.h"
#include "XmlAit.h"
#include "tesmo_hbbtv/tesmo_hbbtv.h"

// The platform and the browser core around the library: it posts the service's AIT
// sections, grants browser windows, loads pages (or fails them as told), serves dvb: files
// from a directory, presses keys and runs the script, and tells what happens.
class SimulatedTv {
public:
    struct ServiceIds {
        uint16_t originalNetworkId, transportStreamId, serviceId;
    };

    static SimulatedTv& get();

    void configure(const Options& options, Timeline& timeline);
    // Plays the AIT sections with the scenario, the carousel's sections (if any) arriving
    // meanwhile; returns when nothing is left to do.
    void run(const std::vector<TimedSection>& sections, std::vector<TimedSection> carouselSections,
             const ServiceIds& ids, const std::vector<ScriptAction>& script);

    // ---- the browser core ----
    int openUrl(DAXO_TesmoWindow* window, const char* url);
    void clearHistory(DAXO_TesmoWindow* window);
    int loadingUrl(DAXO_TesmoWindow* window, const char** url, int flags);
    int windowOfHandle(long handle, DAXO_TesmoWindow** window);
    int resolveRelative(const char* base, const char* relative, char** result);
    void protocolMimeType(void* stream, const char* mime);
    void protocolWrite(void* stream, unsigned int length);
    void protocolEnd(void* stream, int status, bool finished);
    void userAgent(const char* text);
    void keyboard(int action, DAXO_KEY_SYM key, uint8_t modifiers);

    // ---- the platform ----
    void platformCall(const char* name);
    void aitCompleted(int version);
    int carouselGetFile(const char* path, void* id);
    int carouselMimeType(void* id, char** mime);
    int carouselRead(void* id, const unsigned char** data, unsigned int* length);
    int carouselClose(void* id);
    int sameCarousel(const char* url, const char* other, int* same);
    void streamEventCall(JsonLine line, const std::string& text);

    static HBBTV_STATUS listen(HBBTV_NotificationType type, HBBTV_NotificationData* data);

private:
    struct BrowserWindow {
        int number;
        std::string url;
    };
    struct Load {
        DAXO_TesmoWindow* window;
        std::string url;
        uint64_t due;
    };
    struct OpenFile {
        std::string bytes;
        size_t offset = 0;
        std::string mime;
    };
    enum class StreamState { OPEN, FINISHED, FAILED };

    SimulatedTv() = default;

    void step(const std::vector<TimedSection>& sections, const ServiceIds& ids, const std::vector<ScriptAction>& script);
    void postSection(const TimedSection& section, const ServiceIds& ids);
    void checkTableAcceptance();
    void completeLoads();
    void feedCarousel();
    int carouselFile(const std::string& path, void* id);
    void loadPage(const Load& load);
    void loadFromCarousel(const Load& load);
    void reportLoad(DAXO_TesmoWindow* window, int id, int32_t outcome, int16_t status);
    void pressKey(const std::string& name, int32_t code);
    void perform(const ScriptAction& action);
    void performBinding(const ScriptAction& action);
    void postEvent(HBBTV_EventType type, HBBTV_EventData* data = nullptr);
    void onNotification(HBBTV_NotificationType type, HBBTV_NotificationData* data);
    void describeApplicationNotification(HBBTV_NotificationType type, const HBBTV_ApplicationNotificationData& app);
    void describeAitUpdate(const HBBTV_AITNotificationData& update);

    std::string windowName(const DAXO_TesmoWindow* window) const;
    DAXO_TesmoWindow* activeWindow() const;
    void* runningApplicationId();
    bool shouldFail(const std::string& url);
    int statusFor(const std::string& url) const;
    void activity() { lastActivity = tick; }

    const Options* options = nullptr;
    Timeline* out = nullptr;
    uint64_t tick = 0;
    uint64_t lastActivity = 0;
    HBBTV_Window* window = nullptr;

    std::map<DAXO_TesmoWindow*, BrowserWindow> browserWindows;
    int windowsGranted = 0;
    DAXO_TesmoWindow* lastOpened = nullptr;
    std::vector<Load> loads;
    std::vector<std::string> failPatterns;
    std::vector<StatusRule> statusRules;
    bool failNextLoad = false;
    std::map<void*, OpenFile> files;
    CarouselFeed carouselFeed;
    std::map<void*, StreamState> streams;
    std::map<void*, size_t> streamBytes;
    uintptr_t nextStream = 1;
    std::string resolved;  // handed to the library by tm_resolve_relative_url

    // Sections posted and tables completed, per version, to tell a refused table.
    std::map<int, std::set<int>> postedSections;
    std::map<int, int> lastSectionOfVersion;
    std::set<int> completedVersions;
    std::set<int> reportedVersions;
    std::set<std::pair<int, int>> shownSections;
    std::vector<std::unique_ptr<XmlAit>> xmlAits;  // the core keeps what it handed over
};

#endif
