#include "ObjectRegistry.h"

#include "ApplicationManagerObject.h"
#include "AvControlObject.h"
#include "CapabilitiesObject.h"
#include "ConfigurationObject.h"
#include "KeysObject.h"
#include "PageReportObject.h"
#include "RequestsObject.h"
#include "StreamEventsObject.h"
#include "VideoBroadcastObject.h"

const std::vector<RegisteredObject>& objectRegistry()
{
    using Made = std::unique_ptr<PageObject>;
    static const std::vector<RegisteredObject> registry = {
        {{"keys.js"}, [](const ObjectParts&) -> Made { return std::make_unique<KeysObject>(); }},
        // Gives tv.channelOf, which the application manager's private data uses; tv.components
        // serves the A/V control object too, and tv.parentalRating the parental control manager.
        {{"av-components.js", "programmes.js", "video-broadcast.js"},
         [](const ObjectParts& p) -> Made {
             return std::make_unique<VideoBroadcastObject>(p.services, p.tuner, p.screen);
         }},
        {{"application-manager.js"},
         [](const ObjectParts& p) -> Made { return std::make_unique<ApplicationManagerObject>(p.services); }},
        {{"configuration.js"},
         [](const ObjectParts& p) -> Made { return std::make_unique<ConfigurationObject>(p.options); }},
        {{"capabilities.js"},
         [](const ObjectParts& p) -> Made { return std::make_unique<CapabilitiesObject>(p.options); }},
        {{"parental-control.js"}, nullptr},
        {{"object-factory.js"}, nullptr},
        {{"stream-events.js"},
         [](const ObjectParts& p) -> Made { return std::make_unique<StreamEventsObject>(p.services); }},
        {{"dash-manifest.js", "dash-player.js", "av-control.js"},
         [](const ObjectParts& p) -> Made { return std::make_unique<AvControlObject>(p.services); }},
        {{"request-bounds.js"},
         [](const ObjectParts& p) -> Made {
             return std::make_unique<RequestsObject>(p.services, p.policy, p.pictures);
         }},
        {{"page.js"},
         [](const ObjectParts& p) -> Made {
             return std::make_unique<PageReportObject>(p.services, std::chrono::milliseconds(p.options.loadTimeoutMs));
         }},
    };
    return registry;
}

std::vector<std::string> pageScripts()
{
    std::vector<std::string> scripts = {"bridge.js"};
    for (const RegisteredObject& object : objectRegistry())
        scripts.insert(scripts.end(), object.scripts.begin(), object.scripts.end());
    return scripts;
}
