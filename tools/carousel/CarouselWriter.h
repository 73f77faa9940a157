#ifndef TESMO_HBBTV_CAROUSEL_CAROUSELWRITER_H
#define TESMO_HBBTV_CAROUSEL_CAROUSELWRITER_H

// Writes an object carousel as a broadcaster's playout does: BIOP objects in modules,
// modules cut into DownloadDataBlock sections, announced by a DownloadInfoIndication, the
// service gateway named by a DownloadServerInitiate. For the sample and for tests, which
// also use the pieces to build broken carousels.

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "SectionBuilder.h"

namespace carousel {

using tesmo_test::Bytes;

struct Reference {
    std::string kind;  // "srg", "dir", "fil"
    uint16_t moduleId;
    std::string objectKey;
};

struct NamedReference {
    std::string name;
    Reference target;
    uint32_t fileSize = 0;  // told in the binding of a file
};

struct CarouselIds {
    uint32_t carouselId = 1;
    uint16_t associationTag = 0x05;
    uint16_t blockSize = 4066;
    uint8_t diiVersion = 1;
};

// One BIOP message.
Bytes biopFile(const std::string& objectKey, const std::string& content);
Bytes biopDirectory(const CarouselIds& ids, const std::string& kind, const std::string& objectKey,
                    const std::vector<NamedReference>& bindings);

struct ModuleSpec {
    uint16_t id;
    uint8_t version;
    Bytes data;  // its BIOP messages, uncompressed
    bool compressed = false;
};

Bytes serverInitiateSection(const CarouselIds& ids, const Reference& gateway);
Bytes infoIndicationSection(const CarouselIds& ids, const std::vector<ModuleSpec>& modules);
// The module as carried (compressed when asked) in blocks of ids.blockSize.
std::vector<Bytes> dataBlockSections(const CarouselIds& ids, const ModuleSpec& module);

struct CarouselFile {
    std::string path;  // below the service gateway: "index.html", "data/list.txt"
    std::string content;
};

// A stream event object: its events by name and id, carried as stream descriptors on the
// elementary stream of the association tag.
struct CarouselStreamEvent {
    std::string path;
    std::vector<std::pair<std::string, uint16_t>> events;
    uint16_t associationTag = 0;
};
Bytes biopStreamEvent(const std::string& objectKey, const CarouselStreamEvent& streamEvent);

// A stream descriptors section (table 0x3D) with one stream event descriptor: the event's
// occurrence, to be acted on at once; a new version is a new occurrence.
Bytes streamEventSection(uint16_t eventId, uint8_t version, const std::string& privateData);

// The whole carousel: the service gateway, every directory and every stream event object in
// module 1, each file in a module of its own from 2 on, the files named in compressed in zlib-compressed modules.
// Sections in playout order: DSI, DII, then every module's blocks.
std::vector<Bytes> writeObjectCarousel(const std::vector<CarouselFile>& files, const CarouselIds& ids,
                                       const std::set<std::string>& compressed,
                                       const std::vector<CarouselStreamEvent>& streamEvents = {});

}  // namespace carousel

#endif
