#ifndef TESMO_HBBTV_CAROUSEL_BIOPOBJECT_H
#define TESMO_HBBTV_CAROUSEL_BIOPOBJECT_H

// BIOP messages: the objects that the modules of an object carousel carry (service gateway,
// directories, files, streams, stream events) and the references between them.

#include <cstdint>
#include <string>
#include <vector>

#include "ByteReader.h"

namespace carousel {

// The tags of an IOR's BIOP profile and of its components.
const uint32_t TAG_BIOP = 0x49534F06;
const uint32_t TAG_OBJECT_LOCATION = 0x49534F50;
const uint32_t TAG_CONN_BINDER = 0x49534F40;

// Where an object lives: an interoperable object reference with a BIOP profile.
struct ObjectRef {
    std::string kind;  // "srg", "dir", "fil", "str", "ste"
    uint32_t carouselId = 0;
    uint16_t moduleId = 0;
    std::string objectKey;
    uint16_t associationTag = 0;
};

struct Binding {
    std::string name;
    ObjectRef target;
};

// A stream event object's events, and the elementary streams (by association tag) whose
// stream descriptors carry them.
struct StreamEventInfo {
    std::vector<std::string> names;
    std::vector<uint16_t> ids;  // in the order of the names
    std::vector<uint16_t> associationTags;
};

// The tap use of a stream event object's tap to the stream of its events.
const uint16_t STR_EVENT_USE = 0x000D;

struct BiopObject {
    std::string kind;
    std::string objectKey;
    std::vector<Binding> bindings;  // service gateway, directory
    std::string content;  // file
    StreamEventInfo events;  // stream event
};

// Reads an IOR; false when it holds no BIOP profile with an object location.
bool readObjectRef(ByteReader& in, ObjectRef& ref);

// Reads every BIOP message of a complete (and inflated) module. False with a reason at the
// first message that does not hold; the objects before it are kept.
bool parseBiopModule(const std::string& module, std::vector<BiopObject>& objects, std::string& error);

}  // namespace carousel

#endif
