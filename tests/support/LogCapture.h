#ifndef TESMO_HBBTV_TESTS_LOGCAPTURE_H
#define TESMO_HBBTV_TESTS_LOGCAPTURE_H

#include <cstdlib>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include "support/Logging.h"

namespace tesmo_test {

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
    bool contains(const std::string& message) const
    {
        for (const std::string& m : messages())
            if (m.find(message) != std::string::npos)
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

} // namespace tesmo_test

#endif
