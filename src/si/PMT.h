#ifndef TESMO_HBBTV_SI_PMT_H
#define TESMO_HBBTV_SI_PMT_H

#include <list>
#include <memory>
#include <vector>

#include "si/ElementaryStream.h"

namespace TesmoHbbTV {

// A program map section's elementary streams, in section order.
class PMT {
public:
    // section holds exactly 3 + section_length bytes; it is parsed at once.
    explicit PMT(const unsigned char* section);

    ElementaryStream* getElementaryStream(unsigned char component_tag) const;
    // Appends every stream with that component tag; true when out is not empty afterwards,
    // even if it was not empty before.
    bool getElementaryStreams(unsigned char component_tag, std::list<ElementaryStream*>& out) const;
    ElementaryStream* getElementaryStreamByStreamType(unsigned char stream_type) const;

    const std::vector<std::unique_ptr<ElementaryStream>>& getStreams() const { return streams; }

private:
    std::vector<std::unique_ptr<ElementaryStream>> streams;
};

}  // namespace TesmoHbbTV

#endif
