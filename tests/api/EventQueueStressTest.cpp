#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "api/ThreadsafeEventQueue.h"

using TesmoHbbTV::ThreadsafeEventQueue;

namespace {

struct Stamp {
    int producer;
    int sequence;
};

class StampEvent : public ThreadsafeEventQueue::Event {
public:
    StampEvent(std::vector<Stamp>& executed, Stamp stamp) : executed(executed), stamp(stamp) {}
    void execute() override { executed.push_back(stamp); }

private:
    std::vector<Stamp>& executed;  // touched only by the consuming thread
    Stamp stamp;
};

TEST(EventQueueStressTest, EightProducersAgainstOneTickingThread)
{
    const int producers = 8;
    const int perProducer = 50000;
    ThreadsafeEventQueue queue;
    std::vector<Stamp> executed;
    executed.reserve(producers * perProducer);
    std::atomic<int> finishedProducers{0};

    std::thread consumer([&] {
        for (;;) {
            if (queue.executeFirst())
                continue;
            if (finishedProducers.load() == producers && !queue.executeFirst())
                break;
            std::this_thread::yield();
        }
    });
    std::vector<std::thread> threads;
    for (int p = 0; p < producers; ++p)
        threads.emplace_back([&, p] {
            for (int i = 0; i < perProducer; ++i)
                queue.add(new StampEvent(executed, Stamp{p, i}));
            ++finishedProducers;
        });
    for (auto& t : threads)
        t.join();
    consumer.join();

    ASSERT_EQ(executed.size(), size_t(producers * perProducer));
    std::vector<int> next(producers, 0);
    for (const Stamp& s : executed) {
        ASSERT_EQ(s.sequence, next[s.producer]) << "producer " << s.producer << " out of order";
        ++next[s.producer];
    }
}

}  // namespace
