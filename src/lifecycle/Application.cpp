#include "lifecycle/Application.h"

#include "api/ConfigurationManager.h"
#include "lifecycle/Window.h"
#include "notify/BroadcastRelatedChangeNotification.h"
#include "notify/HideWindowNotification.h"
#include "notify/NotificationManager.h"
#include "notify/ReleaseWindowNotification.h"
#include "notify/RequestWindowNotification.h"
#include "notify/ShowWindowNotification.h"
#include "tesmo_hbbtv/platform.h"

namespace TesmoHbbTV {

uint32_t Application::next_id = 1;

Application::Application(Window* window, const HbbTVURL& url, AITApplication* aitApplication)
    : identifier(next_id++), window(window), url(url), aitApplication(aitApplication),
      aitTable(aitApplication ? aitApplication->getAIT() : nullptr), domain(std::make_unique<ApplicationDomain>())
{
    domain->addBoundaryExtension(url.getFullUrl());
    extendDomainFromAITApplication();
    // Issued while the field is still false: a broadcast-related application announces
    // itself during construction.
    setBroadcastRelated(aitApplication && !aitApplication->isXMLAITbased());
    shown = !broadcastRelated;
    keySet =
        std::make_unique<KeySet>(broadcastRelated ? 0 : ConfigurationManager::getInstance()->getSupportedKeyInput());
    if (aitApplication) {
        organisationId = aitApplication->getOrganisationIdentifier();
        applicationId = aitApplication->getApplicationIdentifier();
    }
}

Application::~Application()
{
    releaseBrowserWindow();
}

void Application::releaseBrowserWindow()
{
    if (!browserWindow)
        return;
    bool released = false;
    NotificationManager::raise<ReleaseWindowNotification>(&browserWindow, &released);
    browserWindow = nullptr;
}

void Application::extendDomainFromAITApplication()
{
    if (aitApplication)
        domain->extendDomain(*aitApplication->getApplicationDomain());
}

bool Application::init()
{
    if (browserWindow)
        return false;
    bool granted = false;
    NotificationManager::raise<RequestWindowNotification>(&browserWindow, &granted, window);
    return granted && browserWindow;
}

void Application::loadInitialPage()
{
    tm_clear_history(browserWindow);
    tm_open_url(browserWindow, url.getFullUrl().c_str());
}

// An application started from a parent appears only once its first page is loaded; the
// window shows it again at that moment.
void Application::show()
{
    if (!browserWindow)
        return;
    shown = true;
    if (!initialPageLoaded && hasParentApplication())
        return;
    NotificationManager::raise<ShowWindowNotification>(&browserWindow);
}

void Application::hide()
{
    if (!browserWindow)
        return;
    shown = false;
    NotificationManager::raise<HideWindowNotification>(&browserWindow);
}

void Application::setBroadcastRelated(bool related)
{
    const bool changed = related != broadcastRelated;
    broadcastRelated = related;
    if (!changed)
        return;
    const unsigned char usage = aitApplication ? aitApplication->getApplicationUsageType() : 0;
    NotificationManager::raise<BroadcastRelatedChangeNotification>(window, related, constantFlag, launchedAsAutostart,
                                                                   organisationId, applicationId,
                                                                   url.getFullUrl().c_str(), usage);
}

ApplicationDomain* Application::getApplicationDomain() const
{
    return aitApplication ? aitApplication->getApplicationDomain() : domain.get();
}

bool Application::isWithinApplicationBoundaries(const HbbTVURL& candidate) const
{
    if (domain->isWithinBoundaries(candidate.getFullUrl()))
        return true;
    if (!transport || transport->getProtocolId() != AITApplicationTransport::OBJECT_CAROUSEL)
        return false;
    int same = 0;
    dsmcc_same_carousel(candidate.getBaseUrl().c_str(), url.getBaseUrl().c_str(), &same);
    return same != 0;
}

bool Application::isWithinApplicationBoundaries(const char* candidate) const
{
    return isWithinApplicationBoundaries(HbbTVURL(candidate ? candidate : ""));
}

void Application::setInitialPageLoaded()
{
    initialPageLoaded = true;
    xmlAITAllowed = false;
}

void Application::setAITApplication(AITApplication* entry)
{
    aitApplication = entry;
    aitTable.reset(entry ? entry->getAIT() : nullptr);
}

Application* Application::getParentApplication() const
{
    return parentId ? window->findApplication(parentId) : nullptr;
}

void Application::adoptParentOf(Application& other)
{
    parentId = other.parentId;
    other.parentId = 0;
}

}  // namespace TesmoHbbTV
