#include "failing_allocation.hpp"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <new>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define KEEP_C_ALLOCATION  // the sanitizer's own functions must stay in place
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define KEEP_C_ALLOCATION
#endif
#endif

namespace behaviour {
namespace {

thread_local int allocations_left = 0;  // up to and with the one that fails; 0 when none will
thread_local long count = 0;

std::atomic<long> elsewhere_every{0};  // 0 when none fails
std::atomic<long> elsewhere_count{0};
thread_local bool spared = false;

bool fails_now() {
  ++count;
  return allocations_left > 0 && --allocations_left == 0;
}

bool fails_elsewhere() {
  const long every = elsewhere_every.load();
  return every != 0 && !spared && ++elsewhere_count % every == 0;
}

}  // namespace

FailingElsewhere::FailingElsewhere(long every) {
  spared = true;
  elsewhere_count = 0;
  elsewhere_every = every;
}
FailingElsewhere::~FailingElsewhere() {
  elsewhere_every = 0;
  spared = false;
}
long FailingElsewhere::failures() const { return elsewhere_count / elsewhere_every; }

FailingAllocation::FailingAllocation(int nth) { allocations_left = nth; }
FailingAllocation::~FailingAllocation() { allocations_left = 0; }
bool FailingAllocation::happened() const { return allocations_left == 0; }
long allocation_count() { return count; }

namespace {

#ifdef KEEP_C_ALLOCATION
void* plain(std::size_t size) { return std::malloc(size); }
void* aligned(std::size_t alignment, std::size_t size) {
  void* memory = nullptr;
  return posix_memalign(&memory, alignment, size) == 0 ? memory : nullptr;
}
#else
extern "C" void* __libc_malloc(std::size_t size);
extern "C" void* __libc_calloc(std::size_t count, std::size_t size);
extern "C" void* __libc_realloc(void* memory, std::size_t size);
extern "C" void* __libc_memalign(std::size_t alignment, std::size_t size);
void* plain(std::size_t size) { return __libc_malloc(size); }
void* aligned(std::size_t alignment, std::size_t size) { return __libc_memalign(alignment, size); }
#endif

void* or_throw(void* memory) {
  if (memory == nullptr) { throw std::bad_alloc(); }
  return memory;
}

}  // namespace
}  // namespace behaviour

#ifndef KEEP_C_ALLOCATION
extern "C" {
void* malloc(std::size_t size) { return behaviour::fails_now() ? nullptr : behaviour::plain(size); }
void* calloc(std::size_t count, std::size_t size) {
  return behaviour::fails_now() ? nullptr : behaviour::__libc_calloc(count, size);
}
void* realloc(void* memory, std::size_t size) {
  return behaviour::fails_now() ? nullptr : behaviour::__libc_realloc(memory, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
  return behaviour::fails_now() ? nullptr : behaviour::aligned(alignment, size);
}
int posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
  *memory = behaviour::fails_now() ? nullptr : behaviour::aligned(alignment, size);
  return *memory == nullptr ? ENOMEM : 0;
}
}
#endif

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return behaviour::fails_now() || behaviour::fails_elsewhere() ? nullptr : behaviour::plain(size == 0 ? 1 : size);
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return behaviour::fails_now() ? nullptr : behaviour::aligned(static_cast<std::size_t>(alignment), size);
}
void* operator new(std::size_t size) { return behaviour::or_throw(operator new(size, std::nothrow)); }
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return operator new(size, std::nothrow); }
void* operator new(std::size_t size, std::align_val_t alignment) {
  return behaviour::or_throw(operator new(size, alignment, std::nothrow));
}
void* operator new[](std::size_t size, std::align_val_t alignment) { return operator new(size, alignment); }
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return operator new(size, alignment, std::nothrow);
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::align_val_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
