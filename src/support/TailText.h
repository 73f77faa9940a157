#ifndef TESMO_HBBTV_SUPPORT_TAILTEXT_H
#define TESMO_HBBTV_SUPPORT_TAILTEXT_H

#include <cstddef>
#include <cstring>
#include <new>
#include <string>
#include <string_view>

namespace TesmoHbbTV {

// Text kept in room allocated right behind its owner, so that an object and its strings
// take one allocation. The owner sizes the room from the bytes it will copy; an append that
// does not fit is cut at the room's end.
class TailText {
public:
    TailText() = default;
    TailText(char* room, std::size_t capacity) : room(room), capacity(capacity) {}

    void append(const void* bytes, std::size_t count)
    {
        const std::size_t fits = count < capacity - length ? count : capacity - length;
        if (fits)
            std::memcpy(room + length, bytes, fits);
        length += fits;
    }

    std::string_view view() const { return std::string_view(room ? room : "", length); }
    std::string str() const { return std::string(view()); }

    // A block for an object of objectSize bytes followed by room bytes; the room starts at
    // roomOf(block, objectSize). Free it with ::operator delete.
    static void* allocate(std::size_t objectSize, std::size_t room) { return ::operator new(objectSize + room); }
    static char* roomOf(void* block, std::size_t objectSize) { return static_cast<char*>(block) + objectSize; }

private:
    char* room = nullptr;  // owned by the object holding this text
    std::size_t capacity = 0;
    std::size_t length = 0;
};

}  // namespace TesmoHbbTV

#endif
