#ifndef TESMO_HBBTV_LIFECYCLE_APPLICATION_H
#define TESMO_HBBTV_LIFECYCLE_APPLICATION_H

#include <cstdint>
#include <memory>

#include "bindings/KeySet.h"
#include "si/AIT.h"
#include "si/AITApplication.h"
#include "si/ApplicationDomain.h"
#include "si/HbbTVURL.h"
#include "support/ref_ptr.h"
#include "tesmo_hbbtv/browser_core.h"

namespace TesmoHbbTV {

class Window;

// One HbbTV application instance in a managed window.
class Application {
public:
    // window owns the application and outlives it; aitApplication may be null (started by
    // URL only).
    Application(Window* window, const HbbTVURL& url, AITApplication* aitApplication);
    virtual ~Application();

    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    virtual uint32_t getID() const { return identifier; }
    virtual Window* getWindow() const { return window; }
    virtual void setDaxoWindow(DAXO_TesmoWindow* daxoWindow) { browserWindow = daxoWindow; }
    virtual DAXO_TesmoWindow* getDaxoWindow() const { return browserWindow; }

    // Asks the platform for a browser window; true when one is now held.
    bool init();
    // Gives the browser window back to the platform, once.
    void releaseBrowserWindow();
    void loadInitialPage();
    void show();
    void hide();

    void setBroadcastRelated(bool related);
    bool isBroadcastRelated() const { return broadcastRelated; }

    ApplicationDomain* getApplicationDomain() const;
    bool isWithinApplicationBoundaries(const HbbTVURL& url) const;
    bool isWithinApplicationBoundaries(const char* url) const;

    void setInitialPageLoaded();
    bool isInitialPageLoaded() const { return initialPageLoaded; }
    void setTransport(AITApplicationTransport* newTransport) { transport.reset(newTransport); }
    AITApplicationTransport* getTransport() const { return transport.get(); }

    const HbbTVURL& getURL() const { return url; }
    AITApplication* getAITApplication() const { return aitApplication; }
    // Changes only the entry: identifiers, domain and broadcast relation stay.
    void setAITApplication(AITApplication* entry);
    KeySet* getKeySet() const { return keySet.get(); }
    bool isLaunchedAsAutostart() const { return launchedAsAutostart; }
    void setLaunchedAsAutostart(bool value) { launchedAsAutostart = value; }
    bool isShown() const { return shown; }
    void setXMLAITAllowed() { xmlAITAllowed = true; }
    bool isXMLAITAllowed() const { return xmlAITAllowed; }
    void setFailedToParse() { failedToParse = true; }
    bool getFailedToParse() const { return failedToParse; }
    uint32_t getOrganisationIdentifier() const { return organisationId; }
    uint16_t getApplicationIdentifier() const { return applicationId; }

    // The parent is remembered by identifier and found among the window's applications, so
    // that a parent that is gone is never reached through a stale pointer.
    Application* getParentApplication() const;
    void setParentApplication(Application* parent) { parentId = parent ? parent->getID() : 0; }
    bool hasParentApplication() const { return parentId != 0; }
    // Takes over other's parent and clears it there.
    void adoptParentOf(Application& other);

    static uint32_t next_id;

private:
    void extendDomainFromAITApplication();

    uint32_t identifier;
    Window* window;  // the owner
    DAXO_TesmoWindow* browserWindow = nullptr;  // the platform's
    HbbTVURL url;
    AITApplication* aitApplication;  // lives in aitTable
    ref_ptr<AIT> aitTable;  // keeps the entry's table alive while it is used
    ref_ptr<AITApplicationTransport> transport;
    const bool constantFlag = true;
    bool initialPageLoaded = false;
    bool launchedAsAutostart = false;
    bool broadcastRelated = false;
    bool xmlAITAllowed = false;
    bool shown = true;
    bool failedToParse = false;
    uint32_t organisationId = 0;
    uint16_t applicationId = 0;
    std::unique_ptr<ApplicationDomain> domain;
    std::unique_ptr<KeySet> keySet;
    uint32_t parentId = 0;
};

}  // namespace TesmoHbbTV

#endif
