#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "api/ThreadsafeEventQueue.h"

using TesmoHbbTV::ThreadsafeEventQueue;

namespace {

// Records its own execution and destruction into a shared journal.
class JournalEvent : public ThreadsafeEventQueue::Event {
public:
    JournalEvent(std::vector<std::string>& journal, std::string name, std::function<void()> action = {})
        : journal(journal), name(std::move(name)), action(std::move(action))
    {
    }
    ~JournalEvent() override { journal.push_back("~" + name); }
    void execute() override
    {
        journal.push_back(name);
        if (action)
            action();
    }

private:
    std::vector<std::string>& journal;
    std::string name;
    std::function<void()> action;
};

using Journal = std::vector<std::string>;

TEST(ThreadsafeEventQueueTest, EmptyQueueRunsNothing)
{
    ThreadsafeEventQueue queue;
    EXPECT_FALSE(queue.executeFirst());
    EXPECT_EQ(queue.getFirst(), nullptr);
}

TEST(ThreadsafeEventQueueTest, RunsOneEventPerCallOldestFirstAndDeletesIt)
{
    Journal journal;
    ThreadsafeEventQueue queue;
    queue.add(new JournalEvent(journal, "a"));
    queue.add(new JournalEvent(journal, "b"));
    queue.add(new JournalEvent(journal, "c"));

    EXPECT_TRUE(queue.executeFirst());
    EXPECT_EQ(journal, (Journal{"a", "~a"}));
    EXPECT_TRUE(queue.executeFirst());
    EXPECT_TRUE(queue.executeFirst());
    EXPECT_FALSE(queue.executeFirst());
    EXPECT_EQ(journal, (Journal{"a", "~a", "b", "~b", "c", "~c"}));
}

TEST(ThreadsafeEventQueueTest, EventQueuedWhileRunningComesAfterEverythingAlreadyQueued)
{
    Journal journal;
    ThreadsafeEventQueue queue;
    queue.add(new JournalEvent(journal, "a", [&] { queue.add(new JournalEvent(journal, "from-a")); }));
    queue.add(new JournalEvent(journal, "b"));

    while (queue.executeFirst()) {
    }
    EXPECT_EQ(journal, (Journal{"a", "~a", "b", "~b", "from-a", "~from-a"}));
}

TEST(ThreadsafeEventQueueTest, GetFirstHandsOwnershipToTheCaller)
{
    Journal journal;
    ThreadsafeEventQueue queue;
    queue.add(new JournalEvent(journal, "a"));
    ThreadsafeEventQueue::Event* e = queue.getFirst();
    ASSERT_NE(e, nullptr);
    EXPECT_TRUE(journal.empty());
    delete e;
    EXPECT_EQ(journal, (Journal{"~a"}));
}

TEST(ThreadsafeEventQueueTest, DestructionDeletesPendingEventsWithoutRunningThem)
{
    Journal journal;
    {
        ThreadsafeEventQueue queue;
        queue.add(new JournalEvent(journal, "a"));
        queue.add(new JournalEvent(journal, "b"));
    }
    EXPECT_EQ(journal, (Journal{"~a", "~b"}));
}

}  // namespace
