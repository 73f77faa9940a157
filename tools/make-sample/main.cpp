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
    SampleStream stream;
    std::string error;
    if (!parseDescription(argv[1], sample, error) || !writeSample(sample, stream, error)) {
        std::fprintf(stderr, "make-sample: %s\n", error.c_str());
        return 2;
    }
    // The first round of tables, then the audio and video, then the other rounds, so that a
    // receiver knows the services before their pictures come.
    const size_t firstRound = stream.units.size() / size_t(sample.repeat);
    TsWriter ts;
    for (size_t i = 0; i < stream.units.size(); ++i) {
        if (i == firstRound)
            for (const tesmo_test::Bytes& packet : stream.avPackets)
                ts.writePacket(packet);
        const PlayedUnit& unit = stream.units[i];
        if (unit.isPes)
            ts.writePes(unit.pid, unit.bytes);
        else
            ts.writeSection(unit.pid, unit.bytes);
    }
    if (firstRound == stream.units.size())
        for (const tesmo_test::Bytes& packet : stream.avPackets)
            ts.writePacket(packet);
    std::ofstream out(argv[2], std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(ts.bytes().data()), std::streamsize(ts.bytes().size()));
    out.close();
    if (!out) {
        std::fprintf(stderr, "make-sample: cannot write %s\n", argv[2]);
        return 2;
    }
    return 0;
}
