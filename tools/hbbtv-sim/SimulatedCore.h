#ifndef TESMO_HBBTV_SIM_SIMULATEDCORE_H
#define TESMO_HBBTV_SIM_SIMULATEDCORE_H

#include <map>
#include <vector>

#include "BrowserCore.h"

// A browser core without an engine: a page opened at one tick finishes loading at the next,
// with the HTTP status the load rules give; dvb: pages are read through the library's
// protocol stream and succeed when the stream finishes.
class SimulatedCore : public BrowserCore {
public:
    void afterTick() override;
    bool busy() const override { return !loads.empty(); }

private:
    struct Load {
        DAXO_TesmoWindow* window;
        std::string url;
        uint64_t due;
    };
    enum class StreamState { OPEN, FINISHED, FAILED };

    void load(DAXO_TesmoWindow* window, const std::string& url) override;
    void streamData(void* stream, const unsigned char* data, unsigned int length) override;
    void streamEnded(void* stream, int status, bool finished) override;

    void loadPage(const Load& load);
    void loadFromCarousel(const Load& load);

    std::vector<Load> loads;
    std::map<void*, StreamState> streams;
    std::map<void*, size_t> streamBytes;
    uintptr_t nextStream = 1;
};

#endif
