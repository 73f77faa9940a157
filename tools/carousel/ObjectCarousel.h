#ifndef TESMO_HBBTV_CAROUSEL_OBJECTCAROUSEL_H
#define TESMO_HBBTV_CAROUSEL_OBJECTCAROUSEL_H

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "BiopObject.h"
#include "DsmccMessage.h"

namespace carousel {

// An object carousel as a receiver builds it from the sections of its streams: modules
// announced by the DownloadInfoIndication and filled block by block (a new module version
// starts the module again), inflated when compressed, their BIOP objects bound into a tree
// of names from the service gateway that the DownloadServerInitiate names.
class ObjectCarousel {
public:
    // What a TV gives one carousel's modules, inflated, by default.
    static constexpr size_t DEFAULT_BUDGET = 32u << 20;

    // Modules past the budget (the sizes they inflate to, all told) are described, not kept.
    explicit ObjectCarousel(size_t budgetBytes = DEFAULT_BUDGET) : budget(budgetBytes) {}
    // What the section changed, for a timeline ("" when it changed nothing worth a line).
    std::string addSection(const uint8_t* section, size_t size);

    struct Entry {
        std::string path;  // "/" for the service gateway
        std::string kind;  // service gateway, directory, file, stream, stream event
        size_t size = 0;  // of a file's content
        uint16_t module = 0;
        uint8_t version = 0;
        std::string problem;  // why the object cannot be read, if it cannot
    };
    // Directories deeper than this are not followed: no real carousel comes near it.
    static constexpr size_t MAX_DEPTH = 64;
    // The tree as far as it can be read now, in name order.
    std::vector<Entry> list() const;

    enum class Lookup { FOUND, PENDING, MISSING };
    // A file by its path below the service gateway ("index.html", "data/list.txt").
    // PENDING while a module on the way is announced but not complete.
    Lookup file(const std::string& path, std::string& content) const;
    // A stream event object by its path, the same way.
    Lookup streamEvent(const std::string& path, StreamEventInfo& events) const;

    bool hasGateway() const { return gateway.has_value(); }

    struct ModuleStatus {
        uint16_t id;
        uint8_t version;
        uint32_t size;  // as carried
        bool compressed;
        size_t blocks;
        std::string problem;  // what is missing or wrong; empty once complete
    };
    // Every module the DII announced, and the blocks that came before any DII did.
    std::vector<ModuleStatus> moduleStatus() const;
    size_t unannouncedBlocks() const { return early.size(); }

private:
    struct Module {
        ModuleInfo info;
        size_t held = 0;  // counted against the budget
        uint16_t blockSize = 0;
        size_t blockCount = 0;
        std::map<uint16_t, std::string> blocks;  // those received, until the module completes
        bool complete = false;
        std::vector<BiopObject> objects;
        std::string problem;
    };

    std::string addInfo(const DsmccMessage& message);
    std::string addBlock(const DsmccMessage& message);
    std::string completeModule(Module& module);
    // The object of a kind at a path; PENDING and MISSING as for file().
    Lookup find(const std::string& path, const std::string& kind, const BiopObject*& found) const;
    // The object a reference names, or null with the reason in problem.
    const BiopObject* resolve(const ObjectRef& ref, std::string& problem) const;
    static std::string missingBlocks(const Module& module);

    std::map<uint16_t, Module> modules;
    size_t budget;
    size_t held = 0;  // the complete modules' bytes
    // Blocks that came before the DII that announces their module, kept (up to a bound) to be
    // used when it comes: a receiver tuning in mid-cycle sees them first.
    std::vector<DsmccMessage> early;
    std::optional<ObjectRef> gateway;
};

}  // namespace carousel

#endif
