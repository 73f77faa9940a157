#ifndef TESMO_HBBTV_SUPPORT_LOGGINGOUTPUTSTDOUT_H
#define TESMO_HBBTV_SUPPORT_LOGGINGOUTPUTSTDOUT_H

#include "support/LoggingOutput.h"

namespace TesmoHbbTV {

class LoggingOutputStdout : public LoggingOutput {
public:
    using LoggingOutput::LoggingOutput;
    void output(LogEntry& entry) override;
};

}  // namespace TesmoHbbTV

#endif
