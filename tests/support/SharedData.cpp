#include "SharedData.h"

#include <sys/stat.h>

#include <fstream>
#include <iterator>

namespace tesmo_test {

std::string sharedDataDir()
{
    struct stat info;
    const std::string dir = TESMO_SHARED_DATA_DIR;
    return stat(dir.c_str(), &info) == 0 && S_ISDIR(info.st_mode) ? dir : "";
}

Bytes readFileBytes(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

}  // namespace tesmo_test
