#ifndef TESMO_TV_BROADCAST_H
#define TESMO_TV_BROADCAST_H

#include <string>
#include <vector>

#include "Options.h"
#include "Script.h"
#include "TransportStream.h"
#include "TvPlatform.h"

// What the platform plays: the chosen service's AIT and carousel sections from the capture
// (the bundled sample without one), and the scenario.
class Broadcast {
public:
    static const int PLAY = -1;

    // Reads the command line, the capture and the script, printing the services unless in
    // JSON; answers --help and the options that only look at the capture (--dump-ait,
    // --carousel-list, --carousel-extract). PLAY to go on, else the exit status.
    int prepare(int argc, char** argv, Options& options);

    std::vector<TimedSection> aitSections;
    std::vector<TimedSection> carouselSections;
    TvPlatform::ServiceIds ids{};
    std::string serviceName;
    std::vector<ScriptAction> script;

private:
    int readScript(const Options& options);
};

#endif
