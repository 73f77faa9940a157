#ifndef TESMO_HBBTV_TESTS_FAKEWORLD_H
#define TESMO_HBBTV_TESTS_FAKEWORLD_H

// A recording double of the TV platform and the browser core: every tm_, daxo_, dsmcc_ and
// hbbtv_ function records its call with its arguments, in order, and answers as programmed.

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "tesmo_hbbtv/browser_core.h"
#include "tesmo_hbbtv/platform.h"

namespace tesmo_test {

struct Call {
    std::string name;
    std::vector<std::string> args;  // pointers as ptr(), strings as their text

    bool operator==(const Call& other) const { return name == other.name && args == other.args; }
};

std::ostream& operator<<(std::ostream& out, const Call& call);

// How a pointer argument is recorded; "null" for a null pointer.
std::string ptr(const void* p);

class FakeWorld {
public:
    static FakeWorld& get();

    // Forgets the calls and restores every answer to its default.
    void reset();

    std::vector<Call> calls() const;
    std::vector<std::string> callNames() const;
    std::vector<Call> callsTo(const std::string& name) const;
    void record(std::string name, std::vector<std::string> args);

    // ---- programmable answers ----
    int supportedKeys = 0;  // hbbtv_keyset_get_supported_values
    int openUrlResult = 0;  // tm_open_url
    int loadingUrlResult = 0;  // tm_get_loading_url
    std::string loadingUrl;
    int getWindowResult = 0;  // tm_get_window
    std::map<long, DAXO_TesmoWindow*> windowsByHandle;
    // tm_resolve_relative_url; by default answers 0 and leaves the result null.
    std::function<int(const char* base, const char* relative, char** result)> resolveRelativeUrl;
    int getFileResult = DSMCC_PENDING;  // dsmcc_get_file
    int mimeTypeResult = DSMCC_OK;  // dsmcc_get_mime_type
    std::optional<std::string> mimeType;  // handed over malloc'ed when set
    std::vector<std::string> filePieces;  // dsmcc_read hands these out, then length 0
    int readFailsAtPiece = -1;  // that read answers DSMCC_FILE_ERROR_CODE
    int sameCarouselResult = 0;  // dsmcc_same_carousel
    int sameCarousel = 1;
    int subscribeResult = 0;  // stream-event subscriptions

    // Next piece of the file for a read id; bookkeeping for dsmcc_read.
    std::map<void*, size_t> readCursor;

private:
    FakeWorld() = default;
    mutable std::mutex mutex;
    std::vector<Call> recorded;
};

}  // namespace tesmo_test

#endif
