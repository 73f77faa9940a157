#include "SampleDescription.h"

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <set>
#include <sstream>

using namespace tesmo_test;

namespace {

// What a descriptor's one length byte, or a section, can hold: a text that does not fit is
// refused rather than written as a broken stream.
const size_t MAX_DESCRIPTOR_BODY = 255;
const size_t MAX_NAME = MAX_DESCRIPTOR_BODY - 4;  // language code and length before it
const size_t MAX_URL = MAX_DESCRIPTOR_BODY - 5;  // protocol, label, length and extension count
const size_t MAX_BOUNDARY = MAX_DESCRIPTOR_BODY - 2;  // count and length before it
const size_t MAX_EVENT_DATA = MAX_DESCRIPTOR_BODY - 10;
const size_t MAX_SERVICE_NAMES = MAX_DESCRIPTOR_BODY - 3;  // service type and two lengths
const size_t MAX_EVENT_NAME = 254;  // a length byte that counts the closing zero (event and file names)
const size_t MAX_EVENTS = 255;
const unsigned long MAX_BLOCK = 4066;  // a DownloadDataBlock in a section of 4096 bytes

bool fits(const std::string& text, size_t limit)
{
    return text.size() <= limit;
}

// Words of a line; a double-quoted text is one word, and a # outside one starts a comment.
// False for a quote that is not closed.
bool words(const std::string& line, std::vector<std::string>& out)
{
    std::istringstream in(line);
    std::string word;
    while (in >> std::ws && !in.eof() && in.peek() != '#') {
        if (in.peek() == '"') {
            in.get();
            if (!std::getline(in, word, '"') || in.eof())
                return false;
        } else {
            in >> word;
            const size_t comment = word.find('#');
            if (comment != std::string::npos) {
                word.resize(comment);
                out.push_back(word);
                return true;
            }
        }
        out.push_back(word);
    }
    return true;
}

const unsigned long MAX_PID = 0x1FFE;  // 0x1FFF is the null packets' PID
const unsigned long FIRST_PID = 0x0020;  // below it the PIDs of DVB's own tables
const unsigned long MAX_REPEAT = 100;

// A number of the description, refused when it does not fit where it goes.
unsigned long number(const std::string& text, unsigned long max, bool& ok)
{
    char* end = nullptr;
    errno = 0;
    const unsigned long long value = std::strtoull(text.c_str(), &end, 0);
    ok = ok && !text.empty() && text[0] != '-' && *end == '\0' && errno == 0 && value <= max;
    return ok ? static_cast<unsigned long>(value) : 0;
}

uint16_t pid(const std::string& text, bool& ok)
{
    const auto value = uint16_t(number(text, MAX_PID, ok));
    ok = ok && value >= FIRST_PID;
    return value;
}

// A file's path below the carousel's root: names joined by single slashes, none of them
// one that a file may not have, each short enough for its binding's length byte.
bool isCarouselPath(const std::string& path)
{
    std::istringstream in(path);
    std::string name;
    bool any = false;
    while (std::getline(in, name, '/')) {
        if (name.empty() || name == "." || name == ".." || name.size() > MAX_EVENT_NAME)
            return false;
        any = true;
    }
    return any && path.back() != '/';
}

uint8_t controlCode(const std::string& name, bool& ok)
{
    static const char* const names[] = {"AUTOSTART", "PRESENT", "DESTROY", "KILL", "PREFETCH", "REMOTE", "DISABLED"};
    for (int i = 0; i < 7; ++i)
        if (name == names[i])
            return uint8_t(i + 1);
    return uint8_t(number(name, 0xFF, ok));
}

// "application ORG APP CODE priority P profile MASK MAJOR.MINOR.MICRO [service-bound]"
bool parseApplication(const std::vector<std::string>& w, SampleApplication& app)
{
    bool ok = w.size() >= 9 && w[4] == "priority" && w[6] == "profile";
    if (!ok)
        return false;
    app.organisationId = uint32_t(number(w[1], 0xFFFFFFFF, ok));
    app.applicationId = uint16_t(number(w[2], 0xFFFF, ok));
    app.controlCode = controlCode(w[3], ok);
    app.descriptor.priority = uint8_t(number(w[5], 0xFF, ok));
    unsigned major = 0, minor = 0, micro = 0;
    char extra = 0;
    ok = ok && std::sscanf(w[8].c_str(), "%u.%u.%u%c", &major, &minor, &micro, &extra) == 3 && major <= 0xFF &&
         minor <= 0xFF && micro <= 0xFF;
    app.descriptor.profiles = {{uint16_t(number(w[7], 0xFFFF, ok)), uint8_t(major), uint8_t(minor), uint8_t(micro)}};
    app.descriptor.serviceBound = w.size() > 9 && w[9] == "service-bound";
    app.descriptor.labels.clear();
    return ok;
}

// "transport LABEL http URL" or "transport LABEL carousel TAG"
bool parseTransport(const std::vector<std::string>& w, SampleApplication& app)
{
    bool ok = w.size() == 4;
    if (!ok)
        return false;
    const uint8_t label = uint8_t(number(w[1], 0xFF, ok));
    if (w[2] == "http" && fits(w[3], MAX_URL))
        app.transports.push_back(httpTransport(label, w[3]));
    else if (w[2] == "carousel")
        app.transports.push_back(carouselTransport(label, uint8_t(number(w[3], 0xFF, ok))));
    else
        return false;
    app.descriptor.labels.push_back(label);
    return ok;
}

// "service ID NAME provider PROVIDER pmt PID ait PID [carousel PID]" starts a service.
bool parseService(const std::vector<std::string>& w, SampleDescription& sample)
{
    bool ok = (w.size() == 9 || w.size() == 11) && w[3] == "provider" && w[5] == "pmt" && w[7] == "ait" &&
              (w.size() == 9 || w[9] == "carousel");
    if (!ok)
        return false;
    SampleService service;
    service.serviceId = uint16_t(number(w[1], 0xFFFF, ok));
    service.name = w[2];
    service.provider = w[4];
    ok = ok && fits(w[2] + w[4], MAX_SERVICE_NAMES);
    service.pmtPid = pid(w[6], ok);
    service.aitPid = pid(w[8], ok);
    if (w.size() == 11)
        service.carouselPid = pid(w[10], ok);
    sample.services.push_back(service);
    return ok;
}

// "carousel_stream_event PATH NAME=ID..."
bool parseStreamEvent(const std::vector<std::string>& w, SampleService& service)
{
    bool ok = true;
    SampleStreamEvent streamEvent{w[1], {}};
    for (size_t i = 2; i < w.size(); ++i) {
        const size_t equals = w[i].find('=');
        if (equals == std::string::npos)
            return false;
        ok = ok && fits(w[i].substr(0, equals), MAX_EVENT_NAME);
        streamEvent.events.push_back({w[i].substr(0, equals), uint16_t(number(w[i].substr(equals + 1), 0xFFFF, ok))});
    }
    ok = ok && streamEvent.events.size() <= MAX_EVENTS && isCarouselPath(w[1]);
    service.streamEvents.push_back(streamEvent);
    return ok;
}

// A line of the service being described.
bool parseServiceLine(const std::vector<std::string>& w, SampleService& service)
{
    bool ok = true;
    const std::string& key = w[0];
    SampleApplication* app =
        service.sections.empty() || service.sections.back().empty() ? nullptr : &service.sections.back().back();
    if (key == "carousel_tag" && w.size() == 2) {
        service.carouselTag = uint8_t(number(w[1], 0xFF, ok));
    } else if (key == "ait" && w.size() == 3 && w[1] == "version") {
        service.aitVersion = uint8_t(number(w[2], 0x1F, ok));
    } else if (key == "section" && w.size() == 1) {
        service.sections.emplace_back();
    } else if (key == "application" && !service.sections.empty()) {
        service.sections.back().emplace_back();
        return parseApplication(w, service.sections.back().back());
    } else if (key == "transport" && app) {
        return parseTransport(w, *app);
    } else if (key == "name" && app && w.size() == 2 && fits(w[1], MAX_NAME)) {
        app->name = w[1];
    } else if (key == "location" && app && w.size() == 2 && fits(w[1], MAX_DESCRIPTOR_BODY)) {
        app->location = w[1];
    } else if (key == "boundary" && app && w.size() == 2 && fits(w[1], MAX_BOUNDARY)) {
        app->boundaries.push_back(w[1]);
    } else if (key == "carousel_folder" && w.size() == 2) {
        service.carouselFolder = w[1];
    } else if (key == "carousel_file" && (w.size() == 2 || (w.size() == 3 && w[2] == "compressed")) &&
               isCarouselPath(w[1])) {
        service.carouselFiles.push_back({w[1], w.size() == 3});
    } else if (key == "carousel_block_size" && w.size() == 2) {
        const unsigned long size = number(w[1], MAX_BLOCK, ok);
        ok = ok && size >= 1;
        service.carouselBlockSize = uint16_t(size);
    } else if (key == "stream_events" && w.size() == 4 && w[2] == "tag") {
        service.eventPid = pid(w[1], ok);
        service.eventTag = uint8_t(number(w[3], 0xFF, ok));
    } else if (key == "carousel_stream_event" && w.size() >= 3) {
        return parseStreamEvent(w, service);
    } else if (key == "av" && w.size() == 3) {
        service.avFile = w[1];
        service.avPid = pid(w[2], ok);
    } else if (key == "event" && w.size() == 3 && fits(w[2], MAX_EVENT_DATA)) {
        service.occurrences.push_back({uint16_t(number(w[1], 0xFFFF, ok)), w[2]});
    } else {
        return false;
    }
    return ok;
}

bool parseLine(const std::vector<std::string>& w, SampleDescription& sample)
{
    bool ok = true;
    const std::string& key = w[0];
    if (key == "transport_stream" && w.size() == 4 && w[2] == "network") {
        sample.transportStreamId = uint16_t(number(w[1], 0xFFFF, ok));
        sample.originalNetworkId = uint16_t(number(w[3], 0xFFFF, ok));
    } else if (key == "service") {
        return parseService(w, sample);
    } else if (key == "repeat" && w.size() == 2) {
        sample.repeat = int(number(w[1], MAX_REPEAT, ok));
        ok = ok && sample.repeat >= 1;
    } else {
        return !sample.services.empty() && parseServiceLine(w, sample.services.back());
    }
    return ok;
}

// What the lines cannot say alone: every PID used once, each service once, what a service
// carries has a stream to go on, and its AIT's sections can be numbered.
std::string serviceProblem(const SampleDescription& sample)
{
    std::set<unsigned> pids, services;
    for (const SampleService& service : sample.services) {
        const std::string which = "service " + std::to_string(service.serviceId);
        if (!services.insert(service.serviceId).second)
            return which + " is described twice";
        if (service.sections.empty())
            return which + " has no AIT section";
        if (service.sections.size() > 256)
            return which + " has more AIT sections than a table can number";
        if ((!service.carouselFiles.empty() || !service.streamEvents.empty()) && !service.carouselPid)
            return which + " has carousel objects but no carousel stream";
        if ((!service.occurrences.empty() || !service.streamEvents.empty()) && !service.eventPid)
            return which + " has stream events but no stream_events stream";
        for (unsigned pid : {unsigned(service.pmtPid), unsigned(service.aitPid), unsigned(service.carouselPid),
                             unsigned(service.eventPid), unsigned(service.avPid)})
            if (pid && !pids.insert(pid).second)
                return which + " uses PID " + std::to_string(pid) + " that is used already";
    }
    return sample.services.empty() ? "no service described" : "";
}

}  // namespace

bool parseDescriptionText(const std::string& text, const std::string& name, SampleDescription& sample,
                          std::string& error)
{
    std::istringstream in(text);
    std::string line;
    for (int n = 1; std::getline(in, line); ++n) {
        std::vector<std::string> w;
        if (line.find('\0') != std::string::npos || !words(line, w) || (!w.empty() && !parseLine(w, sample))) {
            error = name + ":" + std::to_string(n) + ": cannot read '" + line + "'";
            return false;
        }
    }
    const std::string problem = serviceProblem(sample);
    if (!problem.empty())
        error = name + ": " + problem;
    return problem.empty();
}

bool parseDescription(const std::string& path, SampleDescription& sample, std::string& error)
{
    std::ifstream in(path);
    if (!in) {
        error = "cannot read " + path;
        return false;
    }
    const size_t slash = path.rfind('/');
    sample.directory = slash == std::string::npos ? "." : path.substr(0, slash);
    std::stringstream text;
    text << in.rdbuf();
    return parseDescriptionText(text.str(), path, sample, error);
}
