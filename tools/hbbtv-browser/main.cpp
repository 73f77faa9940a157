// hbbtv-browser: plays a broadcast capture through libtesmo_hbbtv with WebKitGTK as the
// browser core. The library, the platform and the tick loop run on the GTK main thread;
// pages run in WebKit's web processes.

#include <dirent.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>

#include "Broadcast.h"
#include "Options.h"
#include "Timeline.h"
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

// A process's share of the memory it uses, shared libraries divided among their users, so
// that the processes' figures add up.
long proportionalKiB(const std::string& process)
{
    std::ifstream in("/proc/" + process + "/smaps_rollup");
    std::string line;
    while (std::getline(in, line))
        if (line.compare(0, 4, "Pss:") == 0)
            return std::atol(line.c_str() + 4);
    return 0;
}

// The browser's memory: this process, and WebKit's processes that it started.
std::string memoryReport()
{
    const std::string self = std::to_string(getpid());
    long children = 0;
    int count = 0;
    if (DIR* proc = opendir("/proc")) {
        while (dirent* entry = readdir(proc)) {
            std::ifstream stat(std::string("/proc/") + entry->d_name + "/stat");
            std::string pid, name, state, parent;
            if (stat >> pid >> name >> state >> parent && parent == self) {
                children += proportionalKiB(entry->d_name);
                ++count;
            }
        }
        closedir(proc);
    }
    const long own = proportionalKiB("self");
    return "memory (proportional set size): hbbtv-browser " + std::to_string(own) + " KiB, " + std::to_string(count) +
           " WebKit process(es) " + std::to_string(children) + " KiB, " + std::to_string(own + children) + " KiB in all";
}

// The tick loop, and what the options ask for at given ticks: a screenshot or a script's
// value once the pages have settled after that tick.
class Run {
public:
    Run(const Options& options, Timeline& timeline, WebKitCore& core, TvScreen& screen, GMainLoop* loop)
        : options(options), out(timeline), core(core), screen(screen), loop(loop), screenshots(options.screenshots),
          evaluations(options.evaluations)
    {
    }

    static gboolean tick(gpointer self) { return static_cast<Run*>(self)->step(); }

private:
    gboolean step()
    {
        TvPlatform& tv = TvPlatform::get();
        const uint64_t now = tv.currentTick();
        if (!waiting)
            takeDue(now, !core.busy());
        const bool pending = waiting || !screenshots.empty() || !evaluations.empty();
        if (options.exitAfter && now > options.exitAfter && (!pending || now > options.exitAfter + PATIENCE_TICKS)) {
            if (pending)
                out.say("a screenshot or a script never completed: the pages did not settle");
            out.say(memoryReport());
            g_main_loop_quit(loop);
            return G_SOURCE_REMOVE;
        }
        tv.step();
        return G_SOURCE_CONTINUE;
    }

    // Whose tick has come, once the pages have settled (or have had their time); one at a
    // time, so that each sees the screen as it is.
    static bool due(const TimedText& item, uint64_t now, bool settled)
    {
        return item.tick <= now && (settled || now > item.tick + PATIENCE_TICKS);
    }

    void takeDue(uint64_t now, bool settled)
    {
        for (auto it = evaluations.begin(); it != evaluations.end(); ++it)
            if (due(*it, now, settled)) {
                const std::string script = it->text;
                evaluations.erase(it);
                ++waiting;
                core.evaluate(script, [this, script](const std::string& value) {
                    out.say("eval " + script + ": " + value);
                    out.record(JsonLine().field("eval", script).raw("value", JsonLine::quote(value)));
                    --waiting;
                });
                return;
            }
        for (auto it = screenshots.begin(); it != screenshots.end(); ++it)
            if (due(*it, now, settled)) {
                const std::string file = it->text;
                screenshots.erase(it);
                ++waiting;
                g_timeout_add(SETTLE_MS, capture, new std::pair<Run*, std::string>(this, file));
                return;
            }
    }

    static gboolean capture(gpointer data)
    {
        auto* job = static_cast<std::pair<Run*, std::string>*>(data);
        Run* self = job->first;
        const std::string file = job->second;
        delete job;
        self->screen.capture(file, [self, file](bool written) {
            self->out.say(written ? "screenshot " + file : "screenshot " + file + " could not be written");
            self->out.record(JsonLine().field("screenshot", file).field("written", written ? 1 : 0));
            --self->waiting;
        });
        return G_SOURCE_REMOVE;
    }

    static const guint SETTLE_MS = 150;
    // A page that never finishes loading, or a script that never returns, is waited for this long.
    static const uint64_t PATIENCE_TICKS = 250;

    const Options& options;
    Timeline& out;
    WebKitCore& core;
    TvScreen& screen;
    GMainLoop* loop;
    std::vector<TimedText> screenshots;
    std::vector<TimedText> evaluations;
    int waiting = 0;
};

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
        Run run(options, timeline, core, screen, loop);
        g_timeout_add(guint(options.tickMs), Run::tick, &run);
        g_main_loop_run(loop);
        tv.stop();
        theCore = nullptr;
    }
    g_main_loop_unref(loop);
    return 0;
}
