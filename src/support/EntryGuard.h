#ifndef TESMO_HBBTV_SUPPORT_ENTRYGUARD_H
#define TESMO_HBBTV_SUPPORT_ENTRYGUARD_H

#include <utility>
#include <vector>

namespace TesmoHbbTV {

// Held by every entry point that the browser thread calls. A listener or script listener
// that calls back into the library nests one call inside another, and what the inner call
// destroys may still be in use by the frames below it: objects handed to dispose() are
// therefore deleted only when the outermost call returns. Browser thread only.
class EntryGuard {
public:
    EntryGuard() { ++depth; }
    ~EntryGuard();

    EntryGuard(const EntryGuard&) = delete;
    EntryGuard& operator=(const EntryGuard&) = delete;

    // True while an entry point runs: a call made now comes from a callback.
    static bool isInside() { return depth > 0; }

    // Deletes the object at once outside any library call, else when the outermost returns.
    template <typename T> static void dispose(T* object)
    {
        if (!object)
            return;
        if (!isInside()) {
            delete object;
            return;
        }
        disposed.emplace_back(object, [](void* p) { delete static_cast<T*>(p); });
    }

    // Deletes everything disposed of so far, including what those deletions dispose of.
    static void deleteDisposed();

private:
    using Deleter = void (*)(void*);

    static unsigned depth;
    static std::vector<std::pair<void*, Deleter>> disposed;
};

}  // namespace TesmoHbbTV

#endif
