#ifndef TESMO_HBBTV_TESTS_LOGCAPTURE_H
#define TESMO_HBBTV_TESTS_LOGCAPTURE_H

#include <cstdlib>
#include <ctime>
#include <iomanip>
#include <sstream>
#include <memory>
#include <string>
#include <vector>

#include "support/Logging.h"

namespace tesmo_test {

using TesmoHbbTV::LOG_LEVEL_DEBUG;
using TesmoHbbTV::LOG_LEVEL_ERR;
using TesmoHbbTV::LOG_LEVEL_LOG;
using TesmoHbbTV::LOG_LEVEL_WARN;

// A line as LogCapture::messages() gives it, written out independently of the library.
inline std::string LogLine(TesmoHbbTV::LogLevel level, const std::string& module, const std::string& text)
{
    static const char* const words[] = {" DEBUG ", "   LOG ", "  WARN ", "   ERR "};
    std::ostringstream line;
    line << words[level - 1] << "[" << std::setw(12) << module << "] " << text;
    return line.str();
}

// Collects every line the library writes, stamped by a fixed clock (1970-01-01 00:00:00 UTC).
class LogCapture {
public:
    LogCapture()
    {
        setenv("TZ", "UTC", 1);
        tzset();
        TesmoHbbTV::Logging::setTimeSource([]() -> std::time_t { return 0; });
        auto sink = std::make_unique<Sink>(lines);
        TesmoHbbTV::Logging::getInstance()->addOutput(std::move(sink));
    }
    ~LogCapture()
    {
        TesmoHbbTV::Logging::destroyInstance();
        TesmoHbbTV::Logging::setTimeSource(nullptr);
    }

    // Lines without their time stamp and end-of-line: " DEBUG [      Window] hello".
    std::vector<std::string> messages() const
    {
        std::vector<std::string> out;
        for (const std::string& line : lines)
            out.push_back(line.substr(STAMP.size(), line.size() - STAMP.size() - 1));
        return out;
    }
    // Level, module and text all match one line exactly.
    bool contains(TesmoHbbTV::LogLevel level, const std::string& module, const std::string& text) const
    {
        const std::string wanted = LogLine(level, module, text);
        for (const std::string& m : messages())
            if (m == wanted)
                return true;
        return false;
    }

    std::vector<std::string> lines;
    static inline const std::string STAMP = "01/01/70 00:00:00";

private:
    class Sink : public TesmoHbbTV::LoggingOutput {
    public:
        explicit Sink(std::vector<std::string>& lines) : LoggingOutput(TesmoHbbTV::LogLevel(0)), lines(lines) {}
        void output(TesmoHbbTV::LogEntry& entry) override { lines.push_back(entry.getString()); }

    private:
        std::vector<std::string>& lines;
    };
};

}  // namespace tesmo_test

#endif
