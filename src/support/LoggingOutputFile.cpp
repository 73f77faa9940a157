#include "support/LoggingOutputFile.h"

namespace TesmoHbbTV {

bool LoggingOutputFile::openFile(const char* path)
{
    file = std::make_unique<std::ofstream>(path, std::ios::out | std::ios::app);
    return file->is_open();
}

void LoggingOutputFile::output(LogEntry& entry)
{
    if (file && accepts(entry))
        *file << entry.getString() << std::flush;
}

}  // namespace TesmoHbbTV
