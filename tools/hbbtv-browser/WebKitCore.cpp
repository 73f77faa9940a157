#include "WebKitCore.h"

#include <set>

#include "ChannelList.h"
#include "RemoteKeys.h"
#include "tesmo_hbbtv/tesmo_hbbtv.h"

namespace {

// The scripts every page gets, by name, in the order they run; the extension holds them.
GVariant* scriptNames()
{
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("as"));
    for (const std::string& name : pageScripts())
        g_variant_builder_add(&builder, "s", name.c_str());
    return g_variant_builder_end(&builder);
}

// A response whose Content-Length is 0: a document with nothing in it.
bool saysEmpty(WebKitURIResponse* response)
{
    SoupMessageHeaders* headers = webkit_uri_response_get_http_headers(response);
    return headers && soup_message_headers_get_encoding(headers) == SOUP_ENCODING_CONTENT_LENGTH &&
           soup_message_headers_get_content_length(headers) == 0;
}

// WebKit's web-process sandbox is bubblewrap; where the system lets it run (user namespaces),
// pages get it.
bool sandboxRuns()
{
    const char* const probe[] = {"bwrap", "--ro-bind", "/", "/", "--unshare-all", "true", nullptr};
    gint status = -1;
    return g_spawn_sync(nullptr, const_cast<char**>(probe), nullptr,
                        GSpawnFlags(G_SPAWN_SEARCH_PATH | G_SPAWN_STDOUT_TO_DEV_NULL | G_SPAWN_STDERR_TO_DEV_NULL),
                        nullptr, nullptr, nullptr, nullptr, &status, nullptr) &&
           g_spawn_check_wait_status(status, nullptr);
}

}  // namespace

WebKitCore::WebKitCore(TvScreen& tvScreen, const BroadcastPicture& broadcastPictures,
                       const std::string& extensionDirectory, ChannelControl& tuner, const RequestPolicy& policy,
                       const Options& options)
    : screen(tvScreen), pictures(broadcastPictures), filter(policy.patterns()),
      loadTimeout(std::chrono::milliseconds(options.loadTimeoutMs))
{
    channel = std::make_unique<ScriptChannel>(
        [this](guint64 page, const std::string& name, const std::string& arguments) {
            return pageCall(page, name, arguments);
        },
        PageObjects::unanswered("the TV does not answer this page"));
    objects = std::make_unique<PageObjects>(ObjectParts{*this, tuner, options, policy, tvScreen, broadcastPictures});
    WebKitMemoryPressureSettings* memory = webkit_memory_pressure_settings_new();
    webkit_memory_pressure_settings_set_memory_limit(memory, options.pageMemoryMb);
    // Past the limit the process is killed, as a TV must rather than swap; checked each second.
    webkit_memory_pressure_settings_set_kill_threshold(memory, 1.0);
    webkit_memory_pressure_settings_set_poll_interval(memory, 1.0);
    context = WEBKIT_WEB_CONTEXT(g_object_new(WEBKIT_TYPE_WEB_CONTEXT, "memory-pressure-settings", memory, nullptr));
    webkit_memory_pressure_settings_free(memory);
    webkit_web_context_set_web_extensions_directory(context, extensionDirectory.c_str());
    sandboxed = !channel->socketDirectory().empty() && sandboxRuns();
    if (sandboxed) {
        webkit_web_context_set_sandbox_enabled(context, TRUE);
        webkit_web_context_add_path_to_sandbox(context, channel->socketDirectory().c_str(), FALSE);
    }
    webkit_web_context_set_web_extensions_initialization_user_data(
        context, g_variant_new("(s@as)", channel->address().c_str(), scriptNames()));
    auto windowOfView = [this](WebKitWebView* webView) -> DAXO_TesmoWindow* {
        PageView* view = viewOf(webView);
        return view ? view->window() : nullptr;
    };
    picture = std::make_unique<PictureView>(
        context, filter.contentManager(), [this](const std::string& state) { objects->pictureChanged(state); },
        [this](const std::string& pids) {
            out->say(pids.empty() ? "the broadcast's audio is off" : "the broadcast's audio plays PID(s) 0x" + pids);
        });
    g_signal_connect(picture->widget(), "user-message-received", G_CALLBACK(messageReceived), this);
    screen.setPicture(*picture);
    dvb = std::make_unique<DvbScheme>(context, windowOfView, [this](const std::string& line) { out->say(line); });
    PageDownloads::Handlers handlers;
    handlers.xmlAit = [this](WebKitWebView* webView, const std::string& file) { xmlAitReceived(webView, file); };
    handlers.page = [this](WebKitWebView* webView, GBytes* bytes, const std::string& type, const std::string& uri,
                           unsigned status) { pageReceived(webView, bytes, type, uri, status); };
    handlers.failed = [this](WebKitWebView* webView, const std::string& uri, const std::string& error) {
        if (PageView* view = viewOf(webView))
            settle(*view, uri, view->loads().downloadFailed(error));
    };
    handlers.progress = [this](WebKitWebView* webView) {
        if (PageView* view = viewOf(webView))
            view->loads().progressed(PageLoad::Clock::now());
    };
    downloads = std::make_unique<PageDownloads>(context, std::move(handlers));
    spare = newView(nullptr);
}

