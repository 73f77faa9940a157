// hbbtv-browser: plays a broadcast capture through libtesmo_hbbtv with WebKitGTK as the
// browser core. The library, the platform and the tick loop run on the GTK main thread;
// pages run in WebKit's web processes.

#include <glib-unix.h>

#include <csignal>
#include <cstdio>
#include <map>
#include <string>

#include "Broadcast.h"
#include "LibraryNumbers.h"
#include "BroadcastPicture.h"
#include "Options.h"
#include "RemoteKeys.h"
#include "RequestPolicy.h"
#include "Timeline.h"
#include "TickLoop.h"
#include "TvPlatform.h"
#include "TvScreen.h"
#include "WebKitCore.h"
#include "tesmo_hbbtv/bindings.h"

namespace {

WebKitCore* theCore = nullptr;

// The keyboard as a remote control.
void onKey(guint keyval)
{
    if (const RemoteKey* key = remoteKeyByKeyval(keyval))
        TvPlatform::get().pressKey(key->name, key->receiverCode);
}

// A sound server or a sound card to play the pages' audio to.
bool hasSoundOutput()
{
    const char* runtime = g_getenv("XDG_RUNTIME_DIR");
    return g_getenv("PULSE_SERVER") || g_file_test("/dev/snd", G_FILE_TEST_IS_DIR) ||
           (runtime && g_file_test((std::string(runtime) + "/pulse/native").c_str(), G_FILE_TEST_EXISTS));
}

}  // namespace

int main(int argc, char** argv)
{
    std::signal(SIGPIPE, SIG_IGN);  // a page that goes away closes its dvb: pipe
    Options options;
    options.product = "hbbtv-browser";
    Broadcast broadcast;
    const int status = broadcast.prepare(argc, argv, options);
    if (status != Broadcast::PLAY)
        return status;
    g_setenv("NO_AT_BRIDGE", "1", TRUE);  // a TV has no accessibility bus to wait for
    // Without one, media still plays, in time, to a sink that needs no sound card.
    if (!hasSoundOutput())
        g_setenv("GST_PLUGIN_FEATURE_RANK", "fakeaudiosink:MAX", FALSE);
    if (!gtk_init_check(&argc, &argv)) {
        std::fprintf(stderr, "hbbtv-browser: no display (run it under xvfb-run for no screen)\n");
        return 2;
    }

    Timeline timeline(stdout, options.json);
    GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
    // Interrupted, it ends as it ends on its own: the pages closed, its private files removed.
    for (int signal : {SIGINT, SIGTERM})
        g_unix_signal_add(
            signal,
            +[](gpointer mainLoop) {
                g_main_loop_quit(static_cast<GMainLoop*>(mainLoop));
                return gboolean(G_SOURCE_CONTINUE);
            },
            loop);
    {
        TvScreen screen("hbbtv-browser", broadcast.serviceName.empty() ? "no broadcast" : broadcast.serviceName, onKey);
        screen.onClosed([loop] { g_main_loop_quit(loop); });
        BroadcastPicture pictures(broadcast.capture(), broadcast.allServices());
        if (!pictures.origin().empty())
            timeline.say("the broadcast's picture is served on " + pictures.origin() + ", under a secret path");
        const RequestPolicy policy(options.refusedRequests);
        TvPlatform& tv = TvPlatform::get();
        WebKitCore core(screen, pictures, TESMO_BROWSER_EXTENSION_DIR, tv, policy, options);
        theCore = &core;
        if (!core.isSandboxed())
            timeline.say("pages run without WebKit's sandbox: bubblewrap cannot run here");
        native_ApplicationManagerSetListener([](uint32_t event, uint32_t id) {
            if (event == library::APPLICATION_LOW_MEMORY || event == library::APPLICATION_LOAD_ERROR)
                theCore->applicationEvent(event == library::APPLICATION_LOW_MEMORY ? "lowMemory" : "loadError", id);
        });
        native_ApplicationManagerSetAppDestroyedListener(
            [](uint32_t id) { theCore->applicationEvent("destroyed", id); });

        tv.configure(options, timeline, core, policy);
        tv.start(broadcast.takeFirst(), broadcast.ids, std::move(broadcast.script));
        tv.setChannels(broadcast.channel, [&broadcast](const Channel& to) { return broadcast.tune(to); });
        if (broadcast.channel)
            core.channelChanged(*broadcast.channel);
        core.started();
        TickLoop ticks(options, timeline, tv, core, screen, loop);
        g_timeout_add(guint(options.tickMs), TickLoop::tick, &ticks);
        g_main_loop_run(loop);
        tv.stop();
        theCore = nullptr;
    }
    g_main_loop_unref(loop);
    return 0;
}
