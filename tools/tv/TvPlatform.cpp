#include "TvPlatform.h"

#include <fnmatch.h>

#include <cinttypes>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>

#include "ConfinedFiles.h"
#include "tesmo_hbbtv/bindings.h"
#include "tesmo_hbbtv/platform.h"

namespace {

// A carousel file is a module; none is larger than a DII may announce.
const size_t MAX_FILE_BYTES = 16u << 20;
const size_t CAROUSEL_PIECE = 4096;
const long FREE_MEMORY = 64L * 1024 * 1024;
const uint64_t TICK_LIMIT = 1000000;

std::string hex(unsigned long long value, int width = 0)
{
    char text[32];
    std::snprintf(text, sizeof text, "0x%0*llX", width, value);
    return text;
}

std::string applicationName(uint32_t organisationId, uint16_t applicationId)
{
    return hex(organisationId) + "." + hex(applicationId);
}

HBBTV_EventData* newEvent()
{
    return static_cast<HBBTV_EventData*>(std::calloc(1, sizeof(HBBTV_EventData)));
}

std::string mimeTypeOf(const std::string& path)
{
    static const std::pair<const char*, const char*> types[] = {
        {".html", "application/vnd.hbbtv.xhtml+xml"}, {".js", "application/javascript"}, {".css", "text/css"},
        {".png", "image/png"}, {".jpg", "image/jpeg"}, {".xml", "application/vnd.dvb.ait+xml"}};
    for (const auto& type : types) {
        const size_t n = std::strlen(type.first);
        if (path.size() >= n && path.compare(path.size() - n, n, type.first) == 0)
            return type.second;
    }
    return "application/octet-stream";
}

const char* notificationName(HBBTV_NotificationType type)
{
    static const char* const names[] = {"APPLICATION_START", "APPLICATION_STOP",        "AIT_UPDATE",    "TRUSTED",
                                        "BROADCAST_RELATED_CHANGE", "XHR",             "REQUEST_WINDOW", "RELEASE_WINDOW",
                                        "SHOW_WINDOW",       "HIDE_WINDOW",             "KEYSET_CHANGED", "GET_FREE_MEMORY"};
    return type >= 0 && type <= 11 ? names[type] : "UNKNOWN";
}

std::string urlsJson(const HBBTV_AITApplicationInfo& info)
{
    std::string json = "[";
    for (int32_t u = 0; u < info.num_urls; ++u)
        json += (u ? "," : "") + (info.urls[u] ? JsonLine::quote(info.urls[u]) : std::string("null"));
    return json + "]";
}

JsonLine notificationJson(HBBTV_NotificationType type, const HBBTV_NotificationData* data)
{
    JsonLine line;
    line.field("notification", notificationName(type));
    if (!data)
        return line.raw("data", "null");
    switch (type) {
    case HBBTV_NOTIFICATION_APPLICATION_START:
    case HBBTV_NOTIFICATION_APPLICATION_STOP:
    case HBBTV_NOTIFICATION_TRUSTED:
    case HBBTV_NOTIFICATION_BROADCAST_RELATED_CHANGE: {
        const HBBTV_ApplicationNotificationData& a = data->application;
        line.pointer("window", a.window).field("flag_a", a.flag_a).field("flag_b", a.flag_b).field("flag_c", a.flag_c);
        line.field("organisation_id", a.organisation_id).field("application_id", a.application_id).field("url", a.url);
        line.raw("reactivate_ait", a.reactivate_ait ? (*a.reactivate_ait ? "true" : "false") : "null");
        return line.field("usage_type", a.usage_type).field("action", a.action);
    }
    case HBBTV_NOTIFICATION_AIT_UPDATE: {
        const HBBTV_AITNotificationData& u = data->ait;
        std::string apps = "[";
        for (int32_t i = 0; i < u.num_applications; ++i) {
            const HBBTV_AITApplicationInfo& info = u.applications[i];
            JsonLine app;
            app.field("name", info.name).field("organisation_id", info.organisation_id);
            app.field("application_id", info.application_id).raw("urls", urlsJson(info));
            app.field("usage_type", info.usage_type).field("control_code", info.control_code);
            apps += (i ? "," : "") + app.str();
        }
        line.pointer("window", u.window).field("is_xml_ait", u.is_xml_ait).field("num_applications", u.num_applications);
        return line.raw("applications", apps + "]").field("was_corrected", u.was_corrected);
    }
    case HBBTV_NOTIFICATION_XHR:
        return line.field("base_url", data->xhr.base_url).field("target_url", data->xhr.target_url).field("permission", data->xhr.permission);
    case HBBTV_NOTIFICATION_REQUEST_WINDOW:
        return line.pointer("window_slot", data->request_window.window_slot).field("granted", data->request_window.granted).pointer("window", data->request_window.window);
    case HBBTV_NOTIFICATION_RELEASE_WINDOW:
        return line.pointer("window_slot", data->release_window.window_slot).field("released", data->release_window.released);
    case HBBTV_NOTIFICATION_SHOW_WINDOW:
    case HBBTV_NOTIFICATION_HIDE_WINDOW:
        return line.pointer("window_slot", data->visibility.window_slot);
    case HBBTV_NOTIFICATION_KEYSET_CHANGED:
        return line.pointer("daxo_window", data->keyset_changed.daxo_window).field("keyset", data->keyset_changed.keyset);
    case HBBTV_NOTIFICATION_GET_FREE_MEMORY:
        return line.field("free_memory", *data->get_free_memory.free_memory);
    }
    return line;
}

} // namespace

