#ifndef TESMO_HBBTV_SUPPORT_LOGGINGOUTPUTFILE_H
#define TESMO_HBBTV_SUPPORT_LOGGINGOUTPUTFILE_H

#include <fstream>
#include <memory>

#include "support/LoggingOutput.h"

namespace TesmoHbbTV {

class LoggingOutputFile : public LoggingOutput {
public:
    using LoggingOutput::LoggingOutput;

    // Opens path for appending; existing lines are kept.
    bool openFile(const char* path);
    void output(LogEntry& entry) override;

private:
    std::unique_ptr<std::ofstream> file;
};

}  // namespace TesmoHbbTV

#endif
