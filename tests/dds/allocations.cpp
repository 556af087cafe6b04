#include "allocations.hpp"

#include <cstdlib>
#include <limits>
#include <new>

extern "C" {
void* __real_aligned_alloc(std::size_t alignment, std::size_t size);
void* __wrap_aligned_alloc(std::size_t alignment, std::size_t size);
}

namespace {

constexpr int never = std::numeric_limits<int>::max();
thread_local int count = 0;
thread_local int first_failing = never;

bool may_allocate() { return count++ < first_failing; }

void* allocate(std::size_t size) noexcept { return may_allocate() ? std::malloc(size) : nullptr; }

void* allocate(std::size_t size, std::align_val_t alignment) noexcept {
  const auto boundary = static_cast<std::size_t>(alignment);
  return may_allocate() ? __real_aligned_alloc(boundary, (size + boundary - 1) / boundary * boundary) : nullptr;
}

void* or_throw(void* memory) {
  if (memory == nullptr) { throw std::bad_alloc(); }
  return memory;
}

}  // namespace

int allocation_count() { return count; }

FailingAllocations::FailingAllocations(int first) { first_failing = count + first; }
FailingAllocations::~FailingAllocations() { first_failing = never; }

UnwatchedAllocations::UnwatchedAllocations() : count_(count), first_failing_(first_failing) { first_failing = never; }
UnwatchedAllocations::~UnwatchedAllocations() {
  count = count_;
  first_failing = first_failing_;
}

void* __wrap_aligned_alloc(std::size_t alignment, std::size_t size) {
  return may_allocate() ? __real_aligned_alloc(alignment, size) : nullptr;
}

void* operator new(std::size_t size) { return or_throw(allocate(size)); }
void* operator new[](std::size_t size) { return or_throw(allocate(size)); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void* operator new(std::size_t size, std::align_val_t alignment) { return or_throw(allocate(size, alignment)); }
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return allocate(size, alignment);
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { std::free(memory); }