TvPlatform& TvPlatform::get()
{
    static TvPlatform platform;
    return platform;
}

void TvPlatform::configure(const Options& opts, Timeline& timeline, BrowserCore& browserCore)
{
    options = &opts;
    out = &timeline;
    core = &browserCore;
    rules = std::make_unique<LoadRules>(opts);
    core->attach(timeline, *rules);
}

// ---------------------------------------------------------------- the run

void TvPlatform::start(Tuned first, const ServiceIds& serviceIds, std::vector<ScriptAction> actions)
{
    sections = std::move(first.aitSections);
    std::vector<TimedSection> carouselSections = std::move(first.carouselSections);
    streamEvents.start(std::move(first.eventSections), std::max<uint64_t>(1, sections.size() * options->sectionInterval));
    ids = serviceIds;
    script = std::move(actions);
    // The carousel arrives while the AIT does, as both repeat in a broadcast.
    carouselFeed.start(std::move(carouselSections), std::max<uint64_t>(1, sections.size() * options->sectionInterval),
                       size_t(options->carouselMemoryMb) << 20);
    tesmo_hbbtv_init(reinterpret_cast<DAXO_Tesmo*>(0x7E50));
    // The library's warnings say why it refused something; readable mode shows them.
    static const int levels[] = {3, 2, 1};
    if (options->verbosity > 0 || !out->isJson())
        tesmo_hbbtv_add_log_output(levels[options->verbosity], out->isJson() ? "/dev/stderr" : nullptr);
    tesmo_hbbtv_add_notification_listener(&TvPlatform::listen);
    window = tesmo_hbbtv_create_window();
    tesmo_hbbtv_set_broadcast_window(window);

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

    lastScheduled = std::max(sections.size() * options->sectionInterval, carouselFeed.lastTick());
    for (const KeyPress& key : options->keys)
        lastScheduled = std::max(lastScheduled, key.tick);
    for (const ScriptAction& action : script)
        lastScheduled = std::max(lastScheduled, action.tick);
    tick = 0;
}

void TvPlatform::setChannels(const Channel* current, Tuner channelTuner)
{
    channel = current;
    tuner = std::move(channelTuner);
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
    if (tuneTo) {
        const Channel* to = tuneTo;
        tuneTo = nullptr;
        tune(*to);
    }
    const uint64_t due = tick - sectionsFrom;
    if (tick >= sectionsFrom && due % options->sectionInterval == 0 && due / options->sectionInterval < sections.size())
        postSection(sections[due / options->sectionInterval]);
    for (const KeyPress& key : options->keys)
        if (key.tick == tick)
            pressKey(key.name, key.code);
    for (const ScriptAction& action : script)
        if (action.tick == tick)
            perform(action);
    feedCarousel();
    tesmo_hbbtv_tick();
    core->afterTick();
    if (survivorCheckDue && tuning)
        reportSurvivor();
    survivorCheckDue = false;
    checkTableAcceptance();
    ++tick;
}

bool TvPlatform::idle() const
{
    if (tick == 0)
        return false;
    const uint64_t last = tick - 1;
    return tick >= TICK_LIMIT ||
           (last > lastScheduled && last - out->lastActivity() > options->idleTicks && !core->busy());
}

