#include "SimulatedCore.h"

#include "tesmo_hbbtv/tesmo_hbbtv.h"

void SimulatedCore::load(DAXO_TesmoWindow* window, const std::string& url)
{
    loads.push_back({window, url, out->getTick() + 1});
}

void SimulatedCore::afterTick()
{
    std::vector<Load> due;
    for (auto it = loads.begin(); it != loads.end();) {
        if (it->due <= out->getTick()) {
            due.push_back(*it);
            it = loads.erase(it);
        } else {
            ++it;
        }
    }
    for (const Load& load : due)
        if (knows(load.window))
            loadPage(load);
}

void SimulatedCore::loadPage(const Load& load)
{
    activity->note();
    if (load.url.compare(0, 4, "dvb:") == 0)
        return loadFromCarousel(load);
    const LoadOutcome outcome = ruledOutcome(load.url).value_or(LoadOutcome{LoadOutcome::LOADED, 200, ""});
    sayLoad(load.window, load.url, outcome);
    reportLoad(load.window, outcome);
}

// The core asks the library for the resource as a protocol stream, then reports the page
// by how the stream ended, and drops the stream.
void SimulatedCore::loadFromCarousel(const Load& load)
{
    void* stream = reinterpret_cast<void*>(nextStream++);
    streams[stream] = StreamState::OPEN;
    DAXO_ProtocolRecord record{load.url.c_str(), nullptr, stream};
    int result = 0;
    const bool handled =
        tesmo_hbbtv_handle_notification(nullptr, load.window, DAXO_TESMO_EVT_PROTOCOL_LOADING_START, &record, &result);
    const StreamState state = streams[stream];
    if (!handled || state == StreamState::OPEN) {
        out->say("load failed: " + load.url + " (no carousel stream)");
        reportLoad(load.window, {LoadOutcome::FAILED, 0, ""});
    } else if (state == StreamState::FINISHED) {
        out->say("loaded from the carousel: " + load.url + " (" + std::to_string(streamBytes[stream]) + " bytes) in " +
                 windowName(load.window));
        reportLoad(load.window, {LoadOutcome::LOADED, 200, ""});
    } else {
        out->say("carousel 404: " + load.url);
        reportLoad(load.window, {LoadOutcome::LOADED, 404, ""});
    }
    tesmo_hbbtv_handle_notification(nullptr, load.window, DAXO_TESMO_EVT_PROTOCOL_LOADING_STOP, &record, &result);
    streams.erase(stream);
    streamBytes.erase(stream);
}

void SimulatedCore::streamData(void* stream, const unsigned char*, unsigned int length)
{
    streamBytes[stream] += length;
}

void SimulatedCore::streamEnded(void* stream, int, bool finished)
{
    if (streams.count(stream))
        streams[stream] = finished ? StreamState::FINISHED : StreamState::FAILED;
}
