#ifndef TESMO_TV_CAROUSELFILES_H
#define TESMO_TV_CAROUSELFILES_H

#include <map>
#include <string>
#include <vector>

#include "CarouselFeed.h"
#include "Options.h"
#include "PlatformEvents.h"
#include "Timeline.h"

// The platform's dvb: file server: the library's dsmcc_ calls for files, answered from the
// service's object carousel as its modules arrive (or from a directory, --carousel-dir).
class CarouselFiles {
public:
    CarouselFiles(Timeline& out, const Options& options, PostEvent post)
        : out(out), options(options), post(std::move(post))
    {
    }

    // A service's carousel, its sections spread over that many ticks; requests still waiting
    // for the one before are answered as errors.
    void start(std::vector<TimedSection> sections, uint64_t ticks);
    // Adds what is due at the service's tick and answers the requests it completes.
    void step(uint64_t serviceTick);
    const carousel::ObjectCarousel& objects() const { return feed.objects(); }
    uint64_t lastTick() const { return feed.lastTick(); }

    // ---- the library's calls
    int get(const char* path, void* id);
    int mimeType(void* id, char** mime);
    int read(void* id, const unsigned char** data, unsigned int* length);
    int close(void* id);
    int sameCarousel(const char* url, const char* other, int* same);

private:
    struct OpenFile {
        std::string bytes;
        size_t offset = 0;
        std::string mime;
    };

    int fromCarousel(const std::string& path, void* id);
    int fromDirectory(const std::string& path, const std::string& relative, void* id);
    void answer(const CarouselFeed::Answer& answer);

    Timeline& out;
    const Options& options;
    PostEvent post;
    CarouselFeed feed;
    std::map<void*, OpenFile> files;
};

#endif
