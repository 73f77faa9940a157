#ifndef TESMO_BROWSER_PICTUREVIEW_H
#define TESMO_BROWSER_PICTUREVIEW_H

#include <webkit2/webkit2.h>

#include <string>

// The broadcast full screen behind the pages: a view of the TV's own that plays the current
// service's audio and video through the engine's media player. It plays only while shown.
class PictureView {
public:
    PictureView(WebKitWebContext* context, WebKitUserContentManager* content);
    ~PictureView();
    PictureView(const PictureView&) = delete;
    PictureView& operator=(const PictureView&) = delete;

    GtkWidget* widget() const { return GTK_WIDGET(view); }
    guint64 pageId() const { return webkit_web_view_get_page_id(view); }
    // The stream to play ("" for none).
    void setSource(const std::string& url);
    bool hasSource() const { return !source.empty(); }
    void show(bool shown);

private:
    void apply();

    WebKitWebView* view;  // owned through the screen's container once added
    std::string source;
    bool shown = false;
    bool loading = false;  // the page that holds the player was asked for
    bool ready = false;  // and has loaded
};

#endif
