#ifndef TESMO_HBBTV_SUPPORT_LOGENTRY_H
#define TESMO_HBBTV_SUPPORT_LOGENTRY_H

#include <optional>
#include <sstream>
#include <string>

namespace TesmoHbbTV {

// Levels outside 1..4 are allowed: they write no level word but still reach the outputs.
enum LogLevel : int { LOG_LEVEL_DEBUG = 1, LOG_LEVEL_LOG = 2, LOG_LEVEL_WARN = 3, LOG_LEVEL_ERR = 4 };

// One log line. Build it as a temporary, stream the message into it, and let it die:
// the destructor hands the finished line to Logging. A line that no registered output
// would write is never formatted.
class LogEntry {
public:
    LogEntry(LogLevel level, const char* module);
    ~LogEntry();

    LogEntry(const LogEntry&) = delete;
    LogEntry& operator=(const LogEntry&) = delete;

    template <typename T> LogEntry& operator<<(const T& value)
    {
        if (text)
            *text << value;
        return *this;
    }

    void output();
    LogLevel getLogLevel() const { return level; }
    std::string getString() const { return text ? text->str() : std::string(); }

private:
    void writeHead(const char* module);

    LogLevel level;
    std::optional<std::ostringstream> text;  // empty when no output wants the level
    bool written = false;
};

}  // namespace TesmoHbbTV

#endif
