#ifndef TESMO_BROWSER_OBJECTREGISTRY_H
#define TESMO_BROWSER_OBJECTREGISTRY_H

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "BroadcastPicture.h"
#include "ChannelControl.h"
#include "Options.h"
#include "PageObject.h"
#include "RequestPolicy.h"
#include "TvScreen.h"

// What the TV has for its page objects; each takes what it needs.
struct ObjectParts {
    ObjectServices& services;
    ChannelControl& tuner;
    const Options& options;
    const RequestPolicy& policy;
    TvScreen& screen;
    const BroadcastPicture& pictures;
};

struct RegisteredObject {
    std::vector<std::string> scripts;  // in js/, in the order they run
    // Its side in the TV; null for an object that is its script alone.
    std::function<std::unique_ptr<PageObject>(const ObjectParts&)> make;
};

// Every page object, in the order their scripts run in a page after the bridge: a script may
// use what the scripts above it give the bridge.
const std::vector<RegisteredObject>& objectRegistry();

// The scripts of every page, in the order they run: the bridge, then the objects'.
std::vector<std::string> pageScripts();

#endif
