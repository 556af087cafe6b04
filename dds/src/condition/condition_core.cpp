#include "condition/condition_core.hpp"

#include <algorithm>

namespace dds {

void ConditionCore::add(WaitSetCore* wait_set) {
  wait_sets_.emplace_back(wait_set);
  attached_.store(true, std::memory_order_seq_cst);
}

void ConditionCore::remove(const WaitSetCore* wait_set) {
  const auto found =
      std::find_if(wait_sets_.begin(), wait_sets_.end(), [=](const auto& w) { return w.get() == wait_set; });
  if (found != wait_sets_.end()) { wait_sets_.erase(found); }
  attached_.store(!wait_sets_.empty(), std::memory_order_seq_cst);
}

void ConditionCore::signal_all(Notifications& notifications) {
  const MutexLock lock(mutex_);
  for (const auto& wait_set : wait_sets_) { notifications.signal(wait_set.get()); }
}

void ConditionCore::set_shared(bool value, Notifications& notifications) {
  const MutexLock lock(mutex_);
  if (triggered_.exchange(value, std::memory_order_seq_cst) == value || !value) { return; }
  for (const auto& wait_set : wait_sets_) { notifications.signal(wait_set.get()); }
}

void ConditionCore::detach_all() {
  if (!attached_.load(std::memory_order_seq_cst)) { return; }
  const MutexLock lock(mutex_);
  for (const auto& wait_set : wait_sets_) { wait_set->forget(this); }
  wait_sets_.clear();
  attached_.store(false, std::memory_order_seq_cst);
}

}  // namespace dds
