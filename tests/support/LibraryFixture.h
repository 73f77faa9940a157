#ifndef TESMO_HBBTV_TESTS_LIBRARYFIXTURE_H
#define TESMO_HBBTV_TESTS_LIBRARYFIXTURE_H

#include <gtest/gtest.h>

#include <cstring>

#include "FakeWorld.h"
#include "tesmo_hbbtv/tesmo_hbbtv.h"

namespace tesmo_test {

// Every test starts with a fresh double and leaves the library shut down.
class LibraryTest : public ::testing::Test {
protected:
    void SetUp() override { FakeWorld::get().reset(); }
    void TearDown() override
    {
        tesmo_hbbtv_shutdown();
        FakeWorld::get().reset();
    }

    FakeWorld& world() { return FakeWorld::get(); }
};

// A platform-owned string, as the platform hands it over.
inline char* platformString(const char* text)
{
    return strdup(text);
}

// A platform-owned, zero-filled event record.
inline HBBTV_EventData* platformEvent()
{
    return static_cast<HBBTV_EventData*>(calloc(1, sizeof(HBBTV_EventData)));
}

}  // namespace tesmo_test

#endif