void TvPlatform::stop()
{
    tesmo_hbbtv_shutdown();
}

// The service is left (the library forgets its table and carousel), and the new one's AIT and
// carousel arrive from this tick on.
void TvPlatform::tune(const Channel& to)
{
    out->say("channel change to \"" + to.name + "\" (service " + hex(to.serviceId, 4) + ")");
    tunedFrom = runningApplicationId();
    tuning = true;
    postEvent(HBBTV_EVENT_AIT_WITHDRAWN);
    Tuned tuned = tuner(to);
    channel = &to;
    ids = {to.originalNetworkId, to.transportStreamId, to.serviceId};
    sections = std::move(tuned.aitSections);
    sectionsFrom = tick;
    postedSections.clear();
    lastSectionOfVersion.clear();
    completedVersions.clear();
    reportedVersions.clear();
    shownSections.clear();
    for (const CarouselFeed::Answer& answer : carouselFeed.abandon()) {
        HBBTV_EventData* event = newEvent();
        event->dsmcc_file.handle = answer.id;
        postEvent(HBBTV_EVENT_DSMCC_FILE_ERROR, event);
    }
    carouselFeed.start(std::move(tuned.carouselSections), std::max<uint64_t>(1, sections.size() * options->sectionInterval),
                       size_t(options->carouselMemoryMb) << 20);
    streamEvents.start(std::move(tuned.eventSections), std::max<uint64_t>(1, sections.size() * options->sectionInterval));
    if (sections.empty())
        postNoAit();
    lastScheduled = std::max(lastScheduled, tick + std::max<uint64_t>(sections.size() * options->sectionInterval, carouselFeed.lastTick()));
    core->channelChanged(to);
}

// The platform's word that the service carries no AIT.
void TvPlatform::postNoAit()
{
    out->say("the service signals no AIT");
    HBBTV_EventData* data = newEvent();
    data->ait_section.original_network_id = ids.originalNetworkId;
    data->ait_section.transport_stream_id = ids.transportStreamId;
    data->ait_section.service_id = ids.serviceId;
    postEvent(HBBTV_EVENT_AIT_SECTION, data);
}

void TvPlatform::feedCarousel()
{
    std::vector<std::string> said;
    std::vector<CarouselFeed::Answer> answers;
    carouselFeed.step(tick - sectionsFrom, said, answers);
    for (const std::string& line : said)
        out->say(line);
    for (const CarouselFeed::Answer& answer : answers) {
        HBBTV_EventData* event = newEvent();
        event->dsmcc_file.handle = answer.id;
        if (answer.found)
            files[answer.id] = {answer.content, 0, mimeTypeOf(answer.path)};
        else
            out->say("carousel: no file " + answer.path);
        postEvent(answer.found ? HBBTV_EVENT_DSMCC_FILE_READY : HBBTV_EVENT_DSMCC_FILE_ERROR, event);
    }
    std::vector<StreamEventFeed::Trigger> triggers;
    streamEvents.step(tick - sectionsFrom, carouselFeed.objects(), triggers);
    deliverStreamEvents(triggers);
}

// Each event goes through the library as the platform's stream event, whose callback hands it
// to the browser core.
void TvPlatform::deliverStreamEvents(const std::vector<StreamEventFeed::Trigger>& triggers)
{
    for (const StreamEventFeed::Trigger& trigger : triggers) {
        out->say("stream event \"" + trigger.name + "\" " + trigger.status + (trigger.text.empty() ? "" : ": " + trigger.text));
        HBBTV_EventData* event = newEvent();
        event->stream_event.callback = &TvPlatform::streamEventArrived;
        event->stream_event.a = strdup(trigger.name.c_str());
        event->stream_event.b = strdup(trigger.data.c_str());
        event->stream_event.c = strdup(trigger.text.c_str());
        event->stream_event.d = strdup(trigger.status.c_str());
        event->stream_event.e = trigger.listener;
        postEvent(HBBTV_EVENT_DSMCC_STREAM_EVENT, event);
    }
}

void TvPlatform::streamEventArrived(char* name, char* data, char* text, char* status, void* listener)
{
    get().core->streamEvent(listener, name ? name : "", data ? data : "", text ? text : "", status ? status : "");
}

// The library's path is the carousel's host and the object's path below its gateway.
void TvPlatform::subscribeStreamEvent(const char* path, void* listener, const char* eventName)
{
    const std::string text = path ? path : "";
    const size_t slash = text.find('/');
    streamEvents.subscribe(slash == std::string::npos ? "" : text.substr(slash + 1), eventName ? eventName : "", listener);
}

