#pragma once

#include <atomic>
#include <vector>

#include "condition/notifications.hpp"
#include "util/mutex.hpp"
#include "util/ref_ptr.hpp"

namespace dds {

/// What a condition shares with the wait sets it is attached to: whether it is true, and who waits for it.
///
/// Nothing is missed: a waiting thread takes its ticket, then looks at the trigger values, then sleeps; `set` stores
/// the value, then outdates the ticket. `attach` outdates it as well, after the condition has become visible to the
/// waiting thread.
class ConditionCore : public RefCounted<ConditionCore> {
 public:
  bool triggered() const { return triggered_.load(std::memory_order_seq_cst); }

  /// Sets the trigger value; the owner of the condition makes sure that no two threads call this at once.
  void set(bool value, Notifications& notifications) {
    if (triggered_.load(std::memory_order_relaxed) == value) { return; }
    triggered_.store(value, std::memory_order_seq_cst);
    if (value && attached_.load(std::memory_order_seq_cst)) { signal_all(notifications); }
  }

  /// The same for owners that cannot make sure.
  void set_shared(bool value, Notifications& notifications) DDS_EXCLUDES(mutex_);

  // For wait sets. The condition's lock is taken before the wait set's.
  Mutex& mutex() DDS_THREAD_ATTRIBUTE(lock_returned(mutex_)) { return mutex_; }
  /// Throws `std::bad_alloc`.
  void add(WaitSetCore* wait_set) DDS_REQUIRES(mutex_);
  void remove(const WaitSetCore* wait_set) DDS_REQUIRES(mutex_);

  /// Detaches the condition from every wait set, before it goes or is put to another use.
  void detach_all() DDS_EXCLUDES(mutex_);

 private:
  void signal_all(Notifications& notifications) DDS_EXCLUDES(mutex_);

  std::atomic<bool> triggered_{false};
  std::atomic<bool> attached_{false};  // whether wait_sets_ has an element, for a look without the lock
  Mutex mutex_;
  std::vector<RefPtr<WaitSetCore>> wait_sets_ DDS_GUARDED_BY(mutex_);
};

}  // namespace dds
