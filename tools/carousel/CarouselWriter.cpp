#include "CarouselWriter.h"

#include "BiopObject.h"
#include "DsmccMessage.h"

#include <zlib.h>

#include <algorithm>
#include <map>

namespace carousel {

namespace {

const uint16_t BIOP_DELIVERY_PARA_USE = 0x0016;
const uint16_t BIOP_OBJECT_USE = 0x0017;
const uint32_t DII_TRANSACTION = 0x80000002;
const uint32_t DSI_TRANSACTION = 0x80000000;

void put8(Bytes& out, uint32_t v)
{
    out.push_back(uint8_t(v));
}
void put16(Bytes& out, uint32_t v)
{
    out.insert(out.end(), {uint8_t(v >> 8), uint8_t(v)});
}
void put32(Bytes& out, uint32_t v)
{
    out.insert(out.end(), {uint8_t(v >> 24), uint8_t(v >> 16), uint8_t(v >> 8), uint8_t(v)});
}
void putText(Bytes& out, const std::string& text)
{
    out.insert(out.end(), text.begin(), text.end());
}
void append(Bytes& out, const Bytes& more)
{
    out.insert(out.end(), more.begin(), more.end());
}

std::string zeroEnded(const std::string& text)
{
    return text + '\0';
}

Bytes ior(const CarouselIds& ids, const Reference& ref)
{
    Bytes location;
    put32(location, ids.carouselId);
    put16(location, ref.moduleId);
    put16(location, 0x0100);  // version 1.0
    put8(location, uint32_t(ref.objectKey.size()));
    putText(location, ref.objectKey);
    Bytes binder;
    put8(binder, 1);  // one tap
    put16(binder, 0);
    put16(binder, BIOP_DELIVERY_PARA_USE);
    put16(binder, ids.associationTag);
    put8(binder, 10);
    put16(binder, 0x0001);
    put32(binder, DII_TRANSACTION);
    put32(binder, 0xFFFFFFFF);

    Bytes profile{0x00, 2};  // byte order, two components
    put32(profile, TAG_OBJECT_LOCATION);
    put8(profile, uint32_t(location.size()));
    append(profile, location);
    put32(profile, TAG_CONN_BINDER);
    put8(profile, uint32_t(binder.size()));
    append(profile, binder);

    Bytes out;
    put32(out, 4);
    putText(out, zeroEnded(ref.kind));
    put32(out, 1);
    put32(out, TAG_BIOP);
    put32(out, uint32_t(profile.size()));
    append(out, profile);
    return out;
}

Bytes biopMessage(const std::string& kind, const std::string& objectKey, const Bytes& objectInfo, const Bytes& body)
{
    Bytes message;
    put8(message, uint32_t(objectKey.size()));
    putText(message, objectKey);
    put32(message, 4);
    putText(message, zeroEnded(kind));
    put16(message, uint32_t(objectInfo.size()));
    append(message, objectInfo);
    put8(message, 0);  // no service contexts
    put32(message, uint32_t(body.size()));
    append(message, body);

    Bytes out{'B', 'I', 'O', 'P', 1, 0, 0, 0};
    put32(out, uint32_t(message.size()));
    append(out, message);
    return out;
}

Bytes contentSize(uint32_t size)
{
    Bytes info;
    put32(info, 0);
    put32(info, size);
    return info;
}

// The section's length (CRC included) in its header, and the CRC after it.
Bytes withLengthAndCrc(Bytes section)
{
    const size_t length = section.size() - 3 + 4;
    section[1] = uint8_t(0xB0 | length >> 8);
    section[2] = uint8_t(length);
    put32(section, tesmo_test::crc32Mpeg(section.data(), section.size()));
    return section;
}

// A DSM-CC section around a message of the given id.
Bytes dsmccSection(uint8_t tableId, uint16_t extension, uint8_t version, uint8_t number, uint8_t last,
                   uint16_t messageId, uint32_t transaction, const Bytes& payload)
{
    Bytes section{tableId, 0, 0};
    put16(section, extension);
    put8(section, 0xC1 | uint32_t(version & 0x1F) << 1);
    put8(section, number);
    put8(section, last);
    section.insert(section.end(), {PROTOCOL_DSMCC, 0x03});  // a download message
    put16(section, messageId);
    put32(section, transaction);
    section.insert(section.end(), {0xFF, 0x00});
    put16(section, uint32_t(payload.size()));
    append(section, payload);
    return withLengthAndCrc(section);
}

Bytes carried(const ModuleSpec& module)
{
    if (!module.compressed)
        return module.data;
    uLongf size = compressBound(uLong(module.data.size()));
    Bytes packed(size);
    compress2(packed.data(), &size, module.data.data(), uLong(module.data.size()), Z_BEST_COMPRESSION);
    packed.resize(size);
    return packed;
}

}  // namespace

Bytes biopFile(const std::string& objectKey, const std::string& content)
{
    Bytes body;
    put32(body, uint32_t(content.size()));
    putText(body, content);
    return biopMessage("fil", objectKey, contentSize(uint32_t(content.size())), body);
}

Bytes biopDirectory(const CarouselIds& ids, const std::string& kind, const std::string& objectKey,
                    const std::vector<NamedReference>& bindings)
{
    Bytes body;
    put16(body, uint32_t(bindings.size()));
    for (const NamedReference& binding : bindings) {
        put8(body, 1);
        put8(body, uint32_t(binding.name.size() + 1));
        putText(body, zeroEnded(binding.name));
        put8(body, 4);
        putText(body, zeroEnded(binding.target.kind));
        put8(body, binding.target.kind == "dir" || binding.target.kind == "srg" ? 2 : 1);  // a context or an object
        append(body, ior(ids, binding.target));
        const Bytes info = binding.target.kind == "fil" ? contentSize(binding.fileSize) : Bytes();
        put16(body, uint32_t(info.size()));
        append(body, info);
    }
    return biopMessage(kind, objectKey, {}, body);
}

Bytes biopStreamEvent(const std::string& objectKey, const CarouselStreamEvent& streamEvent)
{
    Bytes info{0};  // no description
    info.insert(info.end(), {0, 0, 0, 0, 0, 0, 0, 0});  // no duration
    info.insert(info.end(), {0, 0, 1});  // no audio, no video, data
    put16(info, uint32_t(streamEvent.events.size()));
    for (const auto& event : streamEvent.events) {
        put8(info, uint32_t(event.first.size() + 1));
        putText(info, zeroEnded(event.first));
    }
    Bytes body{1};  // one tap: the stream of the events
    put16(body, 0);
    put16(body, STR_EVENT_USE);
    put16(body, streamEvent.associationTag);
    put8(body, 0);
    put8(body, uint32_t(streamEvent.events.size()));
    for (const auto& event : streamEvent.events)
        put16(body, event.second);
    return biopMessage("ste", objectKey, info, body);
}

Bytes streamEventSection(uint16_t eventId, uint8_t version, const std::string& privateData)
{
    Bytes descriptor{0x1A, 0};
    put16(descriptor, eventId);
    descriptor.insert(descriptor.end(), {0xFF, 0xFF, 0xFF, 0xFE, 0, 0, 0, 0});  // reserved, NPT 0: at once
    putText(descriptor, privateData);
    descriptor[1] = uint8_t(descriptor.size() - 2);
    Bytes section{0x3D, 0, 0};
    put16(section, eventId);
    put8(section, 0xC1 | uint32_t(version & 0x1F) << 1);
    section.insert(section.end(), {0, 0});
    append(section, descriptor);
    return withLengthAndCrc(section);
}

Bytes serverInitiateSection(const CarouselIds& ids, const Reference& gateway)
{
    Bytes gatewayInfo = ior(ids, gateway);
    gatewayInfo.insert(gatewayInfo.end(), {0, 0, 0, 0});  // no taps, no contexts, no user info
    Bytes payload(20, 0xFF);  // server id
    put16(payload, 0);  // compatibility descriptor
    put16(payload, uint32_t(gatewayInfo.size()));
    append(payload, gatewayInfo);
    return dsmccSection(TABLE_MESSAGES, 0x0000, 0, 0, 0, SERVER_INITIATE_ID, DSI_TRANSACTION, payload);
}

Bytes infoIndicationSection(const CarouselIds& ids, const std::vector<ModuleSpec>& modules)
{
    Bytes payload;
    put32(payload, ids.carouselId);
    put16(payload, ids.blockSize);
    payload.insert(payload.end(), {0, 0, 0, 0, 0, 0, 0, 0, 0, 0});  // window, ack, scenario
    put16(payload, 0);  // compatibility descriptor
    put16(payload, uint32_t(modules.size()));
    for (const ModuleSpec& module : modules) {
        Bytes info;
        put32(info, 5000000);  // module time-out, 5 s
        put32(info, 500000);  // block time-out, 0.5 s
        put32(info, 0);  // minimum block time
        put8(info, 1);
        put16(info, 0);
        put16(info, BIOP_OBJECT_USE);
        put16(info, ids.associationTag);
        put8(info, 0);
        Bytes user;
        if (module.compressed) {
            user.insert(user.end(), {COMPRESSED_MODULE_DESCRIPTOR, 5, 0x08});  // zlib
            put32(user, uint32_t(module.data.size()));
        }
        put8(info, uint32_t(user.size()));
        append(info, user);

        put16(payload, module.id);
        put32(payload, uint32_t(carried(module).size()));
        put8(payload, module.version);
        put8(payload, uint32_t(info.size()));
        append(payload, info);
    }
    put16(payload, 0);  // private data
    return dsmccSection(TABLE_MESSAGES, uint16_t(DII_TRANSACTION), ids.diiVersion, 0, 0, INFO_INDICATION_ID,
                        DII_TRANSACTION, payload);
}

std::vector<Bytes> dataBlockSections(const CarouselIds& ids, const ModuleSpec& module)
{
    const Bytes data = carried(module);
    const size_t count = (data.size() + ids.blockSize - 1) / ids.blockSize;
    std::vector<Bytes> sections;
    for (size_t block = 0; block < count; ++block) {
        Bytes payload;
        put16(payload, module.id);
        put8(payload, module.version);
        put8(payload, 0xFF);
        put16(payload, uint32_t(block));
        const size_t start = block * ids.blockSize;
        payload.insert(payload.end(), data.begin() + long(start),
                       data.begin() + long(std::min(data.size(), start + ids.blockSize)));
        sections.push_back(dsmccSection(TABLE_DATA, module.id, module.version, uint8_t(block), uint8_t(count - 1),
                                        DATA_BLOCK_ID, ids.carouselId, payload));
    }
    return sections;
}

std::vector<Bytes> writeObjectCarousel(const std::vector<CarouselFile>& files, const CarouselIds& ids,
                                       const std::set<std::string>& compressed,
                                       const std::vector<CarouselStreamEvent>& streamEvents)
{
    // Directories by path ("" is the service gateway), each with its bindings.
    std::map<std::string, std::vector<NamedReference>> directories{{"", {}}};
    std::map<std::string, Reference> directoryRefs{{"", {"srg", 1, std::string("\0\0\0\1", 4)}}};
    std::vector<ModuleSpec> modules{{1, 1, {}, false}};
    uint16_t nextModule = 2;
    uint32_t nextKey = 2;
    auto key = [&nextKey]() {
        const uint32_t k = nextKey++;
        return std::string{char(k >> 24), char(k >> 16), char(k >> 8), char(k)};
    };
    auto directoryOf = [&](const std::string& path) -> std::vector<NamedReference>& {
        std::string parent;
        for (size_t slash = path.find('/'); slash != std::string::npos; slash = path.find('/', slash + 1)) {
            const std::string dir = path.substr(0, slash);
            if (!directoryRefs.count(dir)) {
                directoryRefs[dir] = {"dir", 1, key()};
                directories[parent].push_back({dir.substr(parent.empty() ? 0 : parent.size() + 1), directoryRefs[dir]});
                directories[dir];
            }
            parent = dir;
        }
        return directories[parent];
    };
    for (const CarouselFile& file : files) {
        const Reference ref{"fil", nextModule++, key()};
        const size_t slash = file.path.rfind('/');
        directoryOf(file.path).push_back(
            {file.path.substr(slash == std::string::npos ? 0 : slash + 1), ref, uint32_t(file.content.size())});
        modules.push_back({ref.moduleId, 1, biopFile(ref.objectKey, file.content), compressed.count(file.path) > 0});
    }
    for (const CarouselStreamEvent& streamEvent : streamEvents) {
        const Reference ref{"ste", 1, key()};
        const size_t slash = streamEvent.path.rfind('/');
        directoryOf(streamEvent.path)
            .push_back({streamEvent.path.substr(slash == std::string::npos ? 0 : slash + 1), ref});
        append(modules[0].data, biopStreamEvent(ref.objectKey, streamEvent));
    }
    for (const auto& directory : directories) {
        const Reference& ref = directoryRefs[directory.first];
        append(modules[0].data, biopDirectory(ids, ref.kind, ref.objectKey, directory.second));
    }

    std::vector<Bytes> sections{serverInitiateSection(ids, directoryRefs[""]), infoIndicationSection(ids, modules)};
    for (const ModuleSpec& module : modules)
        for (Bytes& block : dataBlockSections(ids, module))
            sections.push_back(std::move(block));
    return sections;
}

}  // namespace carousel
