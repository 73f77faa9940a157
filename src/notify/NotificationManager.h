#ifndef TESMO_HBBTV_NOTIFY_NOTIFICATIONMANAGER_H
#define TESMO_HBBTV_NOTIFY_NOTIFICATIONMANAGER_H

#include <memory>
#include <vector>

#include "notify/Notification.h"

namespace TesmoHbbTV {

// The platform's listeners, called in registration order for every notification.
class NotificationManager {
public:
    static NotificationManager* getInstance();
    // The instance if there is one, without building it.
    static NotificationManager* existingInstance() { return instance; }

    void init() {}
    // Destroys this instance; a later getInstance() builds a fresh one without listeners.
    void shutdown();

    void addListener(HBBTV_NotificationListener listener);
    void removeListener(HBBTV_NotificationListener listener);

    // Takes the record, hands it to every listener and destroys it, which copies the answer
    // back to the asker.
    void broadcast(Notification* notification);

    // Raises a record built from the arguments, when there is a manager.
    template <typename Record, typename... Args> static void raise(Args&&... args)
    {
        if (NotificationManager* manager = getInstance())
            manager->broadcast(new Record(std::forward<Args>(args)...));
    }

    NotificationManager(const NotificationManager&) = delete;
    NotificationManager& operator=(const NotificationManager&) = delete;

private:
    NotificationManager() = default;
    ~NotificationManager();

    std::vector<HBBTV_NotificationListener> listeners;

    static NotificationManager* instance;
};

}  // namespace TesmoHbbTV

#endif
