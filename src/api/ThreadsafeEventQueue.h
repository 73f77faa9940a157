#ifndef TESMO_HBBTV_API_THREADSAFEEVENTQUEUE_H
#define TESMO_HBBTV_API_THREADSAFEEVENTQUEUE_H

#include <pthread.h>

#include <deque>
#include <memory>

namespace TesmoHbbTV {

class Window;

// The one place where threads meet: any thread appends, the browser thread takes one
// event per tick. The lock covers only the append and the removal, never execute(), so a
// running event may queue further events.
class ThreadsafeEventQueue {
public:
    class Event {
    public:
        virtual ~Event() = default;
        virtual void execute() = 0;
        // True when the event names window; it has then given up what it owns and is
        // deleted unexecuted.
        virtual bool forgetWindow(const Window* /*window*/) { return false; }
    };

    ThreadsafeEventQueue();
    ~ThreadsafeEventQueue();

    ThreadsafeEventQueue(const ThreadsafeEventQueue&) = delete;
    ThreadsafeEventQueue& operator=(const ThreadsafeEventQueue&) = delete;

    // Takes ownership of e.
    void add(Event* e);
    // Removes the oldest event and hands it to the caller; null when empty.
    Event* getFirst();
    // Runs and deletes the oldest event; false when there was none.
    bool executeFirst();
    // Drops the events that name a released window, so that none of them reaches a window
    // that the allocator later places at the same address. Safe while other threads add.
    void forgetEventsFor(const Window* window);

private:
    std::deque<std::unique_ptr<Event>> events;
    pthread_mutex_t mutex;
};

}  // namespace TesmoHbbTV

#endif
