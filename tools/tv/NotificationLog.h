#ifndef TESMO_TV_NOTIFICATIONLOG_H
#define TESMO_TV_NOTIFICATIONLOG_H

#include "BrowserCore.h"
#include "Timeline.h"
#include "tesmo_hbbtv/tesmo_hbbtv.h"

// What the library tells the platform, as the timeline shows it: each notification as a JSON
// record with every field (the platform's answers included), and as a readable line.
class NotificationLog {
public:
    NotificationLog(Timeline& out, const BrowserCore& core) : out(out), core(core) {}
    // After the platform has answered.
    void tell(HBBTV_NotificationType type, const HBBTV_NotificationData* data, long freeMemory);

    static JsonLine json(HBBTV_NotificationType type, const HBBTV_NotificationData* data);

private:
    void describeApplication(HBBTV_NotificationType type, const HBBTV_ApplicationNotificationData& app);
    void describeAitUpdate(const HBBTV_AITNotificationData& update);

    Timeline& out;
    const BrowserCore& core;
};

#endif
