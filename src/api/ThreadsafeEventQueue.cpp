#include "api/ThreadsafeEventQueue.h"

#include <vector>

namespace TesmoHbbTV {

ThreadsafeEventQueue::ThreadsafeEventQueue()
{
    pthread_mutex_init(&mutex, nullptr);
}

ThreadsafeEventQueue::~ThreadsafeEventQueue()
{
    // Pending events are destroyed, not run.
    while (Event* e = getFirst())
        delete e;
    pthread_mutex_destroy(&mutex);
}

void ThreadsafeEventQueue::add(Event* e)
{
    pthread_mutex_lock(&mutex);
    events.emplace_back(e);
    pthread_mutex_unlock(&mutex);
}

ThreadsafeEventQueue::Event* ThreadsafeEventQueue::getFirst()
{
    Event* first = nullptr;
    pthread_mutex_lock(&mutex);
    if (!events.empty()) {
        first = events.front().release();
        events.pop_front();
    }
    pthread_mutex_unlock(&mutex);
    return first;
}

void ThreadsafeEventQueue::forgetEventsFor(const Window* window)
{
    std::vector<std::unique_ptr<Event>> dropped;
    pthread_mutex_lock(&mutex);
    for (auto it = events.begin(); it != events.end();) {
        if ((*it)->forgetWindow(window)) {
            dropped.push_back(std::move(*it));
            it = events.erase(it);
        } else {
            ++it;
        }
    }
    pthread_mutex_unlock(&mutex);
}  // dropped events are deleted here, outside the lock

bool ThreadsafeEventQueue::executeFirst()
{
    std::unique_ptr<Event> e(getFirst());
    if (!e)
        return false;
    e->execute();
    return true;
}

}  // namespace TesmoHbbTV
