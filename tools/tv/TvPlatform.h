#ifndef TESMO_TV_TVPLATFORM_H
#define TESMO_TV_TVPLATFORM_H

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Activity.h"
#include "AitFeed.h"
#include "BrowserCore.h"
#include "CarouselFiles.h"
#include "ChannelControl.h"
#include "ChannelList.h"
#include "LoadRules.h"
#include "NotificationLog.h"
#include "RequestPolicy.h"
#include "Options.h"
#include "ProgrammeFeed.h"
#include "Script.h"
#include "ScriptRunner.h"
#include "StreamEventRelay.h"
#include "Timeline.h"
#include "TransportStream.h"
#include "tesmo_hbbtv/tesmo_hbbtv.h"

// The TV platform around the library, one tick at a time, driven by the host's loop: it
// enters services (their AIT, carousel and stream events arrive), answers the library's
// notifications (granting the browser core's windows), presses keys and plays the script.
// Each job is a part of its own: AitFeed, CarouselFiles, StreamEventRelay, ScriptRunner,
// NotificationLog.
class TvPlatform : public ChannelControl {
public:
    using ServiceIds = AitFeed::ServiceIds;
    // What the tuner delivers of a service: its AIT, object-carousel and stream-event
    // sections, and its EIT present/following sections.
    struct Tuned {
        std::vector<TimedSection> aitSections;
        std::vector<TimedSection> carouselSections;
        std::map<uint8_t, std::vector<TimedSection>> eventSections;  // by component tag
        std::vector<TimedSection> eitSections{};
    };
    using Tuner = std::function<Tuned(const Channel&)>;

    // The one platform the library's C functions reach.
    static TvPlatform& get();

    // The policy answers the library's request notifications.
    void configure(const Options& options, Timeline& timeline, BrowserCore& core, const RequestPolicy& policy);
    BrowserCore& browserCore() { return *core; }
    // What the TV was configured with: the announced version and profiles, its names.
    const Options& settings() const { return *options; }

    // Starts the library, tells it what the platform knows from the start, and enters the
    // first service.
    void start(Tuned first, const ServiceIds& ids, std::vector<ScriptAction> script);
    // The channel played first and how to reach the others (none without a capture).
    void setChannels(const Channel* current, Tuner tuner);
    const Channel* currentChannel() const override { return channel; }
    // Tunes to another channel of the list at the next tick, as a TV's tuner does: the
    // service is left, and the new one's AIT and carousel arrive. False without a tuner.
    bool requestTune(const Channel* channel) override;
    // One tick: what is due, then tesmo_hbbtv_tick.
    void step();
    // Everything scheduled is done and nothing has happened for a while.
    bool idle() const;
    uint64_t currentTick() const { return tick; }
    void stop();

    // A key from the viewer for the running application; false when it stays with the TV.
    bool pressKey(const std::string& name, int32_t code);
    void postEvent(HBBTV_EventType type, HBBTV_EventData* data = nullptr);
    HBBTV_Window* libraryWindow() const { return window; }
    // The library's id of the application in the active window, or null.
    void* runningApplicationId();

    // ---- the library's calls
    void platformCall(const char* name);
    void aitCompleted(int version);
    CarouselFiles& carouselFiles() { return *files; }

    // ---- what the hosts may show
    // The current service's programme on now and the next, as far as its EIT has come.
    const PresentFollowing& programmes() const override { return programmeFeed->current(); }
    StreamEventRelay& streamEventRelay() { return *streamEvents; }

    static HBBTV_STATUS listen(HBBTV_NotificationType type, HBBTV_NotificationData* data);

private:
    TvPlatform() = default;

    void announceTerminal();
    void enterService(Tuned tuned, const ServiceIds& ids);
    void tune(const Channel& to);
    void reportSurvivor();
    static void streamEventArrived(char* name, char* data, char* text, char* status, void* listener);
    void onNotification(HBBTV_NotificationType type, HBBTV_NotificationData* data);
    void answer(HBBTV_NotificationType type, HBBTV_NotificationData* data);
    void act(HBBTV_NotificationType type, const HBBTV_NotificationData& data);
    uint64_t sinceEntered() const { return tick - serviceFrom; }

    const Options* options = nullptr;
    Timeline* out = nullptr;
    BrowserCore* core = nullptr;
    std::unique_ptr<LoadRules> rules;
    const RequestPolicy* policy = nullptr;
    std::unique_ptr<AitFeed> ait;
    std::unique_ptr<CarouselFiles> files;
    std::unique_ptr<ScriptRunner> runner;
    std::unique_ptr<NotificationLog> log;
    std::unique_ptr<StreamEventRelay> streamEvents;
    std::unique_ptr<ProgrammeFeed> programmeFeed;
    Activity activity;
    uint64_t tick = 0;
    uint64_t lastScheduled = 0;
    HBBTV_Window* window = nullptr;

    uint64_t serviceFrom = 0;  // the tick the service was entered
    const Channel* channel = nullptr;  // in ChannelList
    const Channel* tuneTo = nullptr;  // due at the next tick
    Tuner tuner;
    void* tunedFrom = nullptr;  // the application running when the channel changed
    bool survivorCheckDue = false;
    bool tuning = false;  // until the new service's first table is taken
    std::vector<ScriptAction> script;
};

#endif
