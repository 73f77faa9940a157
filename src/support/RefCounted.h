#ifndef TESMO_HBBTV_SUPPORT_REFCOUNTED_H
#define TESMO_HBBTV_SUPPORT_REFCOUNTED_H

namespace TesmoHbbTV {

// Intrusive reference count; the last release deletes. Counts are plain integers: all
// reference traffic happens on the browser thread.
template <typename T> class RefCounted {
public:
    virtual ~RefCounted() = default;

    void addRef() { ++references; }
    void release()
    {
        if (--references == 0)
            delete this;
    }

protected:
    RefCounted() = default;
    RefCounted(const RefCounted&) = delete;
    RefCounted& operator=(const RefCounted&) = delete;

private:
    unsigned references = 0;
};

}  // namespace TesmoHbbTV

#endif
