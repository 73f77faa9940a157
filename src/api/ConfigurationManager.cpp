#include "api/ConfigurationManager.h"

#include "api/ThreadsafeEventQueue.h"
#include "carousel/OCDownloadManager.h"
#include "tesmo_hbbtv/platform.h"

namespace TesmoHbbTV {

std::atomic<ConfigurationManager*> ConfigurationManager::instance{nullptr};
std::mutex ConfigurationManager::queueMutex;

ConfigurationManager* ConfigurationManager::getInstance()
{
    if (!instance)
        instance = new ConfigurationManager();
    return instance;
}

void ConfigurationManager::destroyInstance()
{
    ConfigurationManager* gone;
    {
        std::lock_guard<std::mutex> lock(queueMutex);
        gone = instance.exchange(nullptr);
    }
    delete gone;
}

ThreadsafeEventQueue* ConfigurationManager::existingEventQueue()
{
    ConfigurationManager* config = instance;
    return config ? config->eventQueue : nullptr;
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
    auto* queue = new ThreadsafeEventQueue();
    {
        std::lock_guard<std::mutex> lock(queueMutex);
        eventQueue = queue;
    }
    supportedKeyInput = hbbtv_keyset_get_supported_values();
}

}  // namespace TesmoHbbTV