WebKitCore::~WebKitCore()
{
    while (!views.empty())
        windowDestroyed(views.begin()->first);
    if (spare)
        g_signal_handlers_disconnect_by_data(spare->webView(), this);
    spare.reset();
    picture.reset();
    downloads.reset();
    dvb.reset();
    g_signal_handlers_disconnect_by_data(context, this);
    g_object_unref(context);
}

PageView* WebKitCore::viewOf(WebKitWebView* webView)
{
    for (auto& entry : views)
        if (entry.second->webView() == webView)
            return entry.second.get();
    return nullptr;
}

// ---------------------------------------------------------------- windows

// A view with WebKit's reports wired; they count once it is a window's.
std::unique_ptr<PageView> WebKitCore::newView(DAXO_TesmoWindow* window)
{
    auto view = std::make_unique<PageView>(context, filter.contentManager(), window, loadTimeout,
                                           !filter.refusesEveryWebSocket());
    WebKitWebView* webView = view->webView();
    g_signal_connect(webView, "load-changed", G_CALLBACK(loadChanged), this);
    g_signal_connect(webView, "load-failed", G_CALLBACK(loadFailed), this);
    g_signal_connect(webView, "close", G_CALLBACK(closeRequested), this);
    g_signal_connect(webView, "web-process-terminated", G_CALLBACK(processEnded), this);
    g_signal_connect(webView, "decide-policy", G_CALLBACK(decidePolicy), this);
    g_signal_connect(webView, "user-message-received", G_CALLBACK(messageReceived), this);
    return view;
}

void WebKitCore::windowCreated(DAXO_TesmoWindow* window)
{
    auto view = spare ? std::move(spare) : newView(window);
    view->assign(window);
    view->setUserAgentExtension(userAgentExtension);
    screen.add(view->widget());
    gtk_widget_set_visible(view->widget(), FALSE);
    views[window] = std::move(view);
}

void WebKitCore::windowDestroyed(DAXO_TesmoWindow* window)
{
    auto found = views.find(window);
    if (found == views.end())
        return;
    g_signal_handlers_disconnect_by_data(found->second->webView(), this);
    channel->forget(found->second->pageId());
    screen.remove(found->second->widget());
    views.erase(found);
    dvb->windowGone(window);
}

void WebKitCore::setVisible(DAXO_TesmoWindow* window, bool visible)
{
    auto found = views.find(window);
    if (found != views.end())
        screen.setVisible(found->second->widget(), visible);
}

// WebKitGTK keeps no way to empty a view's back-forward list; a TV page has no back button
// to reach it, so nothing is left to do.
void WebKitCore::historyCleared(DAXO_TesmoWindow*) {}

void WebKitCore::userAgentChanged(const std::string& extension)
{
    userAgentExtension = extension;
    for (auto& entry : views)
        entry.second->setUserAgentExtension(extension);
}

// ---------------------------------------------------------------- loads

void WebKitCore::load(DAXO_TesmoWindow* window, const std::string& url)
{
    auto found = views.find(window);
    if (found == views.end())
        return;
    if (std::optional<LoadOutcome> ruled = ruledOutcome(url)) {
        sayLoad(window, url, *ruled);
        lateReports.push_back({window, DAXO_TESMO_EVT_LOADING_FINISHED, *ruled});
        return;
    }
    found->second->load(url);
}

