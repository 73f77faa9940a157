#ifndef TESMO_TV_BROWSERCORE_H
#define TESMO_TV_BROWSERCORE_H

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "Activity.h"
#include "LoadOutcome.h"
#include "LoadRules.h"
#include "Timeline.h"
#include "tesmo_hbbtv/browser_core.h"

// The browser core around the library: its tm_ functions and daxo_keyboard_evt land here.
// The platform grants and releases its windows on the library's requests; what it keeps of
// them (number, URL, where keys go) is common, how a page loads is each core's own.
class BrowserCore {
public:
    virtual ~BrowserCore() = default;
    void attach(Timeline& timeline, LoadRules& loadRules, Activity& activity);

    // ---- the platform's side
    DAXO_TesmoWindow* grantWindow();
    void releaseWindow(DAXO_TesmoWindow* window);
    virtual void setVisible(DAXO_TesmoWindow*, bool) {}
    std::string windowName(const DAXO_TesmoWindow* window) const;
    // Keys and the page's actions go to the window a page was last opened in.
    DAXO_TesmoWindow* activeWindow() const;
    long handleOf(const DAXO_TesmoWindow* window) const;
    // The window of a handle, or null.
    DAXO_TesmoWindow* windowNumbered(long handle) const;
    // After each tesmo_hbbtv_tick.
    virtual void afterTick() {}
    // Loads still under way: the run is not over.
    virtual bool busy() const { return false; }
    // The platform has tuned to another service.
    virtual void channelChanged(const struct Channel&) {}
    // The library has taken a complete AIT.
    virtual void tableCompleted() {}
    // The service's present/following programmes have changed (TvPlatform::programmes()).
    virtual void programmesChanged() {}
    // A stream event for the page's listener that subscribed it.
    virtual void streamEvent(void* /*listener*/, const std::string& /*name*/, const std::string& /*data*/,
                             const std::string& /*text*/, const std::string& /*status*/)
    {
    }

    // ---- the library's calls
    int openUrl(DAXO_TesmoWindow* window, const char* url);
    void clearHistory(DAXO_TesmoWindow* window);
    int loadingUrl(DAXO_TesmoWindow* window, const char** url, int flags);
    int windowOfHandle(long handle, DAXO_TesmoWindow** window);
    int resolveRelative(const char* base, const char* relative, char** result);
    void protocolMimeType(void* stream, const char* mime);
    void protocolWrite(void* stream, const unsigned char* data, unsigned int length);
    void protocolEnd(void* stream, int status, bool finished);
    void userAgent(const char* text);
    void keyboard(int action, DAXO_KEY_SYM key, uint8_t modifiers);

protected:
    virtual void windowCreated(DAXO_TesmoWindow*) {}
    virtual void windowDestroyed(DAXO_TesmoWindow*) {}
    virtual void load(DAXO_TesmoWindow* window, const std::string& url) = 0;
    virtual void historyCleared(DAXO_TesmoWindow*) {}
    virtual void streamMimeType(void*, const std::string&) {}
    virtual void streamData(void* stream, const unsigned char* data, unsigned int length) = 0;
    virtual void streamEnded(void* stream, int status, bool finished) = 0;
    virtual void userAgentChanged(const std::string&) {}
    virtual void keyEvent(int, DAXO_KEY_SYM) {}

    bool knows(const DAXO_TesmoWindow* window) const
    {
        return windows.count(const_cast<DAXO_TesmoWindow*>(window)) != 0;
    }
    // The outcome the --fail and --status rules give url, if any.
    std::optional<LoadOutcome> ruledOutcome(const std::string& url) const;
    // The timeline's line for a load's outcome.
    void sayLoad(DAXO_TesmoWindow* window, const std::string& url, const LoadOutcome& outcome);
    // A load's outcome as the core reports it to the library: a page that loaded finishes with
    // its HTTP status (404 is the library's own failure); an error page (any other 4xx or 5xx)
    // is not the application, so it fails, as does a page that did not load; a server that
    // could not be reached finishes as a connection failure.
    void reportLoad(DAXO_TesmoWindow* window, const LoadOutcome& outcome);

    Timeline* out = nullptr;
    LoadRules* rules = nullptr;
    // What the core reports to the library and what the library asks of it count as activity.
    Activity* activity = nullptr;

private:
    struct BrowserWindow {
        int number;
        std::string url;
    };

    std::map<DAXO_TesmoWindow*, BrowserWindow> windows;
    int windowsGranted = 0;
    DAXO_TesmoWindow* lastOpened = nullptr;
    std::string resolved;  // handed to the library by tm_resolve_relative_url
};

#endif
