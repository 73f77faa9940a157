#include "TvPlatform.h"

#include <algorithm>
#include <cstring>

#include "TimelineText.h"
#include "tesmo_hbbtv/bindings.h"
#include "tesmo_hbbtv/platform.h"

namespace {

const long FREE_MEMORY = 64L * 1024 * 1024;
const uint64_t TICK_LIMIT = 1000000;

}  // namespace

TvPlatform& TvPlatform::get()
{
    static TvPlatform platform;
    return platform;
}

void TvPlatform::configure(const Options& opts, Timeline& timeline, BrowserCore& browserCore,
                           const RequestPolicy& requests)
{
    options = &opts;
    out = &timeline;
    core = &browserCore;
    rules = std::make_unique<LoadRules>(opts);
    policy = &requests;
    auto post = [this](HBBTV_EventType type, HBBTV_EventData* data) { postEvent(type, data); };
    ait = std::make_unique<AitFeed>(timeline, opts.sectionInterval, post);
    files = std::make_unique<CarouselFiles>(timeline, opts, post);
    runner = std::make_unique<ScriptRunner>(*this, timeline, *rules);
    log = std::make_unique<NotificationLog>(timeline, browserCore);
    streamEvents = std::make_unique<StreamEventRelay>(timeline, post, &TvPlatform::streamEventArrived);
    programmeFeed = std::make_unique<ProgrammeFeed>(timeline);
    core->attach(timeline, *rules, activity);
}

// ---------------------------------------------------------------- the run

void TvPlatform::start(Tuned first, const ServiceIds& ids, std::vector<ScriptAction> actions)
{
    script = std::move(actions);
    enterService(std::move(first), ids);
    tesmo_hbbtv_init(reinterpret_cast<DAXO_Tesmo*>(0x7E50));
    // The library's warnings say why it refused something; readable mode shows them.
    static const int levels[] = {3, 2, 1};
    if (options->verbosity > 0 || !out->isJson())
        tesmo_hbbtv_add_log_output(levels[options->verbosity], out->isJson() ? "/dev/stderr" : nullptr);
    tesmo_hbbtv_add_notification_listener(&TvPlatform::listen);
    window = tesmo_hbbtv_create_window();
    tesmo_hbbtv_set_broadcast_window(window);
    announceTerminal();
    for (const KeyPress& key : options->keys)
        lastScheduled = std::max(lastScheduled, key.tick);
    for (const ScriptAction& action : script)
        lastScheduled = std::max(lastScheduled, action.tick);
}

// What the TV is and can do, as it tells the library once at the start.
void TvPlatform::announceTerminal()
{
    HBBTV_EventData* identity = newEvent();
    identity->terminal_identity.version = options->hbbtv121 ? 2 : 1;
    identity->terminal_identity.strings[1] = strdup("tesmo");
    identity->terminal_identity.strings[2] = strdup(options->product.c_str());
    postEvent(HBBTV_EVENT_TERMINAL_IDENTITY, identity);
    HBBTV_EventData* profiles = newEvent();
    profiles->platform_profiles.profiles = options->profiles;
    postEvent(HBBTV_EVENT_PLATFORM_PROFILES, profiles);
    if (options->noBroadband)
        postEvent(HBBTV_EVENT_BROADBAND_DOWN);
    if (options->timeShift)
        tesmo_hbbtv_set_time_shifted(window, 1);
}

// From this tick the service's AIT arrives, and its carousel, stream events and programmes
// while the AIT does; the programmes of the service before are gone.
void TvPlatform::enterService(Tuned tuned, const ServiceIds& ids)
{
    serviceFrom = tick;
    const bool hadProgrammes = programmeFeed->current().version >= 0;
    ait->start(std::move(tuned.aitSections), tick, ids);
    const uint64_t spread = std::max<uint64_t>(1, ait->span());
    files->start(std::move(tuned.carouselSections), spread);
    streamEvents->start(std::move(tuned.eventSections), spread);
    programmeFeed->start(std::move(tuned.eitSections), ids.serviceId, spread);
    if (hadProgrammes)
        core->programmesChanged();
    lastScheduled = std::max(lastScheduled, tick + std::max(ait->span(), files->lastTick()));
}

void TvPlatform::setChannels(const Channel* current, Tuner channelTuner)
{
    channel = current;
    tuner = std::move(channelTuner);
    ait->setChannel(channel ? ChannelList::get().handleOf(*channel) : nullptr);
}

bool TvPlatform::requestTune(const Channel* to)
{
    if (!tuner || !to)
        return false;
    tuneTo = to;
    return true;
}

void TvPlatform::step()
{
    out->setTick(tick);
    activity.setTick(tick);
    if (tuneTo) {
        const Channel* to = tuneTo;
        tuneTo = nullptr;
        tune(*to);
    }
    ait->step(tick);
    for (const KeyPress& key : options->keys)
        if (key.tick == tick)
            pressKey(key.name, key.code);
    for (const ScriptAction& action : script)
        if (action.tick == tick) {
            activity.note();
            runner->perform(action);
        }
    files->step(sinceEntered());
    streamEvents->step(sinceEntered(), files->objects());
    if (programmeFeed->step(sinceEntered()))
        core->programmesChanged();
    tesmo_hbbtv_tick();
    core->afterTick();
    if (survivorCheckDue && tuning)
        reportSurvivor();
    survivorCheckDue = false;
    ait->checkAcceptance(tick);
    ++tick;
}

