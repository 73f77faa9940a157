#include "TvScreen.h"

#include <webkit2/webkit2.h>

#include <algorithm>

struct TvScreen::Capture {
    const TvScreen* screen;
    std::string file;
    std::function<void(bool)> done;
    std::vector<WebKitWebView*> pending;  // views still to photograph, bottom first
    std::vector<cairo_surface_t*> layers;
};

TvScreen::TvScreen(const std::string& title, const std::string& name, KeyHandler onKey)
    : serviceName(name), key(std::move(onKey))
{
    window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    gtk_window_set_title(GTK_WINDOW(window), title.c_str());
    gtk_window_set_default_size(GTK_WINDOW(window), WIDTH, HEIGHT);
    gtk_window_set_resizable(GTK_WINDOW(window), FALSE);
    overlay = gtk_overlay_new();
    broadcast = gtk_drawing_area_new();
    gtk_widget_set_size_request(broadcast, WIDTH, HEIGHT);
    g_signal_connect(broadcast, "draw", G_CALLBACK(draw), this);
    gtk_container_add(GTK_CONTAINER(overlay), broadcast);
    gtk_container_add(GTK_CONTAINER(window), overlay);
    // Before any view sees the key: the library decides where it goes.
    g_signal_connect(window, "key-press-event", G_CALLBACK(keyPressed), this);
    g_signal_connect_swapped(window, "destroy", G_CALLBACK(+[](TvScreen* self) {
                                 self->window = nullptr;
                                 if (self->closed)
                                     self->closed();
                             }),
                             this);
    gtk_widget_show_all(window);
}

TvScreen::~TvScreen()
{
    if (window)
        gtk_widget_destroy(window);
}

void TvScreen::add(GtkWidget* view)
{
    gtk_widget_set_size_request(view, WIDTH, HEIGHT);
    gtk_overlay_add_overlay(GTK_OVERLAY(overlay), view);
    views.push_back(view);
}

void TvScreen::remove(GtkWidget* view)
{
    views.erase(std::remove(views.begin(), views.end(), view), views.end());
    gtk_container_remove(GTK_CONTAINER(overlay), view);
}

void TvScreen::setVideoWindow(const VideoWindow& window)
{
    video = window;
    if (picture) {
        picture->place(video.x, video.y, video.fullScreen ? 0 : video.width, video.fullScreen ? 0 : video.height);
        picture->show(video.presenting);
    }
    gtk_widget_queue_draw(broadcast);
}

void TvScreen::setPicture(PictureView& view)
{
    picture = &view;
    gtk_widget_set_size_request(view.widget(), WIDTH, HEIGHT);
    gtk_overlay_add_overlay(GTK_OVERLAY(overlay), view.widget());
    picture->show(video.presenting);
}

void TvScreen::setServiceName(const std::string& name)
{
    serviceName = name;
    gtk_widget_queue_draw(broadcast);
}

void TvScreen::setVisible(GtkWidget* view, bool visible)
{
    gtk_widget_set_visible(view, visible);
    if (visible)
        gtk_widget_grab_focus(view);
}

gboolean TvScreen::draw(GtkWidget*, cairo_t* cr, gpointer self)
{
    static_cast<TvScreen*>(self)->paintBroadcast(cr);
    return TRUE;
}

// Black where there is no picture; the stand-in scaled into the video window, for a service
// whose own picture there is none of.
void TvScreen::paintBroadcast(cairo_t* cr) const
{
    cairo_set_source_rgb(cr, 0, 0, 0);
    cairo_paint(cr);
    if (!video.presenting || video.width <= 0 || video.height <= 0 || (picture && picture->hasSource()))
        return;
    cairo_save(cr);
    if (!video.fullScreen) {
        cairo_rectangle(cr, video.x, video.y, video.width, video.height);
        cairo_clip(cr);
        cairo_translate(cr, video.x, video.y);
        cairo_scale(cr, double(video.width) / WIDTH, double(video.height) / HEIGHT);
    }
    cairo_pattern_t* frame = cairo_pattern_create_linear(0, 0, 0, HEIGHT);
    cairo_pattern_add_color_stop_rgb(frame, 0, 0.10, 0.12, 0.18);
    cairo_pattern_add_color_stop_rgb(frame, 1, 0.03, 0.03, 0.06);
    cairo_set_source(cr, frame);
    cairo_paint(cr);
    cairo_pattern_destroy(frame);
    cairo_select_font_face(cr, "DejaVu Sans", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_BOLD);
    cairo_set_font_size(cr, 56);
    cairo_text_extents_t extents;
    cairo_text_extents(cr, serviceName.c_str(), &extents);
    cairo_set_source_rgba(cr, 1, 1, 1, 0.35);
    cairo_move_to(cr, (WIDTH - extents.width) / 2 - extents.x_bearing, HEIGHT / 2.0);
    cairo_show_text(cr, serviceName.c_str());
    cairo_restore(cr);
}

// A key the TV sends a page itself passes on to the focused view: it is not the viewer's.
gboolean TvScreen::keyPressed(GtkWidget*, GdkEventKey* event, gpointer self)
{
    if (event->send_event)
        return FALSE;
    static_cast<TvScreen*>(self)->key(event->keyval);
    return TRUE;
}

// ---------------------------------------------------------------- screenshots

void TvScreen::capture(const std::string& file, std::function<void(bool)> done)
{
    auto* job = new Capture{this, file, std::move(done), {}, {}};
    if (picture && gtk_widget_get_visible(picture->widget()))
        job->pending.push_back(WEBKIT_WEB_VIEW(g_object_ref(picture->widget())));
    for (GtkWidget* view : views)
        if (gtk_widget_get_visible(view))
            job->pending.push_back(WEBKIT_WEB_VIEW(g_object_ref(view)));  // a window may go meanwhile
    finish(job);
}

// Photographs the next view, or composes the picture when none is left.
void TvScreen::finish(Capture* job)
{
    if (!job->pending.empty()) {
        WebKitWebView* view = job->pending.front();
        job->pending.erase(job->pending.begin());
        webkit_web_view_get_snapshot(view, WEBKIT_SNAPSHOT_REGION_VISIBLE,
                                     WEBKIT_SNAPSHOT_OPTIONS_TRANSPARENT_BACKGROUND, nullptr, snapshotTaken, job);
        return;
    }
    cairo_surface_t* picture = cairo_image_surface_create(CAIRO_FORMAT_RGB24, WIDTH, HEIGHT);
    cairo_t* cr = cairo_create(picture);
    job->screen->paintBroadcast(cr);
    for (cairo_surface_t* layer : job->layers) {
        cairo_set_source_surface(cr, layer, 0, 0);
        cairo_paint(cr);
        cairo_surface_destroy(layer);
    }
    cairo_destroy(cr);
    const bool written = cairo_surface_write_to_png(picture, job->file.c_str()) == CAIRO_STATUS_SUCCESS;
    cairo_surface_destroy(picture);
    job->done(written);
    delete job;
}

void TvScreen::snapshotTaken(GObject* view, GAsyncResult* result, gpointer data)
{
    auto* job = static_cast<Capture*>(data);
    GError* error = nullptr;
    if (cairo_surface_t* layer = webkit_web_view_get_snapshot_finish(WEBKIT_WEB_VIEW(view), result, &error))
        job->layers.push_back(layer);
    g_clear_error(&error);
    g_object_unref(view);
    finish(job);
}
