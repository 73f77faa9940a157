#ifndef TESMO_HBBTV_NOTIFY_KEYSETCHANGEDNOTIFICATION_H
#define TESMO_HBBTV_NOTIFY_KEYSETCHANGEDNOTIFICATION_H

#include "notify/Notification.h"

namespace TesmoHbbTV {

class KeysetChangedNotification : public Notification {
public:
    KeysetChangedNotification(DAXO_TesmoWindow* daxo_window, int keyset)
        : Notification(HBBTV_NOTIFICATION_KEYSET_CHANGED)
    {
        data->keyset_changed.daxo_window = daxo_window;
        data->keyset_changed.keyset = keyset;
    }
};

}  // namespace TesmoHbbTV

#endif
