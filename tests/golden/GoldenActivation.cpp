#include "GoldenActivation.h"

#include <cstdlib>
#include <cstring>

#include "FakeWorld.h"
#include "GoldenPrinter.h"
#include "PlatformListener.h"

namespace tesmo_test {

namespace {

DAXO_Tesmo* const core = reinterpret_cast<DAXO_Tesmo*>(0xC0DE);

void tickAll()
{
    for (int i = 0; i < 1000; ++i)
        tesmo_hbbtv_tick();
}

HBBTV_EventData* platformRecord()
{
    return static_cast<HBBTV_EventData*>(std::calloc(1, sizeof(HBBTV_EventData)));
}

void postSection(const Bytes& section)
{
    HBBTV_EventData* data = platformRecord();
    auto* bytes = static_cast<unsigned char*>(std::malloc(section.size() ? section.size() : 1));
    if (!section.empty())
        std::memcpy(bytes, section.data(), section.size());
    data->ait_section.section = bytes;
    data->ait_section.original_network_id = 0x1;
    data->ait_section.transport_stream_id = 0x2;
    data->ait_section.service_id = 0x3;
    data->ait_section.ait_present = 1;
    tesmo_hbbtv_send_event(HBBTV_EVENT_AIT_SECTION, data);
}

int notify(DAXO_TesmoWindow* browserWindow, int id, void* data)
{
    int result = -1;
    const bool handled = tesmo_hbbtv_handle_notification(nullptr, browserWindow, id, data, &result);
    return handled ? result : -2;
}

bool looksLikeAddress(const std::string& text)
{
    return text.size() > 2 && text.compare(0, 2, "0x") == 0 &&
           text.find_first_not_of("0123456789abcdef", 2) == std::string::npos;
}

}  // namespace

void GoldenActivation::sections(const std::vector<Bytes>& sections, bool loadsFail)
{
    out << (loadsFail ? "-- activation, every load failing\n" : "-- activation\n");
    start();
    for (const Bytes& section : sections)
        postSection(section);
    tickAll();
    if (loadsFail)
        failEveryLoad();
    else
        loadGrantedWindow();
    finish();
}

void GoldenActivation::xmlAit(XmlAitInput& input)
{
    out << "-- activation\n";
    start();
    HBBTV_EventData* data = platformRecord();
    data->start_broadcast_independent.window = window;
    data->start_broadcast_independent.url = strdup("http://portal.tv/index.html");
    tesmo_hbbtv_send_event(HBBTV_EVENT_START_BROADCAST_INDEPENDENT, data);
    tickAll();
    loadGrantedWindow();
    DAXO_AITData record = input.record();
    out << "xml ait notification: result "
        << notify(PlatformListener::get().lastGrantedWindow(), DAXO_TESMO_EVT_AIT, &record) << "\n";
    tickAll();
    loadGrantedWindow();
    finish();
}

void GoldenActivation::start()
{
    FakeWorld::get().reset();
    PlatformListener::get().reset();
    names.clear();
    probes.clear();
    tesmo_hbbtv_init(core);
    PlatformListener::get().install();
    window = tesmo_hbbtv_create_window();
    tesmo_hbbtv_set_broadcast_window(window);
}

// The page of the newest browser window finishes loading with this HTTP status.
void GoldenActivation::loadGrantedWindow(int16_t status)
{
    DAXO_TesmoWindow* browserWindow = PlatformListener::get().lastGrantedWindow();
    if (!browserWindow)
        return;
    DAXO_LoadRecord record{};
    record.http_status = status;
    out << "load finished " << name(browserWindow) << ": result "
        << notify(browserWindow, DAXO_TESMO_EVT_LOADING_FINISHED, &record) << "\n";
    tickAll();
}

// Each page the library opens fails, which shows the order in which it falls back: other
// transports, the parent, the next AUTOSTART entry.
void GoldenActivation::failEveryLoad()
{
    for (size_t opened = 0, round = 0; round < 32; ++round) {
        const size_t now = FakeWorld::get().callsTo("tm_open_url").size();
        if (now == opened)
            return;
        opened = now;
        loadGrantedWindow(404);
    }
}

void GoldenActivation::finish()
{
    for (const Call& call : FakeWorld::get().callsTo("tm_open_url"))
        probes.push_back(call.args.at(1));
    probes.insert(probes.end(), {"http://example.tv/", "dvb://1.2.3.5/index.html", "https://www.raiplay.it/hbbtv/"});
    out << "within";
    for (const std::string& probe : probes)
        out << " " << tesmo_hbbtv_is_within_boundaries(window, probe.c_str());
    out << "\n";
    tesmo_hbbtv_shutdown();
    printCalls();
    for (const Notice& notice : PlatformListener::get().notices)
        printNotice(notice);
    FakeWorld::get().reset();
    PlatformListener::get().reset();
}

void GoldenActivation::printCalls()
{
    for (const Call& call : FakeWorld::get().calls()) {
        out << "call " << call.name << "(";
        for (size_t i = 0; i < call.args.size(); ++i)
            out << (i ? ", " : "") << name(call.args[i]);
        out << ")\n";
    }
}

void GoldenActivation::printNotice(const Notice& n)
{
    out << "notice " << int(n.type) << " window " << name(n.window) << " flags " << n.flagA << "," << n.flagB << ","
        << n.flagC << " ids " << n.organisationId << "." << n.applicationId << " url " << quoted(n.url) << " usage "
        << int(n.usageType) << " browser " << name(n.browserWindow) << " keyset " << n.keyset << "\n";
    if (n.type != HBBTV_NOTIFICATION_AIT_UPDATE)
        return;
    out << "  payload " << n.hasPayload << " xml " << n.isXmlAit << " corrected " << n.wasCorrected << "\n";
    for (const Notice::Entry& entry : n.applications) {
        out << "  entry " << quoted(entry.name) << " " << entry.organisationId << "." << entry.applicationId
            << " control " << entry.controlCode << " urls";
        for (const std::string& url : entry.urls)
            out << " " << quoted(url);
        out << "\n";
    }
}

std::string GoldenActivation::name(const void* pointer)
{
    return name(ptr(pointer));
}

std::string GoldenActivation::name(const std::string& argument)
{
    if (!looksLikeAddress(argument))
        return quoted(argument);
    auto found = names.find(argument);
    if (found == names.end())
        found = names.emplace(argument, "p" + std::to_string(names.size() + 1)).first;
    return found->second;
}

}  // namespace tesmo_test
