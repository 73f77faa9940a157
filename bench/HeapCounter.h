#ifndef TESMO_HBBTV_BENCH_HEAPCOUNTER_H
#define TESMO_HBBTV_BENCH_HEAPCOUNTER_H

#include <cstddef>

// Counts the allocations made through operator new in this program (the library's
// containers and objects included).
namespace heap_counter {

size_t allocations();
size_t bytes();
// Bytes currently held (allocated and not yet freed), for footprint figures.
long long held();

}  // namespace heap_counter

#endif
