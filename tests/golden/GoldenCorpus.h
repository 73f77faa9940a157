#ifndef TESMO_HBBTV_TESTS_GOLDENCORPUS_H
#define TESMO_HBBTV_TESTS_GOLDENCORPUS_H

// The inputs whose results the golden files hold, by group: "sections" and "captures" (the
// real data beside the checkout), "fuzz" (the committed fuzz corpora) and "generated" (tables
// made here, most of them with a fault).

#include <string>
#include <vector>

#include "SectionBuilder.h"
#include "XmlAitInput.h"

namespace tesmo_test {

struct GoldenInput {
    enum Kind { SECTIONS, XML_AIT, BOUNDARY_DESCRIPTOR };
    std::string name;
    Kind kind = SECTIONS;
    std::vector<Bytes> sections;  // SECTIONS: in order; BOUNDARY_DESCRIPTOR: the one descriptor
    XmlAitInput xml;
};

class GoldenCorpus {
public:
    static const std::vector<std::string>& groups();
    // Empty when the group's data is not here (no ../shared/data, or no capture reader).
    static std::vector<GoldenInput> inputs(const std::string& group);

private:
    static std::vector<GoldenInput> sections();
    static std::vector<GoldenInput> captures();
    static std::vector<GoldenInput> fuzz();
    static std::vector<GoldenInput> generated();
    static void addFaultyTables(std::vector<GoldenInput>& inputs);
    static void addTruncationsAndMutations(std::vector<GoldenInput>& inputs);
    static void addXmlRecords(std::vector<GoldenInput>& inputs);
};

// The whole canonical text of a group: each input's parse results, then its activation
// through the C interface.
std::string goldenText(const std::string& group);

}  // namespace tesmo_test

#endif
