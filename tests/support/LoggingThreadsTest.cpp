#include <gtest/gtest.h>

#include <unistd.h>

#include <fstream>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "LogCapture.h"
#include "tesmo_hbbtv/tesmo_hbbtv.h"

using namespace TesmoHbbTV;

namespace {

TEST(LoggingThreadsTest, LinesFromFourThreadsNeverInterleave)
{
    tesmo_test::LogCapture log;
    const std::string path = ::testing::TempDir() + "threads" + std::to_string(getpid());
    std::remove(path.c_str());
    ASSERT_TRUE(tesmo_hbbtv_add_log_output(1, path.c_str()));

    const int threads = 4;
    const int linesPerThread = 2000;
    std::vector<std::thread> writers;
    for (int t = 0; t < threads; ++t)
        writers.emplace_back([t] {
            const std::string module = "Thread" + std::to_string(t);
            const std::string payload(100, char('a' + t));
            for (int i = 0; i < linesPerThread; ++i)
                LogEntry(LOG_LEVEL_LOG, module.c_str()) << i << " " << payload;
        });
    for (auto& w : writers)
        w.join();

    std::ifstream in(path);
    const std::regex whole(R"(01/01/70 00:00:00   LOG \[     Thread([0-3])\] (\d+) ([a-d]{100}))");
    std::vector<int> next(threads, 0);
    std::string line;
    int count = 0;
    while (std::getline(in, line)) {
        std::smatch m;
        ASSERT_TRUE(std::regex_match(line, m, whole)) << line;
        const int t = std::stoi(m[1]);
        EXPECT_EQ(m[3].str(), std::string(100, char('a' + t)));
        EXPECT_EQ(std::stoi(m[2]), next[t]++);
        ++count;
    }
    EXPECT_EQ(count, threads * linesPerThread);
    std::remove(path.c_str());
}

}  // namespace
