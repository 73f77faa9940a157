// Runs a fuzz target over files and directories of inputs, without libFuzzer: how the
// ordinary test run replays every corpus file.

#include <dirent.h>
#include <sys/stat.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

int replayFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    const std::vector<char> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
    return 1;
}

int replay(const std::string& path)
{
    struct stat info;
    if (stat(path.c_str(), &info) != 0)
        return 0;
    if (!S_ISDIR(info.st_mode))
        return replayFile(path);
    int count = 0;
    if (DIR* dir = opendir(path.c_str())) {
        while (dirent* entry = readdir(dir))
            if (entry->d_name[0] != '.')
                count += replay(path + "/" + entry->d_name);
        closedir(dir);
    }
    return count;
}

}  // namespace

int main(int argc, char** argv)
{
    int count = 0;
    for (int i = 1; i < argc; ++i)
        count += replay(argv[i]);
    std::printf("replayed %d inputs\n", count);
    return count > 0 ? 0 : 1;
}
