#include "BrowserCore.h"

#include <glib.h>

#include "LibraryNumbers.h"
#include "tesmo_hbbtv/tesmo_hbbtv.h"

namespace {

const unsigned HTTP_NOT_FOUND = 404;

}  // namespace

void BrowserCore::attach(Timeline& timeline, LoadRules& loadRules, Activity& platformActivity)
{
    out = &timeline;
    rules = &loadRules;
    activity = &platformActivity;
}

// ---------------------------------------------------------------- windows

DAXO_TesmoWindow* BrowserCore::grantWindow()
{
    // The library holds the window as an opaque pointer; a number in its place will do.
    auto* granted = reinterpret_cast<DAXO_TesmoWindow*>(uintptr_t(0x10000) * uintptr_t(++windowsGranted));
    windows[granted] = {windowsGranted, ""};
    windowCreated(granted);
    return granted;
}

void BrowserCore::releaseWindow(DAXO_TesmoWindow* window)
{
    if (windows.erase(window))
        windowDestroyed(window);
}

std::string BrowserCore::windowName(const DAXO_TesmoWindow* window) const
{
    auto found = windows.find(const_cast<DAXO_TesmoWindow*>(window));
    return found == windows.end() ? "an unknown window" : "browser window #" + std::to_string(found->second.number);
}

DAXO_TesmoWindow* BrowserCore::activeWindow() const
{
    return knows(lastOpened) ? lastOpened : nullptr;
}

long BrowserCore::handleOf(const DAXO_TesmoWindow* window) const
{
    auto found = windows.find(const_cast<DAXO_TesmoWindow*>(window));
    return found == windows.end() ? 0 : found->second.number;
}

std::optional<LoadOutcome> BrowserCore::ruledOutcome(const std::string& url) const
{
    if (rules->shouldFail(url))
        return LoadOutcome{LoadOutcome::FAILED, 0, "as told"};
    const int status = rules->statusFor(url);
    if (status != 200)
        return LoadOutcome{LoadOutcome::LOADED, unsigned(status), ""};
    return std::nullopt;
}

void BrowserCore::sayLoad(DAXO_TesmoWindow* window, const std::string& url, const LoadOutcome& outcome)
{
    const std::string where = url + " in " + windowName(window);
    if (outcome.end != LoadOutcome::LOADED)
        out->say("load failed: " + where + (outcome.reason.empty() ? "" : " (" + outcome.reason + ")"));
    else if (outcome.status >= 400 || outcome.status < 200)
        out->say("HTTP " + std::to_string(outcome.status) + ": " + where);
    else
        out->say("loaded: " + where);
}

void BrowserCore::reportLoad(DAXO_TesmoWindow* window, const LoadOutcome& outcome)
{
    const bool errorPage =
        outcome.end == LoadOutcome::LOADED && outcome.status >= 400 && outcome.status != HTTP_NOT_FOUND;
    DAXO_LoadRecord record{};
    record.outcome = outcome.end == LoadOutcome::CONNECTION_FAILED ? library::LOAD_CONNECTION_FAILED : 0;
    record.http_status = outcome.end == LoadOutcome::LOADED ? int16_t(outcome.status) : 0;
    const int id = outcome.end == LoadOutcome::FAILED || errorPage ? DAXO_TESMO_EVT_LOADING_FAILED
                                                                   : DAXO_TESMO_EVT_LOADING_FINISHED;
    int result = 0;
    tesmo_hbbtv_handle_notification(nullptr, window, id, id == DAXO_TESMO_EVT_LOADING_FINISHED ? &record : nullptr,
                                    &result);
}

// ---------------------------------------------------------------- the library's calls

int BrowserCore::openUrl(DAXO_TesmoWindow* window, const char* url)
{
    activity->note();
    const std::string text = url ? url : "";
    out->record(JsonLine().field("call", "tm_open_url").pointer("window", window).field("url", url));
    out->say("open " + text + " in " + windowName(window));
    if (knows(window)) {
        windows[window].url = text;
        lastOpened = window;
    }
    load(window, text);
    return 0;
}

void BrowserCore::clearHistory(DAXO_TesmoWindow* window)
{
    out->record(JsonLine().field("call", "tm_clear_history").pointer("window", window));
    if (knows(window))
        historyCleared(window);
}

int BrowserCore::loadingUrl(DAXO_TesmoWindow* window, const char** url, int flags)
{
    out->record(JsonLine().field("call", "tm_get_loading_url").pointer("window", window).field("flags", flags));
    auto found = windows.find(window);
    if (found == windows.end())
        return -1;
    *url = found->second.url.c_str();
    return 0;
}

DAXO_TesmoWindow* BrowserCore::windowNumbered(long handle) const
{
    for (const auto& entry : windows)
        if (entry.second.number == handle)
            return entry.first;
    return nullptr;
}

int BrowserCore::windowOfHandle(long handle, DAXO_TesmoWindow** window)
{
    out->record(JsonLine().field("call", "tm_get_window").field("handle", handle));
    *window = windowNumbered(handle);
    return *window ? 0 : -1;
}

// RFC 3986 resolution, by GLib; a base it cannot parse leaves the reference as it is.
int BrowserCore::resolveRelative(const char* base, const char* relative, char** result)
{
    GError* error = nullptr;
    char* joined =
        g_uri_resolve_relative(base && *base ? base : nullptr, relative ? relative : "", G_URI_FLAGS_NONE, &error);
    resolved = joined ? joined : (relative ? relative : "");
    g_free(joined);
    g_clear_error(&error);
    out->record(JsonLine()
                    .field("call", "tm_resolve_relative_url")
                    .field("base", base)
                    .field("relative", relative)
                    .field("result", resolved));
    *result = &resolved[0];
    return 0;
}

void BrowserCore::protocolMimeType(void* stream, const char* mime)
{
    out->record(
        JsonLine().field("call", "tm_protocol_set_mime_type").pointer("stream", stream).field("mime_type", mime));
    streamMimeType(stream, mime ? mime : "");
}

void BrowserCore::protocolWrite(void* stream, const unsigned char* data, unsigned int length)
{
    out->record(JsonLine().field("call", "tm_protocol_write").pointer("stream", stream).field("length", length));
    streamData(stream, data, length);
}

void BrowserCore::protocolEnd(void* stream, int status, bool finished)
{
    out->record(JsonLine()
                    .field("call", finished ? "tm_protocol_finished" : "tm_protocol_failed")
                    .pointer("stream", stream)
                    .field("status", status));
    streamEnded(stream, status, finished);
}

void BrowserCore::userAgent(const char* text)
{
    out->record(JsonLine().field("call", "tm_set_uastring_extension").field("text", text));
    out->say(std::string("user-agent extension: ") + (text ? text : ""));
    userAgentChanged(text ? text : "");
}

void BrowserCore::keyboard(int action, DAXO_KEY_SYM key, uint8_t modifiers)
{
    out->record(JsonLine()
                    .field("call", "daxo_keyboard_evt")
                    .field("action", action)
                    .field("key", key)
                    .field("modifiers", modifiers));
    keyEvent(action, key);
}
