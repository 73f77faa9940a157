#include "support/LogEntry.h"

#include <ctime>
#include <iomanip>

#include "support/Logging.h"

namespace TesmoHbbTV {

namespace {

const char* levelWord(LogLevel level)
{
    switch (level) {
    case LOG_LEVEL_DEBUG:
        return " DEBUG ";
    case LOG_LEVEL_LOG:
        return "   LOG ";
    case LOG_LEVEL_WARN:
        return "  WARN ";
    case LOG_LEVEL_ERR:
        return "   ERR ";
    }
    return "";
}

}  // namespace

LogEntry::LogEntry(LogLevel level, const char* module) : level(level)
{
    if (!Logging::wants(level))
        return;
    text.emplace();
    writeHead(module ? module : "");
}

LogEntry::~LogEntry()
{
    output();
}

void LogEntry::writeHead(const char* module)
{
    std::time_t now = Logging::now();
    std::tm local{};
    localtime_r(&now, &local);
    char stamp[32];
    std::strftime(stamp, sizeof stamp, "%x %X", &local);

    *text << stamp << levelWord(level);
    // With no module the closing bracket is missing; readers of existing logs expect that.
    if (!*module)
        *text << "[" << std::setw(12) << std::setfill(' ') << "NO MODULE | ";
    else
        *text << "[" << std::setw(12) << std::setfill(' ') << module << "] ";
}

void LogEntry::output()
{
    if (written || !text)
        return;
    written = true;
    *text << std::endl;
    Logging::getInstance()->output(*this);
}

}  // namespace TesmoHbbTV
