#ifndef TESMO_BROWSER_TICKLOOP_H
#define TESMO_BROWSER_TICKLOOP_H

#include <glib.h>

#include <vector>

#include "Options.h"
#include "Timeline.h"
#include "TvPlatform.h"
#include "TvScreen.h"
#include "WebKitCore.h"

// The tick loop on the GTK main thread: one platform step (one tesmo_hbbtv_tick) per timer,
// and what the options ask for at given ticks, a screenshot or a script's value, once the
// pages have settled after that tick. Quits the main loop after --exit-after.
class TickLoop {
public:
    TickLoop(const Options& options, Timeline& timeline, TvPlatform& tv, WebKitCore& core, TvScreen& screen,
             GMainLoop* loop);

    // The timer's callback, with the loop as data.
    static gboolean tick(gpointer self) { return static_cast<TickLoop*>(self)->step(); }

private:
    gboolean step();
    void takeDue(uint64_t now, bool settled);
    static gboolean capture(gpointer data);

    // A page that never finishes loading, or a script that never returns, is waited for this long.
    static const uint64_t PATIENCE_TICKS = 250;
    static const guint SETTLE_MS = 150;

    const Options& options;
    Timeline& out;
    TvPlatform& tv;
    WebKitCore& core;
    TvScreen& screen;
    GMainLoop* loop;
    std::vector<TimedText> screenshots;
    std::vector<TimedText> evaluations;
    int waiting = 0;
};

#endif