// What WebKit reported goes to the library after the next tick, from the TV's loop, never
// from inside WebKit's own signal.
void WebKitCore::afterTick()
{
    checkLoads();
    std::vector<LateReport> due;
    due.swap(lateReports);
    for (const LateReport& report : due) {
        if (!knows(report.window))
            continue;
        activity->note();
        if (report.id == DAXO_TESMO_EVT_LOADING_FINISHED) {
            reportLoad(report.window, report.load);
        } else {
            int result = 0;
            tesmo_hbbtv_handle_notification(nullptr, report.window, report.id, nullptr, &result);
        }
    }
    dvb->afterTick();
}

bool WebKitCore::busy() const
{
    for (const auto& entry : views)
        if (webkit_web_view_is_loading(entry.second->webView()) || entry.second->loads().isAwaiting())
            return true;
    return dvb->busy() || downloads->busy() || !lateReports.empty();
}

// Every load the core reports has one outcome, told once, at the next tick.
void WebKitCore::settle(PageView& view, const std::string& url, const std::optional<LoadOutcome>& outcome)
{
    if (!outcome)
        return;
    sayLoad(view.window(), url, *outcome);
    lateReports.push_back({view.window(), DAXO_TESMO_EVT_LOADING_FINISHED, *outcome});
    if (outcome->end == LoadOutcome::LOADED)
        emit(&view, "Page.loaded", reply::null());  // media may begin now (js/av-control.js)
}

// The bound on a load: one that received nothing for the quiet limit is given up, as a
// connection failure (a page whose document came whole and only a subresource hangs is there).
void WebKitCore::checkLoads()
{
    const PageLoad::Clock::time_point now = PageLoad::Clock::now();
    for (auto& entry : views) {
        PageView& view = *entry.second;
        if (!view.loads().isAwaiting())
            continue;
        const unsigned complete = view.isDocumentComplete() ? std::max(view.documentStatus(), 200u) : 0;
        std::optional<LoadOutcome> outcome = view.loads().check(now, complete);
        if (outcome && outcome->end != LoadOutcome::LOADED) {
            downloads->cancel(view.webView());
            view.stopLoading();
        }
        settle(view, view.loads().url(), outcome);
    }
}

void WebKitCore::loadChanged(WebKitWebView* webView, WebKitLoadEvent event, gpointer data)
{
    auto* self = static_cast<WebKitCore*>(data);
    PageView* view = self->viewOf(webView);
    if (!view || view->isWarmingUp() || !view->loads().isActive())
        return;
    PageLoad& load = view->loads();
    load.isAt(view->uri());
    if (event == WEBKIT_LOAD_STARTED) {
        // Before the new document can ask for anything: the commit would come too late.
        view->applications.clear();
        load.started(PageLoad::Clock::now());
        self->lateReports.push_back({view->window(), DAXO_TESMO_EVT_LOADING_STARTED, {}});
        return;
    }
    load.progressed(PageLoad::Clock::now());
    if (event == WEBKIT_LOAD_FINISHED)
        self->settle(*view, load.url(), load.finished(view->uri(), view->documentStatus()));
}

// A server that cannot be reached (no name, refused, reset, a certificate, a redirect loop)
// is a connection failure; anything else, a failed load. No error page on a TV.
gboolean WebKitCore::loadFailed(WebKitWebView* webView, WebKitLoadEvent, const char* uri, GError* error, gpointer data)
{
    auto* self = static_cast<WebKitCore*>(data);
    PageView* view = self->viewOf(webView);
    if (!view || view->isWarmingUp() || !view->loads().isActive())
        return FALSE;
    if (g_error_matches(error, WEBKIT_NETWORK_ERROR, WEBKIT_NETWORK_ERROR_CANCELLED))
        return TRUE;  // the core or a new navigation stopped it: that one reports
    const bool connection = error->domain != WEBKIT_POLICY_ERROR && error->domain != WEBKIT_PLUGIN_ERROR;
    view->loads().isAt(uri ? uri : "");
    self->settle(*view, view->loads().url(), view->loads().failed(connection, error->message));
    return TRUE;
}

