#ifndef TESMO_HBBTV_SI_ELEMENTARYSTREAM_H
#define TESMO_HBBTV_SI_ELEMENTARYSTREAM_H

#include <cstdint>
#include <memory>

#include "si/ApplicationSignallingDescriptor.h"
#include "si/AssociationTagDescriptor.h"
#include "si/CarouselIdentifierDescriptor.h"
#include "si/DeferredAssociationTagsDescriptor.h"
#include "si/SectionReader.h"
#include "si/StreamIdentifierDescriptor.h"

namespace TesmoHbbTV {

// One entry of a PMT's elementary stream loop, with the descriptors that locate object
// carousels and application signalling.
class ElementaryStream {
public:
    // entry is positioned at stream_type and reaches to the section end.
    explicit ElementaryStream(SectionReader entry);

    uint8_t getStreamType() const { return stream_type; }
    uint16_t getElementaryPID() const { return elementary_PID; }
    const StreamIdentifierDescriptor* getStreamIdentifierDescriptor() const { return streamIdentifier.get(); }
    const AssociationTagDescriptor* getAssociationTagDescriptor() const { return associationTag.get(); }
    const DeferredAssociationTagsDescriptor* getDeferredAssociationTagsDescriptor() const
    {
        return deferredAssociationTags.get();
    }
    const CarouselIdentifierDescriptor* getCarouselIdentifierDescriptor() const { return carouselIdentifier.get(); }
    const ApplicationSignallingDescriptor* getApplicationSignallingDescriptor() const
    {
        return applicationSignalling.get();
    }

private:
    void keepDescriptor(SectionReader descriptor);

    uint8_t stream_type = 0;
    uint16_t elementary_PID = 0;
    std::unique_ptr<StreamIdentifierDescriptor> streamIdentifier;
    std::unique_ptr<AssociationTagDescriptor> associationTag;
    std::unique_ptr<DeferredAssociationTagsDescriptor> deferredAssociationTags;
    std::unique_ptr<CarouselIdentifierDescriptor> carouselIdentifier;
    std::unique_ptr<ApplicationSignallingDescriptor> applicationSignalling;
};

}  // namespace TesmoHbbTV

#endif