void TvPlatform::subscribeXmlStreamEvent(const char* eventName, uint16_t componentTag, uint16_t eventId, void* listener)
{
    streamEvents.subscribe(eventName ? eventName : "", uint8_t(componentTag), eventId, listener);
}

void TvPlatform::unsubscribeStreamEvent(void* listener)
{
    streamEvents.unsubscribe(listener);
}

void TvPlatform::postSection(const TimedSection& section)
{
    const DecodedAit ait = decodeAit(section.bytes);
    if (ait.readable && shownSections.insert({ait.version, ait.sectionNumber}).second) {
        out->say("AIT v" + std::to_string(ait.version) + " section " + std::to_string(ait.sectionNumber) + "/" +
                 std::to_string(ait.lastSectionNumber) + " (packet " + std::to_string(section.packet) + "): " +
                 std::to_string(ait.applications.size()) + " application(s)");
        for (const DecodedApplication& app : ait.applications) {
            std::string line = applicationName(app.organisationId, app.applicationId) + " \"" + app.name + "\" " +
                               controlCodeName(app.controlCode) + ", priority " + std::to_string(app.priority);
            for (const DecodedProfile& p : app.profiles)
                line += ", profile " + hex(p.profile, 4) + " version " + std::to_string(p.major) + "." +
                        std::to_string(p.minor) + "." + std::to_string(p.micro);
            if (app.serviceBound)
                line += ", service-bound";
            out->detail(line);
            for (const DecodedTransport& t : app.transports)
                out->detail("  transport " + std::to_string(t.label) + ": " + t.describe());
            if (!app.location.empty())
                out->detail("  location " + app.location);
        }
    }
    if (ait.readable) {
        postedSections[ait.version].insert(ait.sectionNumber);
        lastSectionOfVersion[ait.version] = ait.lastSectionNumber;
    }
    HBBTV_EventData* data = newEvent();
    data->ait_section.section = static_cast<unsigned char*>(std::malloc(section.bytes.size()));
    std::memcpy(data->ait_section.section, section.bytes.data(), section.bytes.size());
    data->ait_section.original_network_id = ids.originalNetworkId;
    data->ait_section.transport_stream_id = ids.transportStreamId;
    data->ait_section.service_id = ids.serviceId;
    data->ait_section.ait_present = 1;
    data->ait_section.channel = channel ? ChannelList::get().handleOf(*channel) : nullptr;
    postEvent(HBBTV_EVENT_AIT_SECTION, data);
}

// Every section of a version has been through the library and it did not complete the
// table: say so once, since the library itself reports nothing on a refused section.
void TvPlatform::checkTableAcceptance()
{
    for (const auto& posted : postedSections) {
        const int version = posted.first;
        if (completedVersions.count(version) || reportedVersions.count(version))
            continue;
        if (posted.second.size() < size_t(lastSectionOfVersion[version]) + 1)
            continue;
        if (tick < out->lastActivity() + options->sectionInterval)
            continue;
        reportedVersions.insert(version);
        out->say("AIT v" + std::to_string(version) + ": every section was posted, but the library did not complete the table");
    }
}

void TvPlatform::postEvent(HBBTV_EventType type, HBBTV_EventData* data)
{
    tesmo_hbbtv_send_event(type, data ? data : newEvent());
}

// ---------------------------------------------------------------- keys and the script

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
    out->say("key " + name + (delivered ? " delivered to the application" : " stays with the TV: not in the application's key set"));
    out->noteActivity();
    return delivered;
}

// "channel next", "channel prev" or "channel SERVICE_ID": the viewer zaps.
void TvPlatform::tuneByName(const ScriptAction& action)
{
    const ChannelList& list = ChannelList::get();
    const Channel* to = action.argument == "next"   ? list.neighbour(channel, 1)
                        : action.argument == "prev" ? list.neighbour(channel, -1)
                                                    : nullptr;
    for (const Channel& c : list.all())
        if (!to && c.serviceId == std::strtoul(action.argument.c_str(), nullptr, 0))
            to = &c;
    if (!requestTune(to))
        out->say("script line " + std::to_string(action.line) + ": no channel " + action.argument);
}

