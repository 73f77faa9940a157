#include "TickLoop.h"

#include <dirent.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <map>
#include <string>
#include <utility>

namespace {

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

// The browser's memory: this process, and the processes WebKit started for it (the web
// processes sit below their sandbox's bubblewrap).
std::string memoryReport()
{
    std::map<std::string, std::string> parents;
    if (DIR* proc = opendir("/proc")) {
        while (dirent* entry = readdir(proc)) {
            std::ifstream stat(std::string("/proc/") + entry->d_name + "/stat");
            std::string pid, name, state, parent;
            if (stat >> pid >> name >> state >> parent)
                parents[pid] = parent;
        }
        closedir(proc);
    }
    const std::string self = std::to_string(getpid());
    long children = 0;
    int count = 0;
    for (const auto& process : parents) {
        std::string ancestor = process.second;
        for (int depth = 0; depth < 8 && ancestor != self && parents.count(ancestor); ++depth)
            ancestor = parents[ancestor];
        if (ancestor == self) {
            children += proportionalKiB(process.first);
            ++count;
        }
    }
    const long own = proportionalKiB("self");
    return "memory (proportional set size): hbbtv-browser " + std::to_string(own) + " KiB, " + std::to_string(count) +
           " WebKit process(es) " + std::to_string(children) + " KiB, " + std::to_string(own + children) +
           " KiB in all";
}

// Whose tick has come, once the pages have settled (or have had their time).
bool due(const TimedText& item, uint64_t now, bool settled, uint64_t patience)
{
    return item.tick <= now && (settled || now > item.tick + patience);
}

}  // namespace

TickLoop::TickLoop(const Options& options, Timeline& timeline, TvPlatform& tv, WebKitCore& core, TvScreen& screen,
                   GMainLoop* loop)
    : options(options), out(timeline), tv(tv), core(core), screen(screen), loop(loop), screenshots(options.screenshots),
      evaluations(options.evaluations)
{
}

gboolean TickLoop::step()
{
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

// One at a time, so that each sees the screen as it is.
void TickLoop::takeDue(uint64_t now, bool settled)
{
    auto isDue = [&](const TimedText& item) { return due(item, now, settled, PATIENCE_TICKS); };
    auto evaluation = std::find_if(evaluations.begin(), evaluations.end(), isDue);
    if (evaluation != evaluations.end()) {
        const std::string script = evaluation->text;
        evaluations.erase(evaluation);
        ++waiting;
        core.evaluate(script, [this, script](const std::string& value) {
            out.say("eval " + script + ": " + value);
            out.record(JsonLine().field("eval", script).raw("value", JsonLine::quote(value)));
            --waiting;
        });
        return;
    }
    auto screenshot = std::find_if(screenshots.begin(), screenshots.end(), isDue);
    if (screenshot != screenshots.end()) {
        const std::string file = screenshot->text;
        screenshots.erase(screenshot);
        ++waiting;
        g_timeout_add(SETTLE_MS, capture, new std::pair<TickLoop*, std::string>(this, file));
    }
}

gboolean TickLoop::capture(gpointer data)
{
    auto* job = static_cast<std::pair<TickLoop*, std::string>*>(data);
    TickLoop* self = job->first;
    const std::string file = job->second;
    delete job;
    self->screen.capture(file, [self, file](bool written) {
        self->out.say(written ? "screenshot " + file : "screenshot " + file + " could not be written");
        self->out.record(JsonLine().field("screenshot", file).field("written", written ? 1 : 0));
        --self->waiting;
    });
    return G_SOURCE_REMOVE;
}
