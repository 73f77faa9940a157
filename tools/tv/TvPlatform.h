#ifndef TESMO_TV_TVPLATFORM_H
#define TESMO_TV_TVPLATFORM_H

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "AitDecoder.h"
#include "BrowserCore.h"
#include "CarouselFeed.h"
#include "ChannelList.h"
#include "LoadRules.h"
#include "Options.h"
#include "Script.h"
#include "StreamEventFeed.h"
#include "Timeline.h"
#include "TransportStream.h"
#include "XmlAit.h"
#include "tesmo_hbbtv/tesmo_hbbtv.h"

// The TV platform around the library: it posts the service's AIT sections, answers the
// library's notifications (granting the browser core's windows), serves dvb: files from the
// object carousel (or a directory), presses keys, runs the script, and tells what happens.
// One tick at a time, driven by the host's loop.
class TvPlatform {
public:
    struct ServiceIds {
        uint16_t originalNetworkId, transportStreamId, serviceId;
    };
    // What the tuner delivers of a service: its AIT and object-carousel sections.
    struct Tuned {
        std::vector<TimedSection> aitSections;
        std::vector<TimedSection> carouselSections;
        std::map<uint8_t, std::vector<TimedSection>> eventSections;  // by component tag
    };
    using Tuner = std::function<Tuned(const Channel&)>;

    static TvPlatform& get();

    void configure(const Options& options, Timeline& timeline, BrowserCore& core);
    BrowserCore& browserCore() { return *core; }
    // What the TV was configured with: the announced version and profiles, its names.
    const Options& settings() const { return *options; }
    // The platform's own policy on what a page may request (--refuse).
    bool refuses(const std::string& url) const;

    // Starts the library and tells it what the platform knows from the start. The
    // carousel's sections (if any) arrive while the AIT's do.
    void start(Tuned first, const ServiceIds& ids, std::vector<ScriptAction> script);
    // The channel played first and how to reach the others (none without a capture).
    void setChannels(const Channel* current, Tuner tuner);
    const Channel* currentChannel() const { return channel; }
    // Tunes to another channel of the list at the next tick, as a TV's tuner does: the
    // service is left, and the new one's AIT and carousel arrive. False without a tuner.
    bool requestTune(const Channel* channel);
    // One tick: what is due, then tesmo_hbbtv_tick.
    void step();
    // Everything scheduled is done and nothing has happened for a while.
    bool idle() const;
    uint64_t currentTick() const { return tick; }
    void stop();

    // A key from the viewer for the running application; false when it stays with the TV.
    bool pressKey(const std::string& name, int32_t code);

    // ---- the library's calls
    void platformCall(const char* name);
    void aitCompleted(int version);
    int carouselGetFile(const char* path, void* id);
    int carouselMimeType(void* id, char** mime);
    int carouselRead(void* id, const unsigned char** data, unsigned int* length);
    int carouselClose(void* id);
    int sameCarousel(const char* url, const char* other, int* same);
    void streamEventCall(JsonLine line, const std::string& text);
    void subscribeStreamEvent(const char* path, void* listener, const char* eventName);
    void subscribeXmlStreamEvent(const char* eventName, uint16_t componentTag, uint16_t eventId, void* listener);
    void unsubscribeStreamEvent(void* listener);

    static HBBTV_STATUS listen(HBBTV_NotificationType type, HBBTV_NotificationData* data);

private:
    struct OpenFile {
        std::string bytes;
        size_t offset = 0;
        std::string mime;
    };

    TvPlatform() = default;

    void postSection(const TimedSection& section);
    void tune(const Channel& to);
    void reportSurvivor();
    void postNoAit();
    void deliverStreamEvents(const std::vector<StreamEventFeed::Trigger>& triggers);
    static void streamEventArrived(char* name, char* data, char* text, char* status, void* listener);
    void checkTableAcceptance();
    void feedCarousel();
    int carouselFile(const std::string& path, void* id);
    void perform(const ScriptAction& action);
    void tuneByName(const ScriptAction& action);
    void performBinding(const ScriptAction& action);
    void postEvent(HBBTV_EventType type, HBBTV_EventData* data = nullptr);
    void onNotification(HBBTV_NotificationType type, HBBTV_NotificationData* data);
    void describeApplicationNotification(HBBTV_NotificationType type, const HBBTV_ApplicationNotificationData& app);
    void describeAitUpdate(const HBBTV_AITNotificationData& update);
    void* runningApplicationId();

    const Options* options = nullptr;
    Timeline* out = nullptr;
    BrowserCore* core = nullptr;
    std::unique_ptr<LoadRules> rules;
    uint64_t tick = 0;
    uint64_t lastScheduled = 0;
    HBBTV_Window* window = nullptr;

    std::vector<TimedSection> sections;
    uint64_t sectionsFrom = 0;  // the tick the service's first section is due
    ServiceIds ids{};
    const Channel* channel = nullptr;  // in ChannelList
    const Channel* tuneTo = nullptr;   // due at the next tick
    Tuner tuner;
    void* tunedFrom = nullptr;  // the application running when the channel changed
    bool survivorCheckDue = false;
    bool tuning = false;  // until the new service's first table is taken
    std::vector<ScriptAction> script;
    std::map<void*, OpenFile> files;
    CarouselFeed carouselFeed;
    StreamEventFeed streamEvents;

    // Sections posted and tables completed, per version, to tell a refused table.
    std::map<int, std::set<int>> postedSections;
    std::map<int, int> lastSectionOfVersion;
    std::set<int> completedVersions;
    std::set<int> reportedVersions;
    std::set<std::pair<int, int>> shownSections;
    std::vector<std::unique_ptr<XmlAit>> xmlAits;  // the core keeps what it handed over
};

#endif
