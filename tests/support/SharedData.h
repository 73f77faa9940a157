#ifndef TESMO_HBBTV_TESTS_SHAREDDATA_H
#define TESMO_HBBTV_TESTS_SHAREDDATA_H

#include <string>

#include "SectionBuilder.h"

namespace tesmo_test {

// Where the project's shared test data lives; empty when it is not beside the checkout.
std::string sharedDataDir();
Bytes readFileBytes(const std::string& path);

}  // namespace tesmo_test

// Skips the test, saying why, when the shared data is absent (a user's fresh clone).
#define REQUIRE_SHARED_DATA()                                                                                          \
    do {                                                                                                               \
        if (tesmo_test::sharedDataDir().empty())                                                                       \
            GTEST_SKIP() << "../shared/data is not beside this checkout: real-data test skipped";                      \
    } while (0)

#endif
