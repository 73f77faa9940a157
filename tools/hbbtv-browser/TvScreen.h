#ifndef TESMO_BROWSER_TVSCREEN_H
#define TESMO_BROWSER_TVSCREEN_H

#include <gtk/gtk.h>

#include "PictureView.h"

#include <functional>
#include <string>
#include <vector>

// The TV's screen: a 1280x720 window with a stand-in for the broadcast picture (the
// service's name on a dark frame), full screen or where a page's video/broadcast object
// puts it, and the browser views stacked over it, transparent where the page is. Keys
// pressed on it go to the handler, never straight to a page.
class TvScreen {
public:
    static const int WIDTH = 1280;
    static const int HEIGHT = 720;

    using KeyHandler = std::function<void(guint keyval)>;

    TvScreen(const std::string& title, const std::string& serviceName, KeyHandler onKey);
    ~TvScreen();
    TvScreen(const TvScreen&) = delete;
    TvScreen& operator=(const TvScreen&) = delete;

    void add(GtkWidget* view);
    void remove(GtkWidget* view);
    void setVisible(GtkWidget* view, bool visible);
    void onClosed(std::function<void()> handler) { closed = std::move(handler); }

    // Where the broadcast picture is: full screen, in a rectangle, or nowhere (stopped).
    struct VideoWindow {
        bool presenting = true;
        bool fullScreen = true;
        int x = 0, y = 0, width = WIDTH, height = HEIGHT;
    };
    void setVideoWindow(const VideoWindow& video);
    void setServiceName(const std::string& name);
    // The view that plays the broadcast full screen when the service has audio and video
    // (the stand-in otherwise); it stays the screen's, below every page.
    void setPicture(PictureView& view);
    // The broadcast's audio stream, by PID (see PictureView::setAudio).
    void selectAudio(int pid)
    {
        if (picture)
            picture->setAudio(pid);
    }
    // The broadcast picture's state (see PictureView); "none" without one.
    std::string pictureState() const { return picture ? picture->state() : "none"; }

    // A PNG of the screen: the broadcast, then every visible view from bottom to top.
    void capture(const std::string& file, std::function<void(bool written)> done);

private:
    struct Capture;

    static gboolean draw(GtkWidget*, cairo_t* cr, gpointer self);
    static gboolean keyPressed(GtkWidget*, GdkEventKey* event, gpointer self);
    static void snapshotTaken(GObject* view, GAsyncResult* result, gpointer capture);
    void paintBroadcast(cairo_t* cr) const;
    static void finish(Capture* capture);

    std::string serviceName;
    VideoWindow video;
    GtkWidget* broadcast;
    KeyHandler key;
    std::function<void()> closed;
    GtkWidget* window;
    GtkWidget* overlay;
    PictureView* picture = nullptr;  // the core's
    std::vector<GtkWidget*> views;  // bottom to top
};

#endif
