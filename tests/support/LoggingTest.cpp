#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <sstream>

#include "LogCapture.h"
#include "support/LoggingOutputFile.h"
#include "support/LoggingOutputStdout.h"
#include "tesmo_hbbtv/tesmo_hbbtv.h"

using namespace TesmoHbbTV;
using tesmo_test::LogCapture;

namespace {

std::string readFile(const std::string& path)
{
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

std::string tempPath(const char* name)
{
    return ::testing::TempDir() + name + std::to_string(getpid());
}

TEST(LoggingTest, LineHasStampLevelWordBracketedModuleAndMessage)
{
    LogCapture log;
    LogEntry(LOG_LEVEL_DEBUG, "Window") << "hello " << 42;
    ASSERT_EQ(log.lines.size(), 1u);
    EXPECT_EQ(log.lines[0], "01/01/70 00:00:00 DEBUG [      Window] hello 42\n");
}

TEST(LoggingTest, LevelWords)
{
    LogCapture log;
    LogEntry(LOG_LEVEL_LOG, "m") << "x";
    LogEntry(LOG_LEVEL_WARN, "m") << "x";
    LogEntry(LOG_LEVEL_ERR, "m") << "x";
    LogEntry(LogLevel(0), "m") << "x";
    LogEntry(LogLevel(5), "m") << "x";
    EXPECT_EQ(log.messages(), (std::vector<std::string>{
                                  "   LOG [           m] x",
                                  "  WARN [           m] x",
                                  "   ERR [           m] x",
                                  "[           m] x",
                                  "[           m] x",
                              }));
}

TEST(LoggingTest, ModuleNamesAreRightAlignedAndNeverCut)
{
    LogCapture log;
    LogEntry(LOG_LEVEL_DEBUG, "") << "a";
    LogEntry(LOG_LEVEL_DEBUG, "Short") << "b";
    LogEntry(LOG_LEVEL_DEBUG, "TwelveChars!") << "c";
    LogEntry(LOG_LEVEL_DEBUG, "FifteenCharName") << "d";
    EXPECT_EQ(log.messages(), (std::vector<std::string>{
                                  " DEBUG [NO MODULE | a",
                                  " DEBUG [       Short] b",
                                  " DEBUG [TwelveChars!] c",
                                  " DEBUG [FifteenCharName] d",
                              }));
}

TEST(LoggingTest, ExplicitOutputWritesTheLineOnce)
{
    LogCapture log;
    {
        LogEntry entry(LOG_LEVEL_WARN, "m");
        entry << "once";
        entry.output();
        entry << " more";
    }
    ASSERT_EQ(log.lines.size(), 1u);
    EXPECT_EQ(log.messages()[0], "  WARN [           m] once");
}

TEST(LoggingTest, OutputsWriteOnlyFromTheirMinimumLevel)
{
    LogCapture log;
    const std::string path = tempPath("threshold");
    std::remove(path.c_str());
    ASSERT_TRUE(tesmo_hbbtv_add_log_output(3, path.c_str()));

    LogEntry(LOG_LEVEL_DEBUG, "m") << "debug";
    LogEntry(LOG_LEVEL_WARN, "m") << "warn";
    LogEntry(LOG_LEVEL_ERR, "m") << "err";
    LogEntry(LogLevel(0), "m") << "zero";
    LogEntry(LogLevel(5), "m") << "five";

    EXPECT_EQ(readFile(path), LogCapture::STAMP + "  WARN [           m] warn\n" + LogCapture::STAMP +
                                  "   ERR [           m] err\n" + LogCapture::STAMP + "[           m] five\n");
    EXPECT_EQ(log.lines.size(), 5u);
    std::remove(path.c_str());
}

TEST(LoggingTest, FileOutputAppendsToExistingContent)
{
    LogCapture log;
    const std::string path = tempPath("append");
    {
        std::ofstream existing(path, std::ios::trunc);
        existing << "earlier line\n";
    }
    ASSERT_TRUE(tesmo_hbbtv_add_log_output(1, path.c_str()));
    LogEntry(LOG_LEVEL_LOG, "File") << "appended";
    EXPECT_EQ(readFile(path), "earlier line\n" + LogCapture::STAMP + "   LOG [        File] appended\n");
    std::remove(path.c_str());
}

TEST(LoggingTest, UnopenableFileIsRefused)
{
    LogCapture log;
    EXPECT_FALSE(tesmo_hbbtv_add_log_output(1, "/nonexistent-dir/x/log.txt"));
    LogEntry(LOG_LEVEL_ERR, "m") << "still fine";
    EXPECT_EQ(log.lines.size(), 1u);
}

TEST(LoggingTest, StdoutOutputWritesWholeLines)
{
    LogCapture log;
    ASSERT_TRUE(tesmo_hbbtv_add_log_output(2, nullptr));
    ::testing::internal::CaptureStdout();
    LogEntry(LOG_LEVEL_DEBUG, "m") << "hidden";
    LogEntry(LOG_LEVEL_LOG, "m") << "shown";
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), LogCapture::STAMP + "   LOG [           m] shown\n");
}

}  // namespace
