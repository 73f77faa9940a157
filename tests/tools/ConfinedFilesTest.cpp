// A directory standing for the carousel serves only the regular files that really lie inside
// it, whatever form the URL path takes.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

#include "ConfinedFiles.h"

namespace {

class ConfinedFilesTest : public testing::Test {
protected:
    void SetUp() override
    {
        char pattern[] = "/tmp/confined-XXXXXX";
        base = mkdtemp(pattern);
        root = base + "/carousel";
        mkdir(root.c_str(), 0755);
        mkdir((root + "/sub").c_str(), 0755);
        std::ofstream(root + "/index.html") << "page";
        std::ofstream(root + "/sub/a b.txt") << "spaced";
        std::ofstream(root + "/big.bin") << std::string(2000, 'x');
        std::ofstream(base + "/secret.txt") << "secret";
        symlink((base + "/secret.txt").c_str(), (root + "/out").c_str());
        symlink("index.html", (root + "/inner").c_str());
        symlink("/dev/zero", (root + "/zero").c_str());
        mkfifo((root + "/pipe").c_str(), 0644);
    }
    void TearDown() override { std::system(("rm -rf " + base).c_str()); }

    std::string base, root;
};

TEST_F(ConfinedFilesTest, OnlyRegularFilesInsideTheDirectory)
{
    const ConfinedFiles files(root, 1000);
    struct Case {
        const char* path;
        const char* content;  // null: refused
    };
    const Case cases[] = {
        {"index.html", "page"},
        {"./index.html?x=1#top", "page"},
        {"sub//a%20b.txt", "spaced"},
        {"inner", "page"},
        {"sub/../index.html", nullptr},
        {"../secret.txt", nullptr},
        {"%2e%2e/secret.txt", nullptr},
        {"sub%2f..%2f..%2fsecret.txt", nullptr},
        {"out", nullptr},
        {"zero", nullptr},
        {"pipe", nullptr},
        {"big.bin", nullptr},
        {"sub", nullptr},
        {"", nullptr},
        {"missing.html", nullptr},
    };
    for (const Case& c : cases) {
        std::string bytes, why;
        const bool served = files.read(c.path, bytes, why);
        EXPECT_EQ(served, c.content != nullptr) << c.path << ": " << why;
        EXPECT_EQ(served        ? bytes
                  : why.empty() ? ""
                                : "refused",
                  c.content ? c.content : "refused")
            << c.path << ": " << why;
    }
}

}  // namespace