void WebKitCore::closeRequested(WebKitWebView* webView, gpointer data)
{
    auto* self = static_cast<WebKitCore*>(data);
    if (PageView* view = self->viewOf(webView)) {
        self->out->say("the page in " + self->windowName(view->window()) + " closes its window");
        self->lateReports.push_back({view->window(), DAXO_TESMO_EVT_WINDOW_CLOSE, {}});
    }
}

// A page whose web process ended (a crash, a kill, its memory limit) has failed as a TV's
// browser reports it: its window closes, so the library stops the application and keys no
// longer go there. The core's own ending of a page is not reported (its handlers are gone).
void WebKitCore::processEnded(WebKitWebView* webView, WebKitWebProcessTerminationReason reason, gpointer data)
{
    auto* self = static_cast<WebKitCore*>(data);
    PageView* view = self->viewOf(webView);
    if (!view || reason == WEBKIT_WEB_PROCESS_TERMINATED_BY_API)
        return;
    self->out->say(
        "the page in " + self->windowName(view->window()) + " has died (" +
        (reason == WEBKIT_WEB_PROCESS_EXCEEDED_MEMORY_LIMIT ? "over its memory limit" : "its web process crashed") +
        ")");
    self->lateReports.push_back({view->window(), DAXO_TESMO_EVT_WINDOW_CLOSE, {}});
}

// A page names the connection it lives on through its own view, which WebKit alone can
// reach from the page's process: from then on the channel takes that page's calls only from
// that connection.
gboolean WebKitCore::messageReceived(WebKitWebView* webView, WebKitUserMessage* message, gpointer data)
{
    auto* self = static_cast<WebKitCore*>(data);
    GVariant* parameters = webkit_user_message_get_parameters(message);
    if (g_strcmp0(webkit_user_message_get_name(message), "tesmo.channel") != 0 || !parameters ||
        !g_variant_is_of_type(parameters, G_VARIANT_TYPE("(ts)")))
        return FALSE;
    guint64 pageId = 0;
    const char* key = nullptr;
    g_variant_get(parameters, "(t&s)", &pageId, &key);
    if (pageId == webkit_web_view_get_page_id(webView))
        self->channel->bind(pageId, key);
    return TRUE;
}

// Pages open no windows of their own; an XML AIT or a page of HbbTV's type becomes a
// download; what WebKit cannot show otherwise is dropped.
gboolean WebKitCore::decidePolicy(WebKitWebView* webView, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type,
                                  gpointer self)
{
    if (type == WEBKIT_POLICY_DECISION_TYPE_NEW_WINDOW_ACTION) {
        webkit_policy_decision_ignore(decision);
        return TRUE;
    }
    if (type != WEBKIT_POLICY_DECISION_TYPE_RESPONSE)
        return FALSE;
    auto* response = WEBKIT_RESPONSE_POLICY_DECISION(decision);
    PageView* view = static_cast<WebKitCore*>(self)->viewOf(webView);
    if (view && webkit_response_policy_decision_is_main_frame_main_resource(response))
        view->loads().responded(
            webkit_uri_response_get_status_code(webkit_response_policy_decision_get_response(response)),
            saysEmpty(webkit_response_policy_decision_get_response(response)));
    if (PageDownloads::take(response)) {
        if (view)
            view->loads().handedOver(PageLoad::Clock::now());  // the download says what became of it
    } else if (!webkit_response_policy_decision_is_mime_type_supported(response)) {
        webkit_policy_decision_ignore(decision);  // a TV saves no files
    } else {
        return FALSE;
    }
    return TRUE;
}

// ---------------------------------------------------------------- XML AITs

void WebKitCore::xmlAitReceived(WebKitWebView* webView, const std::string& file)
{
    PageView* view = viewOf(webView);
    if (!view)
        return;
    view->loads().settled();
    auto ait = std::make_unique<XmlAit>();
    std::string error;
    int result = 0;
    if (!ait->load(file, error)) {
        out->say("the page's XML AIT does not parse: " + error);
        tesmo_hbbtv_handle_notification(nullptr, view->window(), DAXO_TESMO_EVT_XML_AIT_PARSE_FAILED, nullptr, &result);
        return;
    }
    const bool handled =
        tesmo_hbbtv_handle_notification(nullptr, view->window(), DAXO_TESMO_EVT_AIT, ait->record(), &result);
    out->say("XML AIT received in " + windowName(view->window()) + ": " +
             (handled ? "result " + std::to_string(result) : std::string("not for the library")));
    xmlAits.push_back(std::move(ait));
}

