#ifndef TESMO_TV_CAROUSELFEED_H
#define TESMO_TV_CAROUSELFEED_H

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "ObjectCarousel.h"
#include "SectionPace.h"
#include "TransportStream.h"

// The platform's object-carousel client at work on the service's carousel stream: its
// sections arrive a few at each tick, and a file asked for before its module is complete is
// answered once it is, as on a receiver.
class CarouselFeed {
public:
    // The stream's sections, spread evenly over that many ticks from the tick given to step
    // as 0. A new start begins a new carousel, whose modules may take budgetBytes.
    void start(std::vector<TimedSection> sections, uint64_t ticks, size_t budgetBytes);
    bool active() const { return !sections.empty(); }
    const carousel::ObjectCarousel& objects() const { return carousel; }
    // The tick that adds the last section.
    uint64_t lastTick() const { return pace.lastTick(sections.size()); }

    struct Answer {
        void* id;
        bool found;
        std::string path;
        std::string content;
    };
    // Adds the sections due at the tick; says what they changed, and which waiting requests
    // can now be answered.
    void step(uint64_t tick, std::vector<std::string>& said, std::vector<Answer>& answers);

    // A file by the path of its dvb: URL after the host. PENDING remembers the request.
    carousel::ObjectCarousel::Lookup get(const std::string& path, void* id, std::string& content);
    void forget(void* id) { waiting.erase(id); }
    // The requests still waiting, each answered as not found: the carousel they asked is gone.
    std::vector<Answer> abandon();

private:
    carousel::ObjectCarousel carousel;
    std::vector<TimedSection> sections;
    size_t next = 0;
    SectionPace pace;
    std::map<void*, std::string> waiting;
};

#endif
