#ifndef TESMO_TV_BROADCAST_H
#define TESMO_TV_BROADCAST_H

#include <map>
#include <string>
#include <vector>

#include "ChannelList.h"
#include "Options.h"
#include "Script.h"
#include "ServiceScanner.h"
#include "TransportStream.h"
#include "TvPlatform.h"

// What the platform plays: the chosen service's AIT and carousel sections from the capture
// (the bundled sample without one), and the scenario. Every service of the capture is in the
// channel list, and another can be tuned to.
class Broadcast {
public:
    static const int PLAY = -1;

    // Reads the command line, the capture and the script, printing the services unless in
    // JSON; answers --help and the options that only look at the capture (--dump-ait,
    // --carousel-list, --carousel-extract). PLAY to go on, else the exit status.
    int prepare(int argc, char** argv, Options& options);

    std::vector<TimedSection> aitSections;
    std::vector<TimedSection> carouselSections;
    std::map<uint8_t, std::vector<TimedSection>> eventSections;  // stream descriptors by component tag
    std::vector<TimedSection> eitSections;  // the service's present/following
    TvPlatform::ServiceIds ids{};
    std::string serviceName;
    std::vector<ScriptAction> script;
    const Channel* channel = nullptr;  // the one played first, in ChannelList

    // The sections of another service of the capture, as a tuner delivers them.
    TvPlatform::Tuned tune(const Channel& channel) const;
    // The first service's, as prepared (once: they move out).
    TvPlatform::Tuned takeFirst();

    // The capture and its services (none without a capture).
    const TransportStream& capture() const { return stream; }
    const std::vector<Service>& allServices() const { return services; }

private:
    int readScript(const Options& options);
    TvPlatform::Tuned sectionsOf(const Service& service) const;
    std::map<uint8_t, std::vector<TimedSection>> eventSectionsOf(const Service& service) const;
    std::vector<TimedSection> eitSectionsOf(const Service& service) const;

    TransportStream stream;
    std::vector<Service> services;
    const Options* options = nullptr;
};

#endif
