// hbbtv-browser: plays a broadcast capture through libtesmo_hbbtv with WebKitGTK as the
// browser core. The library, the platform and the tick loop run on the GTK main thread;
// pages run in WebKit's web processes.

#include <csignal>
#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>

#include "Broadcast.h"
#include "Options.h"
#include "Timeline.h"
#include "TickLoop.h"
#include "TvPlatform.h"
#include "TvScreen.h"
#include "WebKitCore.h"
#include "tesmo_hbbtv/bindings.h"

namespace {

WebKitCore* theCore = nullptr;

// The keyboard as a remote control.
bool remoteKey(guint keyval, std::string& name)
{
    static const std::map<guint, const char*> keys = {
        {GDK_KEY_r, "RED"},     {GDK_KEY_F1, "RED"},     {GDK_KEY_g, "GREEN"},  {GDK_KEY_F2, "GREEN"},
        {GDK_KEY_y, "YELLOW"},  {GDK_KEY_F3, "YELLOW"},  {GDK_KEY_b, "BLUE"},   {GDK_KEY_F4, "BLUE"},
        {GDK_KEY_Up, "UP"},     {GDK_KEY_Down, "DOWN"},  {GDK_KEY_Left, "LEFT"}, {GDK_KEY_Right, "RIGHT"},
        {GDK_KEY_Return, "ENTER"}, {GDK_KEY_KP_Enter, "ENTER"}, {GDK_KEY_BackSpace, "BACK"},
        {GDK_KEY_p, "PLAY_PAUSE"}, {GDK_KEY_s, "STOP"},  {GDK_KEY_f, "FAST_FORWARD"}, {GDK_KEY_w, "REWIND"},
        {GDK_KEY_i, "INFO"},    {GDK_KEY_Page_Up, "PAGE_UP"}, {GDK_KEY_Page_Down, "PAGE_DOWN"}};
    auto found = keys.find(keyval);
    if (found != keys.end()) {
        name = found->second;
        return true;
    }
    if (keyval >= GDK_KEY_0 && keyval <= GDK_KEY_9) {
        name = std::string(1, char('0' + (keyval - GDK_KEY_0)));
        return true;
    }
    return false;
}

void onKey(guint keyval)
{
    std::string name;
    int32_t code = 0;
    if (remoteKey(keyval, name) && keyCode(name, code))
        TvPlatform::get().pressKey(name, code);
}

std::string readFile(const std::string& path)
{
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

} // namespace

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
    if (!gtk_init_check(&argc, &argv)) {
        std::fprintf(stderr, "hbbtv-browser: no display (run it under xvfb-run for no screen)\n");
        return 2;
    }

    Timeline timeline(stdout, options.json);
    GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
    {
        TvScreen screen("hbbtv-browser", broadcast.serviceName.empty() ? "no broadcast" : broadcast.serviceName, onKey);
        screen.onClosed([loop] { g_main_loop_quit(loop); });
        WebKitCore core(screen, TESMO_BROWSER_EXTENSION_DIR, readFile(TESMO_BROWSER_API_SCRIPT));
        theCore = &core;
        native_ApplicationManagerSetListener([](uint32_t event, uint32_t id) {
            theCore->applicationEvent(event == 0 ? "lowMemory" : "loadError", id);
        });
        native_ApplicationManagerSetAppDestroyedListener([](uint32_t id) { theCore->applicationEvent("destroyed", id); });

        TvPlatform& tv = TvPlatform::get();
        tv.configure(options, timeline, core);
        tv.start(std::move(broadcast.aitSections), std::move(broadcast.carouselSections), broadcast.ids,
                 std::move(broadcast.script));
        core.startClock();
        TickLoop ticks(options, timeline, core, screen, loop);
        g_timeout_add(guint(options.tickMs), TickLoop::tick, &ticks);
        g_main_loop_run(loop);
        tv.stop();
        theCore = nullptr;
    }
    g_main_loop_unref(loop);
    return 0;
}