bool TvPlatform::idle() const
{
    if (tick == 0)
        return false;
    const uint64_t last = tick - 1;
    return tick >= TICK_LIMIT ||
           (last > lastScheduled && last - activity.lastTick() > options->idleTicks && !core->busy());
}

void TvPlatform::stop()
{
    tesmo_hbbtv_shutdown();
}

// The service is left (the library forgets its table and carousel), and the new one's AIT and
// carousel arrive from this tick on.
void TvPlatform::tune(const Channel& to)
{
    activity.note();
    out->say("channel change to \"" + to.name + "\" (service " + timelineText::hex(to.serviceId, 4) + ")");
    tunedFrom = runningApplicationId();
    tuning = true;
    postEvent(HBBTV_EVENT_AIT_WITHDRAWN);
    channel = &to;
    ait->setChannel(ChannelList::get().handleOf(to));
    enterService(tuner(to), {to.originalNetworkId, to.transportStreamId, to.serviceId});
    if (ait->empty())
        ait->postNoAit();
    core->channelChanged(to);
}

void TvPlatform::postEvent(HBBTV_EventType type, HBBTV_EventData* data)
{
    tesmo_hbbtv_send_event(type, data ? data : newEvent());
}

// ---------------------------------------------------------------- keys

void* TvPlatform::runningApplicationId()
{
    DAXO_TesmoWindow* active = core->activeWindow();
    void* id = nullptr;
    if (active)
        native_AppManGetApplicationId(core->handleOf(active), &id);
    return id;
}

bool TvPlatform::pressKey(const std::string& name, int32_t code)
{
    DAXO_TesmoWindow* active = core->activeWindow();
    const bool delivered = active && tesmo_hbbtv_key_input(active, 0, code, 0);
    out->say("key " + name +
             (delivered ? " delivered to the application" : " stays with the TV: not in the application's key set"));
    activity.note();
    return delivered;
}

// ---------------------------------------------------------------- the library's calls

void TvPlatform::platformCall(const char* name)
{
    out->record(JsonLine().field("call", name));
}

void TvPlatform::aitCompleted(int version)
{
    activity.note();
    ait->completed(version);
    out->record(JsonLine().field("call", "hbbtv_ait_completed").field("version_number", version));
    out->say("AIT v" + std::to_string(version) + " complete: the library takes it");
    survivorCheckDue = true;
    core->tableCompleted();
}

// The first table of a new service has been activated: the application that ran before
// the change either still runs, or the library's notifications have told what replaced it.
void TvPlatform::reportSurvivor()
{
    survivorCheckDue = false;
    void* running = runningApplicationId();
    if (running && running == tunedFrom)
        out->say("the running application keeps running: the new service signals it too");
    tunedFrom = nullptr;
    tuning = false;
}

// ---------------------------------------------------------------- stream events

void TvPlatform::streamEventArrived(char* name, char* data, char* text, char* status, void* listener)
{
    get().core->streamEvent(listener, name ? name : "", data ? data : "", text ? text : "", status ? status : "");
}

// ---------------------------------------------------------------- notifications

HBBTV_STATUS TvPlatform::listen(HBBTV_NotificationType type, HBBTV_NotificationData* data)
{
    get().onNotification(type, data);
    return HBBTV_STATUS_OK;
}

void TvPlatform::onNotification(HBBTV_NotificationType type, HBBTV_NotificationData* data)
{
    activity.note();
    if (data)
        answer(type, data);
    log->tell(type, data, FREE_MEMORY);
    if (data)
        act(type, *data);
}

// The fields the platform answers in.
void TvPlatform::answer(HBBTV_NotificationType type, HBBTV_NotificationData* data)
{
    switch (type) {
    case HBBTV_NOTIFICATION_REQUEST_WINDOW:
        *data->request_window.window_slot = core->grantWindow();
        data->request_window.granted = 1;
        return;
    case HBBTV_NOTIFICATION_RELEASE_WINDOW:
        data->release_window.released = 1;
        return;
    case HBBTV_NOTIFICATION_XHR:
        if (data->xhr.target_url && policy->refusing(data->xhr.target_url))
            data->xhr.permission = HBBTV_XHR_PERMISSION_DENY;
        return;
    case HBBTV_NOTIFICATION_GET_FREE_MEMORY:
        *data->get_free_memory.free_memory = FREE_MEMORY;
        return;
    default:
        return;
    }
}

// What the platform does on what it was told, once it has been told in the timeline.
void TvPlatform::act(HBBTV_NotificationType type, const HBBTV_NotificationData& data)
{
    switch (type) {
    case HBBTV_NOTIFICATION_APPLICATION_START:
        tunedFrom = nullptr;  // a successor starts: the running application does not carry on
        return;
    case HBBTV_NOTIFICATION_RELEASE_WINDOW:
        core->releaseWindow(*data.release_window.window_slot);
        return;
    case HBBTV_NOTIFICATION_SHOW_WINDOW:
    case HBBTV_NOTIFICATION_HIDE_WINDOW:
        core->setVisible(*data.visibility.window_slot, type == HBBTV_NOTIFICATION_SHOW_WINDOW);
        return;
    default:
        return;
    }
}