void TvPlatform::perform(const ScriptAction& action)
{
    out->noteActivity();
    const std::string& verb = action.verb;
    if (verb == "key") {
        int32_t code = 0;
        if (keyCode(action.argument, code))
            pressKey(action.argument, code);
        else
            out->say("script line " + std::to_string(action.line) + ": unknown key " + action.argument);
    } else if (verb == "fail") {
        rules->failFrom(action.argument);
        out->say("from now on, loads of " + action.argument + " fail");
    } else if (verb == "load-fail") {
        rules->failNextLoad();
    } else if (verb == "status") {
        const size_t equals = action.argument.rfind('=');
        rules->answer(action.argument.substr(0, equals), std::atoi(action.argument.c_str() + equals + 1));
    } else if (verb == "service-change") {
        out->say("service change: the AIT is withdrawn");
        postEvent(HBBTV_EVENT_AIT_WITHDRAWN);
    } else if (verb == "channel") {
        tuneByName(action);
    } else if (verb == "broadband") {
        out->say("broadband " + action.argument);
        postEvent(action.argument == "off" ? HBBTV_EVENT_BROADBAND_DOWN : HBBTV_EVENT_BROADBAND_UP);
    } else if (verb == "start-url") {
        HBBTV_EventData* data = newEvent();
        data->start_broadcast_independent.window = window;
        data->start_broadcast_independent.url = strdup(action.argument.c_str());
        out->say("the platform starts " + action.argument);
        postEvent(HBBTV_EVENT_START_BROADCAST_INDEPENDENT, data);
    } else if (verb == "terminate") {
        HBBTV_EventData* data = newEvent();
        data->terminate_application.window = window;
        out->say("the platform terminates the running application");
        postEvent(HBBTV_EVENT_TERMINATE_APPLICATION, data);
    } else if (verb == "low-memory") {
        out->say("the platform reports low memory");
        postEvent(HBBTV_EVENT_LOW_MEMORY);
    } else if (verb == "time-shift") {
        const bool on = action.argument == "on";
        out->say(std::string("time shift ") + (on ? "on" : "off") + ": " +
                 (tesmo_hbbtv_set_time_shifted(window, on) == HBBTV_STATUS_OK ? "changed" : "unchanged"));
    } else {
        performBinding(action);
    }
}

// Actions of the running application's page, through the script bindings.
void TvPlatform::performBinding(const ScriptAction& action)
{
    const std::string& verb = action.verb;
    void* id = runningApplicationId();
    if (verb == "create-application") {
        void* created = nullptr;
        const int result = native_ApplicationCreateApplication(action.argument.c_str(), 0, id, &created);
        out->say("the page creates " + action.argument + ": result " + std::to_string(result));
    } else if (verb == "destroy-application") {
        out->say("the page destroys its application: result " + std::to_string(native_ApplicationDestroyApplication(id)));
    } else if (verb == "show" || verb == "hide") {
        const int result = verb == "show" ? native_ApplicationShow(id) : native_ApplicationHide(id);
        out->say("the page asks to " + verb + " its application: result " + std::to_string(result));
    } else if (verb == "keyset") {
        double stored = 0;
        const int result = native_KeySetSetValue(id, std::strtod(action.argument.c_str(), nullptr), &stored);
        out->say("the page sets its key set to " + action.argument + ": result " + std::to_string(result) + ", now " +
                 hex((unsigned long long)stored));
    } else if (verb == "xml-ait") {
        auto ait = std::make_unique<XmlAit>();
        std::string error;
        if (!ait->load(action.argument, error)) {
            out->say(error);
            return;
        }
        int result = 99;
        const bool handled = tesmo_hbbtv_handle_notification(nullptr, core->activeWindow(), DAXO_TESMO_EVT_AIT, ait->record(), &result);
        out->say("the page delivers the XML AIT " + action.argument + ": " +
                 (handled ? "result " + std::to_string(result) : std::string("not for the library")));
        xmlAits.push_back(std::move(ait));
    }
}

// ---------------------------------------------------------------- the platform

void TvPlatform::platformCall(const char* name)
{
    out->record(JsonLine().field("call", name));
}

