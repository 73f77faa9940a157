#include "WebKitCore.h"

#include <set>

#include "RemoteKeys.h"
#include "objects/StreamEventsObject.h"
#include "tesmo_hbbtv/tesmo_hbbtv.h"

namespace {

// Calls a page makes to ask, which the timeline does not tell.
bool isQuestion(const std::string& name)
{
    static const std::set<std::string> questions = {"ApplicationManager.getOwnerApplication", "KeySet.value",
                                                    "KeySet.maximumValue", "PrivateData.getFreeMem",
                                                    "PrivateData.currentChannel", "Keys.table", "ChannelConfig.channelList",
                                                    "Requests.vet", "Page.painted", "Page.debug",
                                                    "Terminal.configuration", "Terminal.capabilities",
                                                    "AvControl.changed", "Page.loadTimeout"};
    return questions.count(name) != 0;
}

// The page objects' scripts, the bridge first, each with the URI its errors name.
GVariant* pageScripts(const std::string& directory)
{
    static const char* const files[] = {"bridge.js",         "keys.js",          "video-broadcast.js", "application-manager.js",
                                        "configuration.js",  "capabilities.js",  "parental-control.js",
                                        "object-factory.js", "stream-events.js", "dash-player.js",
                                        "av-control.js",      "request-bounds.js", "page.js"};
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a(ss)"));
    for (const char* file : files) {
        const std::string path = directory + "/" + file;
        char* source = nullptr;
        if (!g_file_get_contents(path.c_str(), &source, nullptr, nullptr))
            g_warning("the page script %s is missing", path.c_str());
        char* uri = g_filename_to_uri(path.c_str(), nullptr, nullptr);
        g_variant_builder_add(&builder, "(ss)", uri ? uri : path.c_str(), source ? source : "(function () {})");
        g_free(uri);
        g_free(source);
    }
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
                        GSpawnFlags(G_SPAWN_SEARCH_PATH | G_SPAWN_STDOUT_TO_DEV_NULL | G_SPAWN_STDERR_TO_DEV_NULL), nullptr,
                        nullptr, nullptr, nullptr, &status, nullptr) &&
           g_spawn_check_wait_status(status, nullptr);
}

} // namespace

WebKitCore::WebKitCore(TvScreen& tvScreen, const BroadcastPicture& broadcastPictures, const std::string& extensionDirectory,
                       const std::string& scriptDirectory, const Options& options)
    : screen(tvScreen), pictures(broadcastPictures), filter(options.refusedRequests),
      loadTimeout(std::chrono::milliseconds(options.loadTimeoutMs)), videoBroadcast(tvScreen, broadcastPictures),
      avControl([this](const PageContext& page, const std::string& line) { out->say(line + " (" + windowName(page.window) + ")"); })
{
    channel = std::make_unique<ScriptChannel>([this](guint64 page, const std::string& name, const std::string& arguments) {
        return pageCall(page, name, arguments);
    });
    coreMethods = {
        {"Page.painted", [this](const PageContext& page, const Arguments&) { return painted(page); }},
        // The bound the page's media and requests keep, as the core keeps it for its loads.
        {"Page.loadTimeout", [this](const PageContext&, const Arguments&) { return reply::number(double(loadTimeout.count())); }},
        {"Page.debug", [this](const PageContext& page, const Arguments& args) {
             out->say("the page in " + windowName(page.window) + " says: " + args.text(0));
             return reply::null();
         }},
    };
    objects.add(coreMethods);
    objects.add(videoBroadcast.methods());
    objects.add(avControl.methods());
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
        context, g_variant_new("(s@a(ss))", channel->address().c_str(), pageScripts(scriptDirectory)));
    auto windowOfView = [this](WebKitWebView* webView) -> DAXO_TesmoWindow* {
        PageView* view = viewOf(webView);
        return view ? view->window() : nullptr;
    };
    picture = std::make_unique<PictureView>(context, filter.contentManager());
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
    auto view = std::make_unique<PageView>(context, filter.contentManager(), window, loadTimeout, !filter.refusesEveryWebSocket());
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
        if (webkit_web_view_is_loading(entry.second->webView()))
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
    self->out->say("the page in " + self->windowName(view->window()) + " has died (" +
                   (reason == WEBKIT_WEB_PROCESS_EXCEEDED_MEMORY_LIMIT ? "over its memory limit" : "its web process crashed") + ")");
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
        view->loads().responded(webkit_uri_response_get_status_code(webkit_response_policy_decision_get_response(response)),
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
    const bool handled = tesmo_hbbtv_handle_notification(nullptr, view->window(), DAXO_TESMO_EVT_AIT, ait->record(), &result);
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
        return name == "Requests.vet" ? "true" : "null";
    PageView* view = nullptr;
    for (auto& entry : views)
        if (entry.second->pageId() == pageId)
            view = entry.second.get();
    if (!view)
        return "null";
    const std::string answer = objects.call({view->window(), handleOf(view->window()), view->uri(), &view->applications}, name, arguments);
    describeCall(*view, name, arguments, answer);
    return answer;
}

