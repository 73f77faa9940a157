#ifndef TESMO_HBBTV_SUPPORT_SMALLVECTOR_H
#define TESMO_HBBTV_SUPPORT_SMALLVECTOR_H

#include <array>
#include <cstddef>
#include <utility>
#include <vector>

namespace TesmoHbbTV {

// A list that keeps up to N elements in place and moves to the heap only beyond: the lists
// of an AIT entry (profiles, labels, transports) and a table's entries rarely outgrow a few,
// and a heap block for each would cost more than parsing them. No cap: beyond N it grows as
// a vector does.
template <typename T, std::size_t N> class SmallVector {
public:
    using iterator = T*;
    using const_iterator = const T*;

    SmallVector() = default;
    SmallVector(const SmallVector&) = delete;
    SmallVector& operator=(const SmallVector&) = delete;

    std::size_t size() const { return count; }
    bool empty() const { return count == 0; }
    T* begin() { return data(); }
    T* end() { return data() + count; }
    const T* begin() const { return data(); }
    const T* end() const { return data() + count; }
    T& operator[](std::size_t index) { return data()[index]; }
    const T& operator[](std::size_t index) const { return data()[index]; }

    void push_back(T item)
    {
        if (heap.empty()) {
            if (count < N) {
                local[count++] = std::move(item);
                return;
            }
            moveToHeap();
        }
        heap.push_back(std::move(item));
        ++count;
    }

    // Inserts before position.
    void insert(const T* position, T item)
    {
        const std::size_t index = std::size_t(position - data());
        push_back(std::move(item));
        for (std::size_t i = count - 1; i > index; --i)
            std::swap(data()[i], data()[i - 1]);
    }

    iterator erase(const T* position)
    {
        const std::size_t index = std::size_t(position - data());
        for (std::size_t i = index; i + 1 < count; ++i)
            data()[i] = std::move(data()[i + 1]);
        if (heap.empty())
            local[count - 1] = T();
        else
            heap.pop_back();
        --count;
        return data() + index;
    }

private:
    T* data() { return heap.empty() ? local.data() : heap.data(); }
    const T* data() const { return heap.empty() ? local.data() : heap.data(); }

    void moveToHeap()
    {
        heap.reserve(2 * N);
        for (std::size_t i = 0; i < count; ++i) {
            heap.push_back(std::move(local[i]));
            local[i] = T();
        }
    }

    std::array<T, N> local{};
    std::size_t count = 0;
    std::vector<T> heap;  // holds every element once more than N were ever needed
};

}  // namespace TesmoHbbTV

#endif
