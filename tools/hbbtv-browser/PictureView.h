#ifndef TESMO_BROWSER_PICTUREVIEW_H
#define TESMO_BROWSER_PICTUREVIEW_H

#include <webkit2/webkit2.h>

#include <functional>
#include <string>

// The broadcast's plane behind the pages: a view of the TV's own that plays the current
// service's audio and video through the engine's media player, full screen or in a
// rectangle. It plays only while shown, and tells when the picture plays or fails. No page
// holds the picture or its source.
class PictureView {
public:
    // "none" (the service has no picture of its own), "connecting", "playing" or "error".
    using StateChanged = std::function<void(const std::string& state)>;
    // The PIDs of the audio streams that play now, in hexadecimal ("" for none).
    using AudioChanged = std::function<void(const std::string& pids)>;

    PictureView(WebKitWebContext* context, WebKitUserContentManager* content, StateChanged changed,
                AudioChanged audioChanged);
    ~PictureView();
    PictureView(const PictureView&) = delete;
    PictureView& operator=(const PictureView&) = delete;

    GtkWidget* widget() const { return GTK_WIDGET(view); }
    guint64 pageId() const { return webkit_web_view_get_page_id(view); }
    // The stream to play ("" for none).
    void setSource(const std::string& url);
    bool hasSource() const { return !source.empty(); }
    void show(bool shown);
    // Where the picture goes, in screen pixels; full screen when width or height is 0.
    void place(int x, int y, int width, int height);
    // The audio stream that plays, by PID: -1 for none, -2 for the stream's first.
    void setAudio(int pid);
    const std::string& state() const { return playState; }

private:
    void apply();
    void watch();
    static void watched(GObject* view, GAsyncResult* result, gpointer self);
    static void audioApplied(GObject* view, GAsyncResult* result, gpointer self);
    void setState(const std::string& state);

    WebKitWebView* view;  // owned through the screen's container once added
    StateChanged changed;
    AudioChanged audioChanged;
    GCancellable* watching = nullptr;
    GCancellable* alive = g_cancellable_new();  // cancelled when the view goes
    std::string source;
    std::string playing;  // the source the player has
    std::string playState = "none";
    std::string placement;  // the player's CSS box
    std::string audio;  // the audio track's id (its PID in hexadecimal), "none", or "" for the first
    bool shown = false;
    bool loading = false;  // the page that holds the player was asked for
    bool ready = false;  // and has loaded
};

#endif
