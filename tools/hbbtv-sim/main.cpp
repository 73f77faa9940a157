// hbbtv-sim: plays a broadcast capture through libtesmo_hbbtv, acting as the TV platform
// and a browser core without an engine, and shows what the TV would do.

#include <cstdio>

#include "Broadcast.h"
#include "Options.h"
#include "RequestPolicy.h"
#include "SimulatedCore.h"
#include "Timeline.h"
#include "TvPlatform.h"

int main(int argc, char** argv)
{
    Options options;
    Broadcast broadcast;
    const int status = broadcast.prepare(argc, argv, options);
    if (status != Broadcast::PLAY)
        return status;

    Timeline timeline(stdout, options.json);
    SimulatedCore core;
    const RequestPolicy policy(options.refusedRequests);
    TvPlatform& tv = TvPlatform::get();
    tv.configure(options, timeline, core, policy);
    tv.start(broadcast.takeFirst(), broadcast.ids, std::move(broadcast.script));
    tv.setChannels(broadcast.channel, [&broadcast](const Channel& to) { return broadcast.tune(to); });
    while (!tv.idle())
        tv.step();
    tv.stop();
    return 0;
}
