#ifndef TESMO_BROWSER_WEBKITCORE_H
#define TESMO_BROWSER_WEBKITCORE_H

#include <webkit2/webkit2.h>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "BrowserCore.h"
#include "Options.h"
#include "DvbScheme.h"
#include "PageDownloads.h"
#include "PageObjects.h"
#include "PageView.h"
#include "PictureView.h"
#include "RequestFilter.h"
#include "ScriptChannel.h"
#include "TvScreen.h"
#include "XmlAit.h"
#include "RequestPolicy.h"
#include "objects/PageObject.h"

// The browser core on WebKitGTK: a web view (PageView) for each browser window the platform
// grants, stacked on the TV screen. Pages load for real; what WebKit says about them (finished with
// an HTTP status, failed, closed by script, an XML AIT received) goes to the library as the
// browser core's notifications, from the tick loop. dvb: is a URI scheme of its own
// (DvbScheme), XML AITs and pages of HbbTV's type come through downloads (PageDownloads),
// and the pages' HbbTV objects live in the web-process extension and reach their sides in
// the TV (PageObjects) through the script channel.
class WebKitCore : public BrowserCore, public ObjectServices {
public:
    // The extension's directory. From the options: each page's web process is stopped above
    // its memory limit, and a load that receives nothing for the load timeout has failed. The
    // engine's filter keeps the platform's policy; the broadcast's audio and video come from
    // pictures; the page objects tune through the tuner.
    WebKitCore(TvScreen& screen, const BroadcastPicture& pictures, const std::string& extensionDirectory,
               ChannelControl& tuner, const RequestPolicy& policy, const Options& options);
    ~WebKitCore() override;

    void setVisible(DAXO_TesmoWindow* window, bool visible) override;
    void channelChanged(const Channel& channel) override;
    void programmesChanged() override { objects->programmesChanged(); }
    void tableCompleted() override;
    void streamEvent(void* listener, const std::string& name, const std::string& data, const std::string& text,
                     const std::string& status) override;
    void afterTick() override;
    bool busy() const override;

    // The bindings' listeners, which the library calls.
    void applicationEvent(const char* name, uint32_t applicationId);
    // Evaluates a script in the active page; done gets its value as text (or the error).
    void evaluate(const std::string& script, std::function<void(const std::string&)> done);
    // Whether pages run in WebKit's web-process sandbox (where the system can run it).
    bool isSandboxed() const { return sandboxed; }
    // The TV has started: the first paint is measured from here, until the first AIT is complete.
    void started();

    // ---- what the page objects get
    void say(const std::string& line) override;
    void record(JsonLine line) override;
    std::string where(const PageContext& page) const override;
    void toPage(long handle, const std::string& event, JsonNode* payload) override;
    void toEveryPage(const std::string& event, JsonNode* payload) override;

private:
    struct LateReport {
        DAXO_TesmoWindow* window;
        int id;  // a notification, or LOADING_FINISHED for a load's outcome
        LoadOutcome load;
    };

    void windowCreated(DAXO_TesmoWindow* window) override;
    void windowDestroyed(DAXO_TesmoWindow* window) override;
    void load(DAXO_TesmoWindow* window, const std::string& url) override;
    void historyCleared(DAXO_TesmoWindow* window) override;
    void streamMimeType(void* stream, const std::string& mime) override;
    void streamData(void* stream, const unsigned char* data, unsigned int length) override;
    void streamEnded(void* stream, int status, bool finished) override;
    void userAgentChanged(const std::string& extension) override;
    void keyEvent(int action, DAXO_KEY_SYM key) override;

    std::unique_ptr<PageView> newView(DAXO_TesmoWindow* window);
    std::string pageCall(guint64 pageId, const std::string& name, const std::string& argumentsJson);
    // To the view's page, or to every page for null; takes the payload.
    void emit(const PageView* view, const std::string& event, JsonNode* payload);
    PageView* viewOf(WebKitWebView* webView);

    // WebKit's signals
    static void loadChanged(WebKitWebView* webView, WebKitLoadEvent event, gpointer self);
    static gboolean loadFailed(WebKitWebView* webView, WebKitLoadEvent, const char* uri, GError* error, gpointer self);
    static void closeRequested(WebKitWebView* webView, gpointer self);
    static void processEnded(WebKitWebView* webView, WebKitWebProcessTerminationReason reason, gpointer self);
    static gboolean messageReceived(WebKitWebView* webView, WebKitUserMessage* message, gpointer self);
    static gboolean decidePolicy(WebKitWebView* webView, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type,
                                 gpointer self);

    // What the downloads bring
    void xmlAitReceived(WebKitWebView* webView, const std::string& file);
    void pageReceived(WebKitWebView* webView, GBytes* bytes, const std::string& type, const std::string& uri,
                      unsigned status);

    void settle(PageView& view, const std::string& url, const std::optional<LoadOutcome>& outcome);
    void checkLoads();

    TvScreen& screen;
    const BroadcastPicture& pictures;
    WebKitWebContext* context;
    RequestFilter filter;
    std::chrono::milliseconds loadTimeout;
    std::unique_ptr<ScriptChannel> channel;
    std::unique_ptr<PageObjects> objects;
    std::map<DAXO_TesmoWindow*, std::unique_ptr<PageView>> views;
    std::unique_ptr<PageView> spare;  // a web process ready for the first window
    std::unique_ptr<PictureView> picture;
    std::unique_ptr<DvbScheme> dvb;
    std::unique_ptr<PageDownloads> downloads;
    std::vector<LateReport> lateReports;  // loads the rules answer, at the next tick
    std::vector<std::unique_ptr<XmlAit>> xmlAits;  // the core keeps what it handed over
    std::string userAgentExtension;
    bool sandboxed = false;
};

#endif
