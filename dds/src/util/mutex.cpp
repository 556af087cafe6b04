#include "util/mutex.hpp"

#include "util/futex.hpp"

namespace dds {

// Whoever has slept takes the lock as awaited, since others may still sleep.
void Mutex::lock_contended() {
  Deadline never(DDS_DURATION_INFINITE);
  while (state_.exchange(kAwaited, std::memory_order_acquire) != kFree) { futex_wait(state_, kAwaited, never); }
}

void Mutex::wake_one() { futex_wake(state_, 1); }

}  // namespace dds
