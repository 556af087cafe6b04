// Apart from the tests, so that the compiler does not pair the allocation of one file with the release of another.
#include "regressions/failing_allocation.hpp"

#include <cstdlib>
#include <new>

namespace regressions {
thread_local int allocations_left = -1;
}  // namespace regressions

void* operator new(std::size_t size) {
  using regressions::allocations_left;
  void* memory = allocations_left == 0 ? nullptr : std::malloc(size);
  if (allocations_left >= 0) { --allocations_left; }
  if (memory == nullptr) { throw std::bad_alloc(); }
  return memory;
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }
