#include "HeapCounter.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<size_t> allocationCount{0};
std::atomic<size_t> allocatedBytes{0};
std::atomic<long long> heldBytes{0};

// Each block carries its size in front, so that delete can account for it.
constexpr size_t HEADER = alignof(std::max_align_t);

void* counted(size_t size)
{
    ++allocationCount;
    allocatedBytes += size;
    heldBytes += static_cast<long long>(size);
    auto* block = static_cast<unsigned char*>(std::malloc(size + HEADER));
    if (!block)
        throw std::bad_alloc();
    *reinterpret_cast<size_t*>(block) = size;
    return block + HEADER;
}

void release(void* p)
{
    if (!p)
        return;
    unsigned char* block = static_cast<unsigned char*>(p) - HEADER;
    heldBytes -= static_cast<long long>(*reinterpret_cast<size_t*>(block));
    std::free(block);
}

}  // namespace

void* operator new(size_t size)
{
    return counted(size);
}
void* operator new[](size_t size)
{
    return counted(size);
}
void operator delete(void* p) noexcept
{
    release(p);
}
void operator delete[](void* p) noexcept
{
    release(p);
}
void operator delete(void* p, size_t) noexcept
{
    release(p);
}
void operator delete[](void* p, size_t) noexcept
{
    release(p);
}

namespace heap_counter {

size_t allocations()
{
    return allocationCount.load();
}
size_t bytes()
{
    return allocatedBytes.load();
}
long long held()
{
    return heldBytes.load();
}

}  // namespace heap_counter