void WebKitCore::describeCall(const PageView& view, const std::string& name, const std::string& arguments,
                              const std::string& answer)
{
    if (name == "Page.painted" || name == "Page.debug")
        return;
    out->record(JsonLine().field("page_call", name).field("arguments", arguments).field("answer", answer));
    if (name == "Requests.vet" && answer == "false")
        out->say("the page's request for " + (arguments.size() >= 4 ? arguments.substr(2, arguments.size() - 4) : arguments) +
                 " is refused");
    else if (!isQuestion(name))
        out->say("the page calls " + name + " " + arguments + ": " + answer + " (" + windowName(view.window()) + ")");
}

// The first paint is measured from the AIT that the library completed first (from the start
// for a page the platform starts itself).
void WebKitCore::tableCompleted()
{
    if (!tableSeen && !firstPaintSeen)
        startClock();
    tableSeen = true;
}

JsonNode* WebKitCore::painted(const PageContext& page)
{
    if (!firstPaintSeen) {
        firstPaintSeen = true;
        const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - clockStart);
        out->say("first paint in " + windowName(page.window) + ": " + std::to_string(ms.count()) + " ms after " +
                 (tableSeen ? "the AIT was complete" : "the start"));
    }
    return reply::null();
}

void WebKitCore::toPage(const PageView& view, const std::string& name, const std::string& payloadJson)
{
    channel->emitEvent(view.pageId(), name, payloadJson);
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

// A stream event goes to the page whose listener subscribed it.
void WebKitCore::streamEvent(void* listener, const std::string& name, const std::string& data, const std::string& text,
                             const std::string& status)
{
    auto found = views.find(windowNumbered(StreamEventsObject::pageOf(listener)));
    if (found == views.end())
        return;
    JsonObject* event = json_object_new();
    json_object_set_int_member(event, "listener", StreamEventsObject::numberOf(listener));
    json_object_set_string_member(event, "name", name.c_str());
    json_object_set_string_member(event, "data", data.c_str());
    json_object_set_string_member(event, "text", text.c_str());
    json_object_set_string_member(event, "status", status.c_str());
    JsonNode* node = reply::object(event);
    char* json = json_to_string(node, FALSE);
    toPage(*found->second, "StreamEvents.event", json);
    g_free(json);
    json_node_unref(node);
}

// Every page's video/broadcast objects follow the TV to the new service.
void WebKitCore::channelChanged(const Channel& channel)
{
    picture->setSource(pictures.urlOf(channel.serviceId));
    screen.setServiceName(channel.name);
    JsonNode* json = VideoBroadcastObject::channelJson(channel);
    char* text = json_to_string(json, FALSE);
    for (auto& entry : views)
        toPage(*entry.second, "VideoBroadcast.channelChanged", text);
    g_free(text);
    json_node_unref(json);
}

void WebKitCore::applicationEvent(const char* name, uint32_t applicationId)
{
    for (auto& entry : views)
        toPage(*entry.second, std::string("ApplicationManager.") + name, std::to_string(applicationId));
}
void WebKitCore::evaluate(const std::string& script, std::function<void(const std::string&)> done)
{
    auto found = views.find(activeWindow());
    if (found == views.end())
        return done("(no page)");
    found->second->evaluate(script, std::move(done));
}
