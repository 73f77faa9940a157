#ifndef TESMO_HBBTV_CAROUSEL_OCDOWNLOADMANAGER_H
#define TESMO_HBBTV_CAROUSEL_OCDOWNLOADMANAGER_H

#include <unordered_set>

namespace TesmoHbbTV {

class HbbTVDVBURL;

// Streams dvb: resources from the platform's object-carousel client into the browser
// core's protocol requests. A request id is the browser core's handle of one request; the
// carousel client uses the same value as its file handle.
class OCDownloadManager {
public:
    enum StartResult { PENDING = 0, DELIVERED = 1, FAILED = 2 };

    StartResult startDownload(const HbbTVDVBURL& url, void* id);
    bool stopDownload(void* id);
    bool reportDownloadSucceeded(void* id);
    bool reportDownloadFailed(void* id);

private:
    bool handleDownloaded(void* id);
    void handleDownloadFailed(void* id);
    void addDownload(void* id) { downloads.insert(id); }
    void removeDownload(void* id) { downloads.erase(id); }
    bool downloadExists(void* id) const { return downloads.count(id) != 0; }

    // Requests stay known until the browser core stops them, so a second ready report
    // delivers the file again.
    std::unordered_set<void*> downloads;
};

}  // namespace TesmoHbbTV

#endif
