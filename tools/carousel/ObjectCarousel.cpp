#include "ObjectCarousel.h"

#include <zlib.h>

#include <algorithm>

namespace carousel {

namespace {

// Modules of real carousels stay far below this; a DII that claims more is not believed.
const uint32_t LARGEST_MODULE = 16 * 1024 * 1024;
const size_t MOST_BLOCKS = 65536;  // block numbers have 16 bits
const size_t MOST_EARLY_BLOCKS = 4096;

std::string moduleName(uint16_t id, uint8_t version)
{
    return "module " + std::to_string(id) + " v" + std::to_string(version);
}

// What a name must be to become a path segment: not empty, not a dot segment, no slash and
// no NUL.
bool isFileName(const std::string& name)
{
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos &&
           name.find('\0') == std::string::npos;
}

// A name as the listing shows it, its NUL bytes escaped.
std::string printable(const std::string& name)
{
    std::string out;
    for (char c : name)
        out += c == '\0' ? std::string("\\0") : std::string(1, c);
    return out.empty() ? "\"\"" : out;
}

std::string kindName(const std::string& kind)
{
    if (kind == "srg")
        return "service gateway";
    if (kind == "dir")
        return "directory";
    if (kind == "fil")
        return "file";
    if (kind == "str")
        return "stream";
    if (kind == "ste")
        return "stream event";
    return "object '" + kind + "'";
}

bool inflate(const std::string& packed, uint32_t originalSize, std::string& out)
{
    out.assign(originalSize, '\0');
    uLongf length = originalSize;
    const int result = uncompress(reinterpret_cast<Bytef*>(&out[0]), &length,
                                  reinterpret_cast<const Bytef*>(packed.data()), uLong(packed.size()));
    out.resize(length);
    return result == Z_OK && length == originalSize;
}

}  // namespace

std::string ObjectCarousel::addSection(const uint8_t* section, size_t size)
{
    DsmccMessage message;
    std::string error;
    if (!parseDsmccSection(section, size, message, error))
        return "carousel: " + error;
    switch (message.kind) {
    case DsmccMessage::SERVER_INITIATE:
        if (gateway)
            return "";
        gateway = message.gateway;
        return "carousel: service gateway in module " + std::to_string(gateway->moduleId);
    case DsmccMessage::INFO_INDICATION:
        return addInfo(message);
    case DsmccMessage::DATA_BLOCK:
        return addBlock(message);
    case DsmccMessage::NONE:
        break;
    }
    return "";
}

std::string ObjectCarousel::addInfo(const DsmccMessage& message)
{
    std::string said;
    for (const ModuleInfo& info : message.modules) {
        auto known = modules.find(info.id);
        if (known != modules.end() && known->second.info.version == info.version)
            continue;
        if (known != modules.end()) {
            said += (said.empty() ? "" : "; ") + std::string("carousel: ") + moduleName(info.id, info.version) +
                    " replaces v" + std::to_string(known->second.info.version);
            held -= known->second.held;
        }
        Module& module = modules[info.id] = Module();
        module.info = info;
        module.blockSize = message.blockSize;
        module.blockCount =
            message.blockSize == 0 ? 0 : (size_t(info.size) + message.blockSize - 1) / message.blockSize;
        if (info.size > LARGEST_MODULE || (info.compressed && info.originalSize > LARGEST_MODULE) ||
            (info.size > 0 && message.blockSize == 0) || module.blockCount > MOST_BLOCKS) {
            module.problem = "its announced size cannot be believed";
            continue;
        }
        if (module.blockCount == 0)
            completeModule(module);
    }
    std::vector<DsmccMessage> waiting;
    waiting.swap(early);
    for (const DsmccMessage& block : waiting) {
        const std::string line = addBlock(block);
        if (!line.empty())
            said += (said.empty() ? "" : "; ") + line;
    }
    return said;
}

std::string ObjectCarousel::addBlock(const DsmccMessage& message)
{
    auto found = modules.find(message.moduleId);
    if (found == modules.end()) {
        if (early.size() < MOST_EARLY_BLOCKS)
            early.push_back(message);
        return "";
    }
    if (found->second.info.version != message.moduleVersion)
        return "";  // another version of the module
    Module& module = found->second;
    if (module.complete || !module.problem.empty() || message.blockNumber >= module.blockCount ||
        module.blocks.count(message.blockNumber))
        return "";
    const bool last = message.blockNumber + 1u == module.blockCount;
    const size_t expected = last ? module.info.size - size_t(module.blockSize) * message.blockNumber : module.blockSize;
    if (message.blockData.size() != expected)
        return "carousel: " + moduleName(module.info.id, module.info.version) + " block " +
               std::to_string(message.blockNumber) + " has " + std::to_string(message.blockData.size()) +
               " bytes, not " + std::to_string(expected);
    module.blocks[message.blockNumber] = message.blockData;
    return module.blocks.size() == module.blockCount ? completeModule(module) : "";
}

std::string ObjectCarousel::completeModule(Module& module)
{
    module.complete = true;
    std::string data;
    for (const auto& block : module.blocks)
        data += block.second;
    module.blocks.clear();
    // Checked before any memory is taken: what the module will hold once inflated.
    const size_t size = module.info.compressed ? module.info.originalSize : data.size();
    if (size > budget - held) {
        const std::string limit =
            budget >= (1u << 20) ? std::to_string(budget >> 20) + " MiB" : std::to_string(budget) + " bytes";
        module.problem = "over the carousel's memory budget of " + limit + ": not kept";
        return "carousel: " + moduleName(module.info.id, module.info.version) + ": " + module.problem;
    }
    module.held = size;
    held += size;
    if (module.info.compressed) {
        std::string inflated;
        if (!inflate(data, module.info.originalSize, inflated)) {
            module.problem = "its zlib data does not inflate";
            return "carousel: " + moduleName(module.info.id, module.info.version) + ": " + module.problem;
        }
        data.swap(inflated);
    }
    std::string error;
    if (!parseBiopModule(data, module.objects, error))
        module.problem = error;
    return "carousel: " + moduleName(module.info.id, module.info.version) + " complete, " +
           std::to_string(module.objects.size()) + " object(s)" + (error.empty() ? "" : "; " + error);
}

std::string ObjectCarousel::missingBlocks(const Module& module)
{
    std::string ranges;
    for (size_t i = 0; i < module.blockCount;) {
        if (module.blocks.count(uint16_t(i))) {
            ++i;
            continue;
        }
        size_t last = i;
        while (last + 1 < module.blockCount && !module.blocks.count(uint16_t(last + 1)))
            ++last;
        ranges += (ranges.empty() ? "" : ", ") + std::to_string(i) + (last > i ? "-" + std::to_string(last) : "");
        i = last + 1;
    }
    return "incomplete: " + std::to_string(module.blocks.size()) + " of " + std::to_string(module.blockCount) +
           " blocks, missing " + ranges;
}

const BiopObject* ObjectCarousel::resolve(const ObjectRef& ref, std::string& problem) const
{
    auto found = modules.find(ref.moduleId);
    if (found == modules.end()) {
        problem = "module " + std::to_string(ref.moduleId) + " is not in the DII";
        return nullptr;
    }
    const Module& module = found->second;
    if (!module.complete) {
        problem = module.problem.empty() ? missingBlocks(module) : module.problem;
        return nullptr;
    }
    for (const BiopObject& object : module.objects)
        if (object.objectKey == ref.objectKey)
            return &object;
    problem = module.problem.empty() ? "not in its module" : module.problem;
    return nullptr;
}

std::vector<ObjectCarousel::ModuleStatus> ObjectCarousel::moduleStatus() const
{
    std::vector<ModuleStatus> out;
    for (const auto& entry : modules) {
        const Module& m = entry.second;
        const std::string problem = m.problem.empty() && !m.complete ? missingBlocks(m) : m.problem;
        out.push_back({m.info.id, m.info.version, m.info.size, m.info.compressed, m.blockCount, problem});
    }
    return out;
}

// Each object once, whatever the graph of directories: one bound under a second name (a
// shared directory, or a loop) is listed where it was met first, and the second name says
// so. No recursion a broadcast could drive, and no path deeper than MAX_DEPTH, so the work
// and the text grow with the objects, not with the paths through them.
std::vector<ObjectCarousel::Entry> ObjectCarousel::list() const
{
    struct Pending {
        ObjectRef ref;
        std::string path;
        size_t depth;
    };
    std::vector<Entry> out;
    std::map<std::pair<uint16_t, std::string>, std::string> listedAt;
    std::vector<Pending> pending;
    if (gateway)
        pending.push_back({*gateway, "/", 0});
    while (!pending.empty()) {
        const Pending next = std::move(pending.back());
        pending.pop_back();
        Entry entry;
        entry.path = next.path;
        entry.kind = kindName(next.ref.kind);
        entry.module = next.ref.moduleId;
        auto module = modules.find(next.ref.moduleId);
        if (module != modules.end())
            entry.version = module->second.info.version;
        const BiopObject* object = resolve(next.ref, entry.problem);
        if (object) {
            auto first = listedAt.emplace(std::make_pair(next.ref.moduleId, next.ref.objectKey), next.path);
            if (!first.second) {
                const std::string& at = first.first->second;
                entry.problem = next.path.compare(0, at.size() + 1, at + "/") == 0 || at == "/"
                                    ? "a directory loop: it contains itself"
                                    : "listed already as " + at;
                object = nullptr;
            }
        }
        if (object)
            entry.size = object->content.size();
        if (object && !object->bindings.empty() && next.depth >= MAX_DEPTH) {
            entry.problem = "deeper than " + std::to_string(MAX_DEPTH) + " levels: not followed";
            object = nullptr;
        }
        out.push_back(entry);
        if (!object)
            continue;
        std::vector<Binding> bindings = object->bindings;
        std::sort(bindings.begin(), bindings.end(), [](const Binding& a, const Binding& b) { return a.name > b.name; });
        const std::string prefix = next.path == "/" ? "/" : next.path + "/";
        for (const Binding& binding : bindings) {
            if (isFileName(binding.name)) {
                pending.push_back({binding.target, prefix + binding.name, next.depth + 1});
                continue;
            }
            Entry refused;
            refused.path = prefix + printable(binding.name);
            refused.kind = kindName(binding.target.kind);
            refused.module = binding.target.moduleId;
            refused.problem = "a name no file may have: not followed";
            out.push_back(refused);
        }
    }
    return out;
}

ObjectCarousel::Lookup ObjectCarousel::file(const std::string& path, std::string& content) const
{
    const BiopObject* object = nullptr;
    const Lookup lookup = find(path, "fil", object);
    if (lookup == Lookup::FOUND)
        content = object->content;
    return lookup;
}

ObjectCarousel::Lookup ObjectCarousel::streamEvent(const std::string& path, StreamEventInfo& events) const
{
    const BiopObject* object = nullptr;
    const Lookup lookup = find(path, "ste", object);
    if (lookup == Lookup::FOUND)
        events = object->events;
    return lookup;
}

ObjectCarousel::Lookup ObjectCarousel::find(const std::string& path, const std::string& kind,
                                            const BiopObject*& found) const
{
    if (!gateway)
        return Lookup::PENDING;
    ObjectRef ref = *gateway;
    size_t start = 0;
    for (int depth = 0; depth < 64; ++depth) {
        std::string problem;
        const BiopObject* object = resolve(ref, problem);
        if (!object) {
            auto module = modules.find(ref.moduleId);
            const bool coming = module != modules.end() && !module->second.complete;
            return coming ? Lookup::PENDING : Lookup::MISSING;
        }
        if (start >= path.size()) {
            if (object->kind != kind)
                return Lookup::MISSING;
            found = object;
            return Lookup::FOUND;
        }
        const size_t slash = path.find('/', start);
        const std::string name = path.substr(start, slash == std::string::npos ? std::string::npos : slash - start);
        start = slash == std::string::npos ? path.size() : slash + 1;
        auto next = std::find_if(object->bindings.begin(), object->bindings.end(),
                                 [&name](const Binding& b) { return b.name == name; });
        if (next == object->bindings.end())
            return Lookup::MISSING;
        ref = next->target;
    }
    return Lookup::MISSING;  // deeper than any real tree: a loop
}

}  // namespace carousel
