#ifndef TESMO_HBBTV_SUPPORT_LOGGINGOUTPUT_H
#define TESMO_HBBTV_SUPPORT_LOGGINGOUTPUT_H

#include "support/LogEntry.h"

namespace TesmoHbbTV {

// Where finished log lines go; each output writes only lines at or above its own level.
class LoggingOutput {
public:
    explicit LoggingOutput(LogLevel minimumLevel) : minimumLevel(minimumLevel) {}
    virtual ~LoggingOutput() = default;

    LoggingOutput(const LoggingOutput&) = delete;
    LoggingOutput& operator=(const LoggingOutput&) = delete;

    virtual void output(LogEntry& entry) = 0;
    LogLevel getMinimumLevel() const { return minimumLevel; }

protected:
    bool accepts(const LogEntry& entry) const { return entry.getLogLevel() >= minimumLevel; }

private:
    LogLevel minimumLevel;
};

}  // namespace TesmoHbbTV

#endif
