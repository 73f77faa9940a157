#include "si/PMT.h"

#include "si/BitReaders.h"

namespace TesmoHbbTV {

namespace {

const size_t STREAM_ENTRY_HEADER_SIZE = 5;

bool hasComponentTag(const ElementaryStream& stream, unsigned char tag)
{
    const StreamIdentifierDescriptor* identifier = stream.getStreamIdentifierDescriptor();
    return identifier && identifier->getComponentTag() == tag;
}

}  // namespace

PMT::PMT(const unsigned char* section)
{
    const size_t sectionLength = U16GetBits(section + 1, 4, 15);
    const SectionReader bytes(section, 3 + sectionLength);
    // The stream loop stops where the CRC begins. Only 10 bits of program_info_length are
    // taken: the standard keeps the two above them zero.
    const size_t end = sectionLength >= 1 ? sectionLength - 1 : 0;
    size_t position = 12 + size_t(bytes.at(10).bits16(6, 15));
    while (position < end) {
        const SectionReader entry = bytes.at(position);
        if (!entry.canRead(STREAM_ENTRY_HEADER_SIZE))
            return;
        streams.push_back(std::make_unique<ElementaryStream>(entry));
        position += STREAM_ENTRY_HEADER_SIZE + size_t(entry.at(3).bits16(4, 15));
    }
}

ElementaryStream* PMT::getElementaryStream(unsigned char component_tag) const
{
    for (const auto& stream : streams)
        if (hasComponentTag(*stream, component_tag))
            return stream.get();
    return nullptr;
}

bool PMT::getElementaryStreams(unsigned char component_tag, std::list<ElementaryStream*>& out) const
{
    for (const auto& stream : streams)
        if (hasComponentTag(*stream, component_tag))
            out.push_back(stream.get());
    return !out.empty();
}

ElementaryStream* PMT::getElementaryStreamByStreamType(unsigned char stream_type) const
{
    for (const auto& stream : streams)
        if (stream->getStreamType() == stream_type)
            return stream.get();
    return nullptr;
}

}  // namespace TesmoHbbTV
