#ifndef TESMO_HBBTV_API_BROWSERNOTIFICATIONDISPATCHER_H
#define TESMO_HBBTV_API_BROWSERNOTIFICATIONDISPATCHER_H

#include "tesmo_hbbtv/browser_core.h"

namespace TesmoHbbTV {

class Application;
class Window;

// Takes the browser core's numbered notifications for the windows the library manages;
// false leaves a notification to the platform's default handling.
class BrowserNotificationDispatcher {
public:
    BrowserNotificationDispatcher(DAXO_TesmoWindow* browserWindow, void* data, int* resultSlot)
        : browserWindow(browserWindow), data(data), resultSlot(resultSlot)
    {
    }

    bool dispatch(int id);

private:
    bool windowClosed();
    bool loadingFinished();
    bool loadingFailed();
    bool protocolLoadingStart();
    bool protocolLoadingStop();
    bool xmlParseFailed();
    bool scriptRequest();
    bool xmlAit();

    Window* managedWindow() const;
    Application* applicationOfWindow() const;
    bool reportLoadFailed(Window& window);
    bool handled(int result);

    DAXO_TesmoWindow* browserWindow;
    void* data;  // the core's record for this id; may be null
    int* resultSlot;  // may be null
};

}  // namespace TesmoHbbTV

#endif
