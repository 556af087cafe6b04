#pragma once

#include <cstddef>

namespace bench {

/// Heap allocations that the process has made so far, by whatever function and in whatever library: the executable that
/// links this file counts the calls of the C allocation functions on their way to the C library.
unsigned long allocations();

/// Octets that the heap has handed out and not got back, its own overhead included.
std::size_t heap_in_use();

/// Octets of the process that are in memory; in whole pages.
std::size_t resident();

}  // namespace bench
