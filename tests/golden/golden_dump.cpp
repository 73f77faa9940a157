// Prints the canonical results of one golden group, or of all: what update.sh writes into
// the golden files and what cross_check.sh prints for an earlier commit.

#include <iostream>
#include <string>

#include "GoldenCorpus.h"

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: golden_dump GROUP   (groups:";
        for (const std::string& group : tesmo_test::GoldenCorpus::groups())
            std::cerr << " " << group;
        std::cerr << ")\n";
        return 2;
    }
    std::cout << tesmo_test::goldenText(argv[1]);
    return 0;
}
