#include "allocated.hpp"

#include <cstdlib>
#include <new>

namespace {

thread_local std::size_t total = 0;

void* allocate(std::size_t size) noexcept {
  total += size;
  return std::malloc(size == 0 ? 1 : size);
}

}  // namespace

std::size_t fuzz::allocated() { return total; }

void* operator new(std::size_t size) {
  void* const memory = allocate(size);
  if (memory == nullptr) { throw std::bad_alloc(); }
  return memory;
}
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept { return allocate(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }

// Linked with --wrap=aligned_alloc.
extern "C" {
void* __real_aligned_alloc(std::size_t alignment, std::size_t size);
void* __wrap_aligned_alloc(std::size_t alignment, std::size_t size);
void* __wrap_aligned_alloc(std::size_t alignment, std::size_t size) {
  total += size;
  return __real_aligned_alloc(alignment, size);
}
}
