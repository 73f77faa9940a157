// make-sample: builds the bundled sample transport stream from its readable description.
//   make-sample DESCRIPTION OUTPUT.ts

#include <cstdio>
#include <fstream>

#include "SampleDescription.h"
#include "SampleWriter.h"
#include "TsWriter.h"

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: make-sample DESCRIPTION OUTPUT.ts\n");
        return 2;
    }
    SampleDescription sample;
    std::vector<PlayedSection> sections;
    std::string error;
    if (!parseDescription(argv[1], sample, error) || !writeSample(sample, sections, error)) {
        std::fprintf(stderr, "make-sample: %s\n", error.c_str());
        return 2;
    }
    TsWriter ts;
    for (const PlayedSection& section : sections)
        ts.writeSection(section.first, section.second);
    std::ofstream out(argv[2], std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(ts.bytes().data()), std::streamsize(ts.bytes().size()));
    if (!out) {
        std::fprintf(stderr, "make-sample: cannot write %s\n", argv[2]);
        return 2;
    }
    return 0;
}
