#include "PageLoad.h"

namespace {

const char* const BLANK = "about:blank";

}  // namespace

void PageLoad::requested(const std::string& url, Clock::time_point now)
{
    wanted = url;
    current = url;
    active = true;
    awaiting = true;
    awaitingStart = true;
    downloading = false;
    shownStatus = 0;
    emptyResponse = false;
    lastActivity = now;
}

void PageLoad::started(Clock::time_point now)
{
    if (!active)
        return;
    awaiting = true;
    awaitingStart = false;
    emptyResponse = false;
    lastActivity = now;
}

void PageLoad::responded(unsigned status, bool emptyBody)
{
    emptyResponse = status >= 200 && status < 300 && emptyBody;
}

void PageLoad::progressed(Clock::time_point now)
{
    lastActivity = now;
}

void PageLoad::isAt(const std::string& url)
{
    if (!url.empty() && url != BLANK)
        current = url;
}

void PageLoad::handedOver(Clock::time_point now)
{
    downloading = true;
    lastActivity = now;
}

std::optional<LoadOutcome> PageLoad::report(LoadOutcome::End end, unsigned status, const std::string& reason)
{
    if (!active || !awaiting || awaitingStart)
        return std::nullopt;
    awaiting = false;
    downloading = false;
    return LoadOutcome{end, status, reason};
}

std::optional<LoadOutcome> PageLoad::failed(bool connection, const std::string& reason)
{
    if (downloading && !connection)
        return std::nullopt;
    return report(connection ? LoadOutcome::CONNECTION_FAILED : LoadOutcome::FAILED, 0, reason);
}

std::optional<LoadOutcome> PageLoad::downloadFailed(const std::string& reason)
{
    downloading = false;
    return report(LoadOutcome::CONNECTION_FAILED, 0, reason);
}

std::optional<LoadOutcome> PageLoad::finished(const std::string& shownUrl, unsigned status)
{
    // A download's own navigation ends as the view gives the response away: the download decides.
    if (downloading)
        return std::nullopt;
    if (shownStatus) {  // bytes already counted when they were downloaded
        const unsigned shown = shownStatus;
        shownStatus = 0;
        return report(LoadOutcome::LOADED, shown, "");
    }
    if (shownUrl == BLANK && wanted != BLANK)
        return report(LoadOutcome::CONNECTION_FAILED, 0, "the engine does not load this address");
    if (emptyResponse)
        return report(LoadOutcome::FAILED, 0, "an empty page");
    return report(LoadOutcome::LOADED, status ? status : 200, "");
}

std::optional<LoadOutcome> PageLoad::downloaded(uint64_t bytes, unsigned status)
{
    if (bytes == 0)
        return report(LoadOutcome::FAILED, 0, "an empty page");
    downloading = false;
    shownStatus = status ? status : 200;
    return std::nullopt;
}

std::optional<LoadOutcome> PageLoad::check(Clock::time_point now, unsigned completeStatus)
{
    if (!awaiting || now - lastActivity < quietLimit)
        return std::nullopt;
    awaitingStart = false;  // the engine never began it
    if (completeStatus && !downloading)
        return report(LoadOutcome::LOADED, completeStatus, "");
    const auto ms = limit().count();
    return report(LoadOutcome::CONNECTION_FAILED, 0,
                  "nothing received for " +
                      (ms % 1000 ? std::to_string(ms) + " ms" : std::to_string(ms / 1000) + " s"));
}
