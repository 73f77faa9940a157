// Writes each section carried on a PID of a capture to its own file: real sections as
// fuzz seeds, used where they lie instead of being copied into the repository.

#include <cstdio>
#include <cstdlib>
#include <string>

#include "TsSections.h"

int main(int argc, char** argv)
{
    if (argc != 4) {
        std::fprintf(stderr, "usage: %s CAPTURE PID OUTPUT_DIR\n", argv[0]);
        return 2;
    }
    const auto sections = tesmo_test::sectionsOnPid(argv[1], uint16_t(std::strtoul(argv[2], nullptr, 0)));
    for (size_t i = 0; i < sections.size(); ++i) {
        const std::string path = std::string(argv[3]) + "/" + argv[2] + "-" + std::to_string(i);
        if (std::FILE* f = std::fopen(path.c_str(), "wb")) {
            std::fwrite(sections[i].data(), 1, sections[i].size(), f);
            std::fclose(f);
        }
    }
    return 0;
}
