#ifndef TESMO_TV_PROGRAMMEGUIDE_H
#define TESMO_TV_PROGRAMMEGUIDE_H

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "TransportStream.h"

struct dvbpsi_eit_s;  // libdvbpsi's decoded EIT

// What a programme's parental_rating_descriptor says for a country: the minimum age (ratings
// 1 to 15 are the ages 4 to 18; the others, undefined or the broadcaster's own, are left out).
struct ParentalRating {
    std::string country;  // ISO 3166 code
    uint8_t age;
};

// A component_descriptor: a stream of the programme (video, audio, subtitles...).
struct ProgrammeComponent {
    uint8_t streamContent;
    uint8_t componentType;
    uint8_t componentTag;
    std::string language;
    std::string text;  // UTF-8
};

struct Programme {
    uint16_t eventId = 0;
    int64_t startTime = 0;  // seconds since 1970, UTC
    uint32_t duration = 0;  // seconds
    std::string language;  // of the name and description: the first short_event_descriptor's
    std::string name;  // UTF-8
    std::string description;  // UTF-8
    std::vector<ParentalRating> ratings;
    std::vector<ProgrammeComponent> components;
};

// The programme on now and the next one, of a version of the table; -1 before any.
struct PresentFollowing {
    int version = -1;
    std::optional<Programme> present, following;
};

// The present/following of one service of the actual transport stream (EIT table 0x4E),
// decoded by libdvbpsi's EIT decoder from the sections of the EIT's PID. A table is taken
// once both its sections are in; an event whose time is not valid BCD is no programme.
// Sections of other tables or services, or whose loops do not fit, are passed over.
class ProgrammeGuide {
public:
    explicit ProgrammeGuide(uint16_t serviceId);
    ~ProgrammeGuide();
    ProgrammeGuide(const ProgrammeGuide&) = delete;
    ProgrammeGuide& operator=(const ProgrammeGuide&) = delete;

    // Any bytes: true when they complete a present/following of another version than the
    // last one taken.
    bool add(const Bytes& section);
    const PresentFollowing& current() const { return programmes; }

private:
    static void newSubtable(struct dvbpsi_s* handle, uint8_t tableId, uint16_t extension, void* self);
    static void tableComplete(void* self, dvbpsi_eit_s* table);
    void handOver(const Bytes& section);
    void take(const dvbpsi_eit_s& table);

    const uint16_t serviceId;
    struct dvbpsi_s* handle;
    PresentFollowing programmes;
    bool changed = false;
    // The version whose sections came last, and the events in each of them by section
    // number: libdvbpsi's table lists the events of all its sections together.
    int building = -1;
    std::map<uint8_t, size_t> eventsInSection;
};

#endif