void TvPlatform::aitCompleted(int version)
{
    out->noteActivity();
    completedVersions.insert(version);
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

int TvPlatform::carouselGetFile(const char* path, void* id)
{
    const std::string text = path ? path : "";
    out->record(JsonLine().field("call", "dsmcc_get_file").field("path", path).pointer("id", id));
    const size_t slash = text.find('/');
    if (options->carouselDir.empty() && carouselFeed.active())
        return carouselFile(slash == std::string::npos ? "" : text.substr(slash + 1), id);
    std::string bytes, why = "no carousel directory";
    const std::string relative = slash == std::string::npos ? "" : text.substr(slash + 1);
    if (options->carouselDir.empty() || !ConfinedFiles(options->carouselDir, MAX_FILE_BYTES).read(relative, bytes, why)) {
        out->say("carousel: no file for " + text + " (" + why + ")");
        return DSMCC_FILE_ERROR_CODE;
    }
    files[id] = {std::move(bytes), 0, mimeTypeOf(relative.substr(0, relative.find_first_of("?#")))};
    return DSMCC_OK;
}

// From the service's own carousel: pending while the file's module is on its way.
int TvPlatform::carouselFile(const std::string& path, void* id)
{
    std::string content;
    switch (carouselFeed.get(path, id, content)) {
    case carousel::ObjectCarousel::Lookup::FOUND:
        files[id] = {content, 0, mimeTypeOf(path)};
        return DSMCC_OK;
    case carousel::ObjectCarousel::Lookup::PENDING:
        out->say("carousel: " + path + " is on its way");
        return DSMCC_PENDING;
    case carousel::ObjectCarousel::Lookup::MISSING:
        break;
    }
    out->say("carousel: no file " + path);
    return DSMCC_FILE_ERROR_CODE;
}

int TvPlatform::carouselMimeType(void* id, char** mime)
{
    out->record(JsonLine().field("call", "dsmcc_get_mime_type").pointer("id", id));
    auto found = files.find(id);
    if (found == files.end())
        return DSMCC_UNKNOWN_ID;
    *mime = strdup(found->second.mime.c_str());
    return DSMCC_OK;
}

int TvPlatform::carouselRead(void* id, const unsigned char** data, unsigned int* length)
{
    out->record(JsonLine().field("call", "dsmcc_read").pointer("id", id));
    auto found = files.find(id);
    if (found == files.end())
        return DSMCC_UNKNOWN_ID;
    OpenFile& file = found->second;
    const size_t piece = std::min(CAROUSEL_PIECE, file.bytes.size() - file.offset);
    *data = reinterpret_cast<const unsigned char*>(file.bytes.data() + file.offset);
    *length = static_cast<unsigned int>(piece);
    file.offset += piece;
    return DSMCC_OK;
}

int TvPlatform::carouselClose(void* id)
{
    out->record(JsonLine().field("call", "dsmcc_close_file").pointer("id", id));
    files.erase(id);
    carouselFeed.forget(id);
    return DSMCC_OK;
}

// One carousel per dvb:// host.
int TvPlatform::sameCarousel(const char* url, const char* other, int* same)
{
    out->record(JsonLine().field("call", "dsmcc_same_carousel").field("url", url).field("other_url", other));
    auto host = [](const std::string& text) {
        const size_t slash = text.find('/', 6);
        return text.compare(0, 6, "dvb://") == 0 ? text.substr(0, slash) : std::string("\x01");
    };
    *same = host(url ? url : "") == host(other ? other : "");
    return DSMCC_OK;
}

void TvPlatform::streamEventCall(JsonLine line, const std::string& text)
{
    out->record(std::move(line));
    out->say(text);
}

// ---------------------------------------------------------------- notifications

bool TvPlatform::refuses(const std::string& url) const
{
    for (const std::string& pattern : options->refusedRequests)
        if (fnmatch(pattern.c_str(), url.c_str(), 0) == 0)
            return true;
    return false;
}

HBBTV_STATUS TvPlatform::listen(HBBTV_NotificationType type, HBBTV_NotificationData* data)
{
    get().onNotification(type, data);
    return HBBTV_STATUS_OK;
}

void TvPlatform::onNotification(HBBTV_NotificationType type, HBBTV_NotificationData* data)
{
    out->noteActivity();
    if (type == HBBTV_NOTIFICATION_REQUEST_WINDOW && data) {
        *data->request_window.window_slot = core->grantWindow();
        data->request_window.granted = 1;
    }
    if (type == HBBTV_NOTIFICATION_RELEASE_WINDOW && data)
        data->release_window.released = 1;
    if (type == HBBTV_NOTIFICATION_XHR && data && data->xhr.target_url && refuses(data->xhr.target_url))
        data->xhr.permission = HBBTV_XHR_PERMISSION_DENY;
    if (type == HBBTV_NOTIFICATION_GET_FREE_MEMORY && data)
        *data->get_free_memory.free_memory = FREE_MEMORY;
    out->record(notificationJson(type, data));
    if (!data)
        return out->say("AIT update without a table");

    switch (type) {
    case HBBTV_NOTIFICATION_APPLICATION_START:
    case HBBTV_NOTIFICATION_APPLICATION_STOP:
    case HBBTV_NOTIFICATION_BROADCAST_RELATED_CHANGE:
    case HBBTV_NOTIFICATION_TRUSTED:
        return describeApplicationNotification(type, data->application);
    case HBBTV_NOTIFICATION_AIT_UPDATE:
        return describeAitUpdate(data->ait);
    case HBBTV_NOTIFICATION_REQUEST_WINDOW:
        return out->say(core->windowName(*data->request_window.window_slot) + " granted");
    case HBBTV_NOTIFICATION_RELEASE_WINDOW: {
        DAXO_TesmoWindow* released = *data->release_window.window_slot;
        out->say(core->windowName(released) + " released");
        core->releaseWindow(released);
        return;
    }
    case HBBTV_NOTIFICATION_SHOW_WINDOW:
    case HBBTV_NOTIFICATION_HIDE_WINDOW: {
        DAXO_TesmoWindow* changed = *data->visibility.window_slot;
        out->say(core->windowName(changed) + (type == HBBTV_NOTIFICATION_SHOW_WINDOW ? " shown" : " hidden"));
        core->setVisible(changed, type == HBBTV_NOTIFICATION_SHOW_WINDOW);
        return;
    }
    case HBBTV_NOTIFICATION_KEYSET_CHANGED:
        return out->say("key set of " + core->windowName(data->keyset_changed.daxo_window) + " now " +
                        hex((unsigned)data->keyset_changed.keyset, 3));
    case HBBTV_NOTIFICATION_XHR:
        return;  // every request of a page comes here: the browser core tells the refused ones
    case HBBTV_NOTIFICATION_GET_FREE_MEMORY:
        return out->say("free memory asked: " + std::to_string(FREE_MEMORY) + " bytes");
    }
}

void TvPlatform::describeApplicationNotification(HBBTV_NotificationType type, const HBBTV_ApplicationNotificationData& app)
{
    const std::string who = app.organisation_id || app.application_id
                                ? applicationName(app.organisation_id, app.application_id)
                                : std::string("a broadband application");
    switch (type) {
    case HBBTV_NOTIFICATION_APPLICATION_START:
        tunedFrom = nullptr;  // a successor starts: the running application does not carry on
        out->say("start requested: " + who + " " + app.url + (app.flag_c ? " (AUTOSTART)" : "") +
                 (app.action == HBBTV_APPLICATION_ACTION_BLOCK_AND_KILL ? ", blocked: invalid application id" : ""));
        return;
    case HBBTV_NOTIFICATION_APPLICATION_STOP:
        out->say("stopped: " + who + " " + app.url +
                 (app.reactivate_ait && *app.reactivate_ait ? " (the broadcast AIT is activated again)" : ""));
        return;
    case HBBTV_NOTIFICATION_BROADCAST_RELATED_CHANGE:
        // Announced while the application is built, before its identifiers are copied.
        out->say(std::string(app.url) + " is now " + (app.flag_a ? "broadcast-related" : "broadcast-independent"));
        return;
    default:
        out->say("trust asked for " + std::string(app.url) + ": " + (app.flag_b ? "trusted" : "not trusted"));
        return;
    }
}

void TvPlatform::describeAitUpdate(const HBBTV_AITNotificationData& update)
{
    out->say(std::string(update.is_xml_ait ? "XML " : "") + "AIT handed to the platform: " +
             std::to_string(update.num_applications) + " application(s)" + (update.was_corrected ? ", corrected" : ""));
    for (int32_t i = 0; i < update.num_applications; ++i) {
        const HBBTV_AITApplicationInfo& info = update.applications[i];
        out->detail(applicationName(info.organisation_id, info.application_id) + " control code " +
                    std::to_string(info.control_code) + ", " + std::to_string(info.num_urls) + " URL(s), last transport first");
        for (int32_t u = 0; u < info.num_urls; ++u)
            out->detail("  " + std::string(info.urls[u] ? info.urls[u] : "(none)"));
    }
}
