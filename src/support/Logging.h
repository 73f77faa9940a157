#ifndef TESMO_HBBTV_SUPPORT_LOGGING_H
#define TESMO_HBBTV_SUPPORT_LOGGING_H

#include <pthread.h>

#include <atomic>
#include <climits>
#include <ctime>
#include <memory>
#include <vector>

#include "support/LogEntry.h"
#include "support/LoggingOutput.h"

namespace TesmoHbbTV {

// Hands finished lines to the registered outputs. The library registers none itself; a
// line of a level that no output writes is not even formatted.
class Logging {
public:
    using TimeSource = std::time_t (*)();

    static Logging* getInstance();
    // Deletes the instance and its outputs; the next getInstance() starts empty.
    static void destroyInstance();

    // The clock that stamps lines; null restores the system clock.
    static void setTimeSource(TimeSource source);
    static std::time_t now();

    // Any thread; without building the instance.
    static bool wants(LogLevel level);

    void addOutput(std::unique_ptr<LoggingOutput> output);
    void output(LogEntry& entry);

    Logging(const Logging&) = delete;
    Logging& operator=(const Logging&) = delete;

private:
    Logging();
    ~Logging();

    std::vector<std::unique_ptr<LoggingOutput>> outputs;
    std::atomic<int> lowestWantedLevel{INT_MAX};
    pthread_mutex_t mutex;

    static std::atomic<Logging*> instance;
    static TimeSource timeSource;
};

}  // namespace TesmoHbbTV

#endif
