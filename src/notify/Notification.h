#ifndef TESMO_HBBTV_NOTIFY_NOTIFICATION_H
#define TESMO_HBBTV_NOTIFY_NOTIFICATION_H

#include "tesmo_hbbtv/tesmo_hbbtv.h"

namespace TesmoHbbTV {

// One typed record handed to every listener. The payload block is zero-filled and as large as
// the largest member; strings in it are heap copies owned by the record. A derived record
// copies its listeners' answer back to the asking code when it is destroyed.
class Notification {
public:
    virtual ~Notification();

    Notification(const Notification&) = delete;
    Notification& operator=(const Notification&) = delete;

    void call(HBBTV_NotificationListener listener);

    HBBTV_NotificationType getType() const { return type; }
    HBBTV_NotificationData* getData() const { return data; }

protected:
    // withPayload false leaves the data pointer null (an AIT update without a table).
    explicit Notification(HBBTV_NotificationType type, bool withPayload = true);

    // A heap copy owned by the record; null becomes "".
    static char* copyString(const char* text);

    HBBTV_NotificationType type;
    HBBTV_NotificationData* data;  // owned
};

}  // namespace TesmoHbbTV

#endif
