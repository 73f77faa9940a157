#include "CarouselFiles.h"

#include <cstring>

#include "ConfinedFiles.h"
#include "tesmo_hbbtv/platform.h"

namespace {

// A carousel file is a module; none is larger than a DII may announce.
const size_t MAX_FILE_BYTES = 16u << 20;
const size_t READ_PIECE = 4096;

std::string mimeTypeOf(const std::string& path)
{
    static const std::pair<const char*, const char*> types[] = {{".html", "application/vnd.hbbtv.xhtml+xml"},
                                                                {".js", "application/javascript"},
                                                                {".css", "text/css"},
                                                                {".png", "image/png"},
                                                                {".jpg", "image/jpeg"},
                                                                {".gif", "image/gif"},
                                                                {".txt", "text/plain"},
                                                                {".json", "application/json"},
                                                                {".ts", "video/mpeg"},
                                                                {".mp3", "audio/mpeg"},
                                                                {".mp4", "video/mp4"},
                                                                {".xml", "application/vnd.dvb.ait+xml"}};
    for (const auto& type : types) {
        const size_t n = std::strlen(type.first);
        if (path.size() >= n && path.compare(path.size() - n, n, type.first) == 0)
            return type.second;
    }
    return "application/octet-stream";
}

// The library's path is the carousel's host, then the file's path below its gateway.
std::string belowHost(const std::string& path)
{
    const size_t slash = path.find('/');
    return slash == std::string::npos ? "" : path.substr(slash + 1);
}

}  // namespace

void CarouselFiles::start(std::vector<TimedSection> sections, uint64_t ticks)
{
    for (const CarouselFeed::Answer& abandoned : feed.abandon()) {
        HBBTV_EventData* event = newEvent();
        event->dsmcc_file.handle = abandoned.id;
        post(HBBTV_EVENT_DSMCC_FILE_ERROR, event);
    }
    feed.start(std::move(sections), ticks, size_t(options.carouselMemoryMb) << 20);
}

void CarouselFiles::step(uint64_t serviceTick)
{
    std::vector<std::string> said;
    std::vector<CarouselFeed::Answer> answers;
    feed.step(serviceTick, said, answers);
    for (const std::string& line : said)
        out.say(line);
    for (const CarouselFeed::Answer& completed : answers)
        answer(completed);
}

void CarouselFiles::answer(const CarouselFeed::Answer& completed)
{
    HBBTV_EventData* event = newEvent();
    event->dsmcc_file.handle = completed.id;
    if (completed.found)
        files[completed.id] = {completed.content, 0, mimeTypeOf(completed.path)};
    else
        out.say("carousel: no file " + completed.path);
    post(completed.found ? HBBTV_EVENT_DSMCC_FILE_READY : HBBTV_EVENT_DSMCC_FILE_ERROR, event);
}

int CarouselFiles::get(const char* path, void* id)
{
    const std::string text = path ? path : "";
    out.record(JsonLine().field("call", "dsmcc_get_file").field("path", path).pointer("id", id));
    if (options.carouselDir.empty() && feed.active())
        return fromCarousel(belowHost(text), id);
    return fromDirectory(text, belowHost(text), id);
}

// From the service's own carousel: pending while the file's module is on its way.
int CarouselFiles::fromCarousel(const std::string& path, void* id)
{
    std::string content;
    switch (feed.get(path, id, content)) {
    case carousel::ObjectCarousel::Lookup::FOUND:
        files[id] = {content, 0, mimeTypeOf(path)};
        return DSMCC_OK;
    case carousel::ObjectCarousel::Lookup::PENDING:
        out.say("carousel: " + path + " is on its way");
        return DSMCC_PENDING;
    case carousel::ObjectCarousel::Lookup::MISSING:
        break;
    }
    out.say("carousel: no file " + path);
    return DSMCC_FILE_ERROR_CODE;
}

int CarouselFiles::fromDirectory(const std::string& path, const std::string& relative, void* id)
{
    std::string bytes, why = "no carousel directory";
    if (options.carouselDir.empty() || !ConfinedFiles(options.carouselDir, MAX_FILE_BYTES).read(relative, bytes, why)) {
        out.say("carousel: no file for " + path + " (" + why + ")");
        return DSMCC_FILE_ERROR_CODE;
    }
    files[id] = {std::move(bytes), 0, mimeTypeOf(relative.substr(0, relative.find_first_of("?#")))};
    return DSMCC_OK;
}

int CarouselFiles::mimeType(void* id, char** mime)
{
    out.record(JsonLine().field("call", "dsmcc_get_mime_type").pointer("id", id));
    auto found = files.find(id);
    if (found == files.end())
        return DSMCC_UNKNOWN_ID;
    *mime = strdup(found->second.mime.c_str());
    return DSMCC_OK;
}

int CarouselFiles::read(void* id, const unsigned char** data, unsigned int* length)
{
    out.record(JsonLine().field("call", "dsmcc_read").pointer("id", id));
    auto found = files.find(id);
    if (found == files.end())
        return DSMCC_UNKNOWN_ID;
    OpenFile& file = found->second;
    const size_t piece = std::min(READ_PIECE, file.bytes.size() - file.offset);
    *data = reinterpret_cast<const unsigned char*>(file.bytes.data() + file.offset);
    *length = static_cast<unsigned int>(piece);
    file.offset += piece;
    return DSMCC_OK;
}

int CarouselFiles::close(void* id)
{
    out.record(JsonLine().field("call", "dsmcc_close_file").pointer("id", id));
    files.erase(id);
    feed.forget(id);
    return DSMCC_OK;
}

// One carousel per dvb:// host.
int CarouselFiles::sameCarousel(const char* url, const char* other, int* same)
{
    out.record(JsonLine().field("call", "dsmcc_same_carousel").field("url", url).field("other_url", other));
    auto host = [](const std::string& text) {
        const size_t slash = text.find('/', 6);
        return text.compare(0, 6, "dvb://") == 0 ? text.substr(0, slash) : std::string("\x01");
    };
    *same = host(url ? url : "") == host(other ? other : "");
    return DSMCC_OK;
}
