#include "SampleDescription.h"

#include <algorithm>
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
const size_t MAX_EVENT_TEXTS = MAX_DESCRIPTOR_BODY - 5;  // language code and two lengths
const size_t MAX_COMPONENT_TEXT = MAX_DESCRIPTOR_BODY - 6;  // content, type, tag and language
const size_t MAX_RATINGS = MAX_DESCRIPTOR_BODY / 4;
const unsigned long MIN_AGE = 4;  // ratings 1 to 15 are the minimum ages 4 to 18
const unsigned long MAX_AGE = 18;
const int64_t MJD_OF_1970 = 40587;
const int64_t MAX_MJD = 0xFFFF;

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

// An ISO 639 language or ISO 3166 country code: three letters.
bool isCode(const std::string& text)
{
    return text.size() == 3 && std::all_of(text.begin(), text.end(),
                                           [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); });
}

// The decimal digits of text at [from, from + count), or -1.
int digits(const std::string& text, size_t from, size_t count)
{
    int value = 0;
    for (size_t i = from; i < from + count; ++i) {
        if (i >= text.size() || text[i] < '0' || text[i] > '9')
            return -1;
        value = value * 10 + (text[i] - '0');
    }
    return value;
}

bool isLeapYear(int year)
{
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int daysInMonth(int year, int month)
{
    static const int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && isLeapYear(year) ? 29 : days[month - 1];
}

// Days from 1970-01-01 to a date of the proleptic Gregorian calendar (year 0 and later).
int64_t daysSince1970(int year, int month, int day)
{
    const int y = year - (month <= 2);
    const int era = y / 400;
    const int yearOfEra = y - era * 400;
    const int dayOfYear = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
    const int dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return int64_t(era) * 146097 + dayOfEra - 719468;
}

// "HH:MM:SS" at text[from], hours up to limit.
bool timeOfDay(const std::string& text, size_t from, int hoursLimit, uint32_t& seconds)
{
    const int hours = digits(text, from, 2), minutes = digits(text, from + 3, 2), secs = digits(text, from + 6, 2);
    seconds = uint32_t(hours * 3600 + minutes * 60 + secs);
    return text.size() >= from + 8 && text[from + 2] == ':' && text[from + 5] == ':' && hours >= 0 &&
           hours <= hoursLimit && minutes >= 0 && minutes < 60 && secs >= 0 && secs < 60;
}

// "2026-11-25T20:15:00Z", of a day whose Modified Julian Date fits its 16 bits.
bool utcTime(const std::string& text, int64_t& seconds)
{
    const int year = digits(text, 0, 4), month = digits(text, 5, 2), day = digits(text, 8, 2);
    uint32_t time = 0;
    if (text.size() != 20 || text[4] != '-' || text[7] != '-' || text[10] != 'T' || text[19] != 'Z' || year < 0 ||
        month < 1 || month > 12 || day < 1 || day > daysInMonth(year, month) || !timeOfDay(text, 11, 23, time))
        return false;
    const int64_t days = daysSince1970(year, month, day);
    seconds = days * 86400 + time;
    return days + MJD_OF_1970 >= 0 && days + MJD_OF_1970 <= MAX_MJD;
}

// "HH:MM:SS", up to 99 hours.
bool duration(const std::string& text, uint32_t& seconds)
{
    return text.size() == 8 && timeOfDay(text, 0, 99, seconds);
}

// "T1,T2,...": component tags.
std::vector<uint8_t> tagList(const std::string& text, bool& ok)
{
    std::vector<uint8_t> tags;
    std::istringstream in(text);
    std::string tag;
    while (std::getline(in, tag, ','))
        tags.push_back(uint8_t(number(tag, 0xFF, ok)));
    ok = ok && !tags.empty() && text.back() != ',';
    return tags;
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

// "subtitles PID LANGUAGE [tag T] [hard-of-hearing]"
bool parseSubtitles(const std::vector<std::string>& w, SampleService& service)
{
    if (w.size() < 3)
        return false;
    bool ok = isCode(w[2]);
    SampleSubtitles subtitles;
    subtitles.pid = pid(w[1], ok);
    subtitles.language = w[2];
    size_t at = 3;
    if (at + 1 < w.size() && w[at] == "tag") {
        subtitles.componentTag = uint8_t(number(w[at + 1], 0xFF, ok));
        at += 2;
    }
    if (at < w.size() && w[at] == "hard-of-hearing") {
        subtitles.hardOfHearing = true;
        ++at;
    }
    service.subtitles.push_back(subtitles);
    return ok && at == w.size();
}

// "programmes version N [at P%]" starts a version of the service's present/following.
bool parseProgrammes(const std::vector<std::string>& w, SampleService& service)
{
    bool ok = (w.size() == 3 || (w.size() == 5 && w[3] == "at" && w[4].size() > 1 && w[4].back() == '%')) &&
              w[1] == "version";
    if (!ok)
        return false;
    SampleProgrammes programmes;
    programmes.version = uint8_t(number(w[2], 0x1F, ok));
    if (w.size() == 5)
        programmes.atPercent = unsigned(number(w[4].substr(0, w[4].size() - 1), 100, ok));
    service.programmes.push_back(programmes);
    return ok;
}

// An option of a programme line at w[at], which it moves past: "language L",
// "rating COUNTRY AGE" or "component CONTENT TYPE TAG LANGUAGE TEXT".
bool parseProgrammeOption(const std::vector<std::string>& w, size_t& at, SampleProgramme& programme)
{
    const size_t left = w.size() - at;
    bool ok = true;
    if (w[at] == "language" && left >= 2 && isCode(w[at + 1])) {
        programme.language = w[at + 1];
        at += 2;
    } else if (w[at] == "rating" && left >= 3 && isCode(w[at + 1])) {
        const unsigned long age = number(w[at + 2], MAX_AGE, ok);
        programme.ratings.push_back({w[at + 1], uint8_t(age - 3)});
        ok = ok && age >= MIN_AGE && programme.ratings.size() <= MAX_RATINGS;
        at += 3;
    } else if (w[at] == "component" && left >= 6 && isCode(w[at + 4])) {
        programme.components.push_back({uint8_t(number(w[at + 1], 0x0F, ok)), uint8_t(number(w[at + 2], 0xFF, ok)),
                                        uint8_t(number(w[at + 3], 0xFF, ok)), w[at + 4], w[at + 5]});
        ok = ok && fits(dvbText(w[at + 5]), MAX_COMPONENT_TEXT);
        at += 6;
    } else {
        return false;
    }
    return ok;
}

// "programme present|following EVENT_ID START DURATION NAME TEXT [options]", of the version
// last started.
bool parseProgramme(const std::vector<std::string>& w, SampleService& service)
{
    if (service.programmes.empty() || w.size() < 7 || (w[1] != "present" && w[1] != "following"))
        return false;
    SampleProgrammes& programmes = service.programmes.back();
    std::optional<SampleProgramme>& slot = w[1] == "present" ? programmes.present : programmes.following;
    bool ok = !slot;
    SampleProgramme programme;
    programme.eventId = uint16_t(number(w[2], 0xFFFF, ok));
    ok = ok && utcTime(w[3], programme.startTime) && duration(w[4], programme.duration);
    programme.name = w[5];
    programme.text = w[6];
    ok = ok && fits(dvbText(w[5]) + dvbText(w[6]), MAX_EVENT_TEXTS);
    for (size_t at = 7; ok && at < w.size();)
        ok = parseProgrammeOption(w, at, programme);
    slot = programme;
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
    } else if (key == "av" && (w.size() == 3 || (w.size() == 5 && w[3] == "tags"))) {
        service.avFile = w[1];
        service.avPid = pid(w[2], ok);
        if (w.size() == 5)
            service.avTags = tagList(w[4], ok);
    } else if (key == "subtitles") {
        return parseSubtitles(w, service);
    } else if (key == "programmes") {
        return parseProgrammes(w, service);
    } else if (key == "programme") {
        return parseProgramme(w, service);
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
    } else if (key == "network" && w.size() == 3) {
        sample.networkId = uint16_t(number(w[1], 0xFFFF, ok));
        sample.networkName = w[2];
        ok = ok && fits(dvbText(w[2]), MAX_DESCRIPTOR_BODY);
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

// Each version of the present/following differs from the one before and has rounds of its
// own, the first from the start.
std::string programmesProblem(const SampleService& service, int rounds)
{
    for (size_t i = 0; i < service.programmes.size(); ++i) {
        const SampleProgrammes& programmes = service.programmes[i];
        const std::string which = "programmes version " + std::to_string(programmes.version);
        if (i == 0 && programmes.atPercent != 0)
            return "has no programmes from the start (at 0%)";
        if (i > 0 && programmes.version == service.programmes[i - 1].version)
            return which + " follows itself: a receiver would see no change";
        const int round = programmes.firstRound(rounds);
        if (round >= rounds || (i > 0 && round <= service.programmes[i - 1].firstRound(rounds)))
            return which + " has no round of its own among the sample's " + std::to_string(rounds);
    }
    return "";
}

std::string tagProblem(const SampleService& service)
{
    std::set<unsigned> tags;
    for (unsigned tag : service.givenTags())
        if (!tags.insert(tag).second)
            return "gives component tag " + std::to_string(tag) + " to two streams";
    return "";
}

// What the lines cannot say alone: every PID used once, each service once, what a service
// carries has a stream to go on, its AIT's sections can be numbered, its component tags
// tell its streams apart and its present/following versions can be seen.
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
        std::vector<unsigned> used{service.pmtPid, service.aitPid, service.carouselPid, service.eventPid,
                                   service.avPid};
        for (const SampleSubtitles& subtitles : service.subtitles)
            used.push_back(subtitles.pid);
        for (unsigned pid : used)
            if (pid && !pids.insert(pid).second)
                return which + " uses PID " + std::to_string(pid) + " that is used already";
        for (const std::string& problem : {tagProblem(service), programmesProblem(service, sample.repeat)})
            if (!problem.empty())
                return which + " " + problem;
    }
    return sample.services.empty() ? "no service described" : "";
}

}  // namespace

std::vector<uint8_t> SampleService::givenTags() const
{
    std::vector<uint8_t> tags = avTags;
    if (carouselPid)
        tags.push_back(carouselTag);
    if (eventPid)
        tags.push_back(eventTag);
    for (const SampleSubtitles& s : subtitles)
        if (s.componentTag)
            tags.push_back(*s.componentTag);
    return tags;
}

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
