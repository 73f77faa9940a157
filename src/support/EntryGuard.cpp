#include "support/EntryGuard.h"

#include <cstddef>

namespace TesmoHbbTV {

unsigned EntryGuard::depth = 0;
std::vector<std::pair<void*, EntryGuard::Deleter>> EntryGuard::disposed;

EntryGuard::~EntryGuard()
{
    // Still counted as inside while deleting: a destructor's callbacks may dispose of more.
    if (depth == 1)
        deleteDisposed();
    --depth;
}

void EntryGuard::deleteDisposed()
{
    // In order of disposal; a deletion may append, so the list is taken one entry at a time.
    for (std::size_t i = 0; i < disposed.size(); ++i) {
        const auto entry = disposed[i];
        entry.second(entry.first);
    }
    disposed.clear();
}

}  // namespace TesmoHbbTV
