#include "api/ConfigurationManager.h"

#include "api/ThreadsafeEventQueue.h"
#include "carousel/OCDownloadManager.h"
#include "tesmo_hbbtv/platform.h"

namespace TesmoHbbTV {

ConfigurationManager* ConfigurationManager::instance = nullptr;

ConfigurationManager* ConfigurationManager::getInstance()
{
    if (!instance)
        instance = new ConfigurationManager();
    return instance;
}

void ConfigurationManager::destroyInstance()
{
    delete instance;
}

ConfigurationManager::~ConfigurationManager()
{
    delete downloadManager;
    delete eventQueue;
    instance = nullptr;
}

void ConfigurationManager::init(DAXO_Tesmo* core)
{
    browserCore = core;
    // A repeated init abandons the previous objects unfreed: init runs once per library start.
    downloadManager = new OCDownloadManager();
    eventQueue = new ThreadsafeEventQueue();
    supportedKeyInput = hbbtv_keyset_get_supported_values();
}

} // namespace TesmoHbbTV
