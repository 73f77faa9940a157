#include "support/LoggingOutputStdout.h"

#include <iostream>

namespace TesmoHbbTV {

void LoggingOutputStdout::output(LogEntry& entry)
{
    if (accepts(entry))
        std::cout << entry.getString() << std::flush;
}

}  // namespace TesmoHbbTV
