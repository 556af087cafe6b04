#pragma once

#include <atomic>
#include <vector>

#include "condition/notifications.hpp"
#include "condition/owner_lock.hpp"
#include "util/ref_ptr.hpp"

namespace dds {

/// What a condition shares with the wait sets it is attached to: whether it is true, and who waits for it.
///
/// Nothing is missed: a waiting thread takes its ticket, then looks at the trigger values, then sleeps; `set` stores
/// the value, then outdates the ticket. `attach` outdates it as well, after the condition has become visible to the
/// waiting thread.
class ConditionCore : public RefCounted<ConditionCore> {
 public:
  /// `owner` guards the trigger value and the attachments.
  explicit ConditionCore(OwnerLock& owner) : owner_(&owner), mutex_(owner.mutex) {}

  bool triggered() const { return triggered_.load(std::memory_order_acquire); }

  /// Sets the trigger value; the caller holds the owner's lock, which the analysis does not know to be this one.
  void set(bool value, Notifications& notifications) DDS_NO_THREAD_SAFETY_ANALYSIS {
    if (triggered_.load(std::memory_order_relaxed) == value) { return; }
    triggered_.store(value, std::memory_order_release);
    if (!value) { return; }
    for (const auto& wait_set : wait_sets_) { notifications.signal(wait_set.get()); }
  }
  /// Detaches the condition from every wait set, before it goes or is put to another use; the caller holds the owner's
  /// lock.
  void detach_all() DDS_NO_THREAD_SAFETY_ANALYSIS;

  // For wait sets. The owner's lock is taken before the wait set's.
  Mutex& mutex() DDS_THREAD_ATTRIBUTE(lock_returned(mutex_)) { return mutex_; }
  /// Throws `std::bad_alloc`.
  void add(WaitSetCore* wait_set) DDS_REQUIRES(mutex_);
  void remove(const WaitSetCore* wait_set) DDS_REQUIRES(mutex_);

 private:
  const RefPtr<OwnerLock> owner_;
  Mutex& mutex_;  // the owner's
  std::atomic<bool> triggered_{false};
  std::vector<RefPtr<WaitSetCore>> wait_sets_ DDS_GUARDED_BY(mutex_);
};

}  // namespace dds
