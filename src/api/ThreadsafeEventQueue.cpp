#include "api/ThreadsafeEventQueue.h"

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

bool ThreadsafeEventQueue::executeFirst()
{
    std::unique_ptr<Event> e(getFirst());
    if (!e)
        return false;
    e->execute();
    return true;
}

} // namespace TesmoHbbTV
