#include "support/heap.hpp"

#include <malloc.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <fstream>

namespace {

std::atomic<unsigned long> count{0};

void count_one() { count.fetch_add(1, std::memory_order_relaxed); }

}  // namespace

// The C library's own names for its functions, which stay reachable when the executable defines the public ones.
extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name): the C library's are reserved names
void* malloc(std::size_t size) noexcept {
  count_one();
  return __libc_malloc(size);
}
void* calloc(std::size_t elements, std::size_t size) noexcept {
  count_one();
  return __libc_calloc(elements, size);
}
void* realloc(void* memory, std::size_t size) noexcept {
  count_one();
  return __libc_realloc(memory, size);
}
void* memalign(std::size_t alignment, std::size_t size) noexcept {
  count_one();
  return __libc_memalign(alignment, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
  count_one();
  return __libc_memalign(alignment, size);
}
int posix_memalign(void** memory, std::size_t alignment, std::size_t size) noexcept {
  count_one();
  void* const made = __libc_memalign(alignment, size);
  if (made == nullptr) { return ENOMEM; }
  *memory = made;
  return 0;
}
// NOLINTEND(readability-inconsistent-declaration-parameter-name)
}

namespace bench {

unsigned long allocations() { return count.load(std::memory_order_relaxed); }

std::size_t heap_in_use() {
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

std::size_t resident() {
  std::ifstream statm("/proc/self/statm");
  std::size_t total = 0;
  std::size_t pages = 0;
  statm >> total >> pages;
  return pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

}  // namespace bench
