#include "notify/NotificationManager.h"

#include <algorithm>

namespace TesmoHbbTV {

NotificationManager* NotificationManager::instance = nullptr;

NotificationManager* NotificationManager::getInstance()
{
    if (!instance)
        instance = new NotificationManager();
    return instance;
}

NotificationManager::~NotificationManager()
{
    instance = nullptr;
}

void NotificationManager::shutdown()
{
    delete this;
}

void NotificationManager::addListener(HBBTV_NotificationListener listener)
{
    if (listener)
        listeners.push_back(listener);
}

void NotificationManager::removeListener(HBBTV_NotificationListener listener)
{
    auto found = std::find(listeners.begin(), listeners.end(), listener);
    if (listener && found != listeners.end())
        listeners.erase(found);
}

void NotificationManager::broadcast(Notification* notification)
{
    std::unique_ptr<Notification> record(notification);
    // By index: a listener that registers another may grow the list under the loop.
    for (size_t i = 0; i < listeners.size(); ++i)
        record->call(listeners[i]);
}

}  // namespace TesmoHbbTV
