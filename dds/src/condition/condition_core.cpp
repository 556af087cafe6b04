#include "condition/condition_core.hpp"

#include <algorithm>

namespace dds {

void ConditionCore::add(WaitSetCore* wait_set) { wait_sets_.emplace_back(wait_set); }

void ConditionCore::remove(const WaitSetCore* wait_set) {
  const auto found =
      std::find_if(wait_sets_.begin(), wait_sets_.end(), [=](const auto& w) { return w.get() == wait_set; });
  if (found != wait_sets_.end()) { wait_sets_.erase(found); }
}

void ConditionCore::detach_all() {
  for (const auto& wait_set : wait_sets_) { wait_set->forget(this); }
  wait_sets_.clear();
}

}  // namespace dds
