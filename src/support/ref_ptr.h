#ifndef TESMO_HBBTV_SUPPORT_REF_PTR_H
#define TESMO_HBBTV_SUPPORT_REF_PTR_H

namespace TesmoHbbTV {

// Holds one reference to a RefCounted object.
template <typename T> class ref_ptr {
public:
    ref_ptr() = default;
    ref_ptr(T* target) : target(target) { acquire(); }  // NOLINT: implicit by design
    ref_ptr(const ref_ptr& other) : target(other.target) { acquire(); }
    // Moving hands the reference over: no count changes.
    ref_ptr(ref_ptr&& other) noexcept : target(other.target) { other.target = nullptr; }
    ~ref_ptr()
    {
        if (target)
            target->release();
    }

    ref_ptr& operator=(const ref_ptr& other)
    {
        reset(other.target);
        return *this;
    }
    ref_ptr& operator=(ref_ptr&& other) noexcept
    {
        if (this != &other) {
            T* old = target;
            target = other.target;
            other.target = nullptr;
            if (old)
                old->release();
        }
        return *this;
    }

    // Takes the new reference before dropping the old, so that resetting to the same
    // object never deletes it.
    void reset(T* p = nullptr)
    {
        if (p)
            p->addRef();
        T* old = target;
        target = p;
        if (old)
            old->release();
    }

    T* get() const { return target; }
    T* operator->() const { return target; }
    T& operator*() const { return *target; }
    operator T*() const { return target; }  // NOLINT: implicit by design

private:
    void acquire()
    {
        if (target)
            target->addRef();
    }

    T* target = nullptr;
};

}  // namespace TesmoHbbTV

#endif
