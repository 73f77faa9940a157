#include "carousel/OCDownloadManager.h"

#include <cstdlib>

#include "si/HbbTVDVBURL.h"
#include "support/LogEntry.h"
#include "tesmo_hbbtv/browser_core.h"
#include "tesmo_hbbtv/platform.h"

namespace TesmoHbbTV {

namespace {

LogEntry carouselLog(LogLevel level)
{
    return LogEntry(level, "OCDownloadManager");
}

const int HTTP_OK = 200;
const int HTTP_NOT_FOUND = 404;
const size_t SCHEME_LENGTH = 6;  // "dvb://"

}  // namespace

OCDownloadManager::StartResult OCDownloadManager::startDownload(const HbbTVDVBURL& url, void* id)
{
    // Known before the client is asked, so that a report arriving during the call finds it.
    addDownload(id);
    const std::string& base = url.getBaseUrl();
    const std::string path = base.size() > SCHEME_LENGTH ? base.substr(SCHEME_LENGTH) : "";

    StartResult result;
    switch (dsmcc_get_file(path.c_str(), id)) {
    case DSMCC_PENDING:
        result = PENDING;
        break;
    case DSMCC_FILE_ERROR_CODE:
        result = FAILED;
        break;
    case DSMCC_UNKNOWN_ID:
        carouselLog(LOG_LEVEL_WARN) << "Unexpected return code from dsmcc_get_file: DSMCC_UNKNOWN_ID";
        result = FAILED;
        break;
    default:
        result = handleDownloaded(id) ? DELIVERED : FAILED;
        break;
    }
    // After a failed immediate delivery this reports the failure a second time; clients
    // in the field expect both reports.
    if (result == FAILED)
        handleDownloadFailed(id);
    return result;
}

bool OCDownloadManager::stopDownload(void* id)
{
    if (!downloadExists(id))
        return false;
    removeDownload(id);
    return true;
}

bool OCDownloadManager::reportDownloadSucceeded(void* id)
{
    if (!downloadExists(id)) {
        carouselLog(LOG_LEVEL_WARN) << "Unknown id when reporting download success";
        return false;
    }
    return handleDownloaded(id);
}

bool OCDownloadManager::reportDownloadFailed(void* id)
{
    if (!downloadExists(id)) {
        carouselLog(LOG_LEVEL_WARN) << "Unknown id when reporting download failed";
        return false;
    }
    handleDownloadFailed(id);
    return true;
}

bool OCDownloadManager::handleDownloaded(void* id)
{
    carouselLog(LOG_LEVEL_DEBUG) << "Reading downloaded object...";
    char* mime = nullptr;
    if (dsmcc_get_mime_type(id, &mime) != DSMCC_OK) {
        std::free(mime);
        carouselLog(LOG_LEVEL_DEBUG) << "dsmcc_get_mime_type != DSMCC_OK";
        handleDownloadFailed(id);
        return false;
    }
    if (mime) {
        tm_protocol_set_mime_type(id, mime);
        std::free(mime);
    }
    for (;;) {
        const unsigned char* data = nullptr;
        unsigned int length = 0;
        if (dsmcc_read(id, &data, &length) != DSMCC_OK) {
            carouselLog(LOG_LEVEL_DEBUG) << "dsmcc_read != DSMCC_OK";
            handleDownloadFailed(id);
            return false;
        }
        if (length == 0)
            break;
        tm_protocol_write(id, data, length);
    }
    carouselLog(LOG_LEVEL_DEBUG) << "read complete";
    tm_protocol_finished(id, HTTP_OK);
    dsmcc_close_file(id);
    return true;
}

void OCDownloadManager::handleDownloadFailed(void* id)
{
    tm_protocol_failed(id, HTTP_NOT_FOUND);
    dsmcc_close_file(id);
}

}  // namespace TesmoHbbTV
