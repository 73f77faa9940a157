#include "si/ElementaryStream.h"

#include "support/LogEntry.h"

namespace TesmoHbbTV {

ElementaryStream::ElementaryStream(SectionReader entry)
{
    stream_type = entry.u8();
    elementary_PID = entry.bits16(3, 15);
    // Unreachable with 13 bits, and kept so for receivers that log it.
    if (elementary_PID >= 0x2000) {
        LogEntry(LOG_LEVEL_ERR, "ElementaryStream") << "Elementary PID > 0x1fff!";
        return;
    }
    const size_t infoLength = entry.bits16(4, 15);
    for (size_t position = 0; position < infoLength && entry.ok();) {
        const SectionReader descriptor = entry.at(position);
        const size_t length = descriptor.peek(1);
        if (!descriptor.canRead(2 + length))
            return;
        keepDescriptor(descriptor);
        position += 2 + length;
    }
}

void ElementaryStream::keepDescriptor(SectionReader descriptor)
{
    const uint8_t tag = descriptor.peek(0);
    switch (tag) {
    case CarouselIdentifierDescriptor::TAG: {
        const uint32_t id = descriptor.at(2).u32();
        if (descriptor.canRead(6))
            carouselIdentifier = std::make_unique<CarouselIdentifierDescriptor>(id);
        break;
    }
    case AssociationTagDescriptor::TAG:
        associationTag = std::make_unique<AssociationTagDescriptor>();
        break;
    case DeferredAssociationTagsDescriptor::TAG:
        deferredAssociationTags = std::make_unique<DeferredAssociationTagsDescriptor>();
        break;
    case StreamIdentifierDescriptor::TAG:
        if (descriptor.canRead(3))
            streamIdentifier = std::make_unique<StreamIdentifierDescriptor>(descriptor.peek(2));
        break;
    case ApplicationSignallingDescriptor::TAG:
        applicationSignalling = std::make_unique<ApplicationSignallingDescriptor>();
        break;
    default:
        break;
    }
}

}  // namespace TesmoHbbTV