// A page of HbbTV's type: its bytes under the type WebKit shows, with its own URL, so that
// its location, origin, cookies and relative links are the page's.
void WebKitCore::pageReceived(WebKitWebView* webView, GBytes* bytes, const std::string& type, const std::string& uri,
                              unsigned status)
{
    PageView* view = viewOf(webView);
    if (!view)
        return;
    view->loads().isAt(uri);
    const std::optional<LoadOutcome> empty = view->loads().downloaded(g_bytes_get_size(bytes), status);
    if (empty)
        return settle(*view, uri, empty);
    view->showBytes(bytes, type, uri);
}

// ---------------------------------------------------------------- dvb: streams

void WebKitCore::streamMimeType(void* stream, const std::string& mime)
{
    dvb->mimeType(stream, mime);
}

void WebKitCore::streamData(void* stream, const unsigned char* data, unsigned int length)
{
    dvb->data(stream, data, length);
}

void WebKitCore::streamEnded(void* stream, int status, bool finished)
{
    dvb->ended(stream, status, finished);
}

// ---------------------------------------------------------------- pages

std::string WebKitCore::pageCall(guint64 pageId, const std::string& name, const std::string& arguments)
{
    // The TV's own picture asks only for the broadcast's stream.
    if (pageId == picture->pageId())
        return name == "Requests.vet" ? Reply(reply::boolean(true)).json()
                                      : PageObjects::unanswered("the TV's own view");
    for (auto& entry : views) {
        PageView& view = *entry.second;
        if (view.pageId() == pageId)
            return objects->call({view.window(), handleOf(view.window()), view.uri(), &view.applications}, name,
                                 arguments);
    }
    return PageObjects::unanswered("the page has no browser window");
}

void WebKitCore::started()
{
    objects->started();
}

void WebKitCore::tableCompleted()
{
    objects->tableCompleted();
}

void WebKitCore::say(const std::string& line)
{
    out->say(line);
}

void WebKitCore::record(JsonLine line)
{
    out->record(std::move(line));
}

std::string WebKitCore::where(const PageContext& page) const
{
    return windowName(page.window);
}

void WebKitCore::toPage(long handle, const std::string& event, JsonNode* payload)
{
    auto found = views.find(windowNumbered(handle));
    if (found == views.end())
        return json_node_unref(payload);  // the page has gone
    emit(found->second.get(), event, payload);
}

void WebKitCore::toEveryPage(const std::string& event, JsonNode* payload)
{
    emit(nullptr, event, payload);
}

void WebKitCore::emit(const PageView* view, const std::string& event, JsonNode* payload)
{
    char* json = json_to_string(payload, FALSE);
    for (auto& entry : views)
        if (!view || entry.second.get() == view)
            channel->emitEvent(entry.second->pageId(), event, json);
    g_free(json);
    json_node_unref(payload);
}

// A key the library admitted goes into the page as the engine's own input, so that the page
// gets trusted events and their default actions (ENTER follows a focused link).
void WebKitCore::keyEvent(int action, DAXO_KEY_SYM key)
{
    auto found = views.find(activeWindow());
    const RemoteKey* remote = remoteKeyByReceiverCode(int32_t(key));
    if (found != views.end() && remote)
        found->second->sendKey(action == 0, remote->engineKeyval);
}

void WebKitCore::streamEvent(void* listener, const std::string& name, const std::string& data, const std::string& text,
                             const std::string& status)
{
    objects->streamEvent(listener, name, data, text, status);
}

// The TV's picture and its service name follow it to the new service, as the pages' objects do.
void WebKitCore::channelChanged(const Channel& channel)
{
    picture->setSource(pictures.urlOf(channel.serviceId));
    screen.setServiceName(channel.name);
    objects->channelChanged(channel);
}

void WebKitCore::applicationEvent(const char* name, uint32_t applicationId)
{
    objects->applicationEvent(name, applicationId);
}

void WebKitCore::evaluate(const std::string& script, std::function<void(const std::string&)> done)
{
    auto found = views.find(activeWindow());
    if (found == views.end())
        return done("(no page)");
    found->second->evaluate(script, std::move(done));
}
