#pragma once

#include <dds/condition.hpp>
#include <memory>
#include <vector>

#include "condition/condition_core.hpp"

namespace dds {

class MatchConditionImpl final : public DDSMatchCondition {
 public:
  explicit MatchConditionImpl(OwnerLock& owner) : core_(new ConditionCore(owner)) {}
  MatchConditionImpl(const MatchConditionImpl&) = delete;
  MatchConditionImpl& operator=(const MatchConditionImpl&) = delete;
  ~MatchConditionImpl() override { core_->unref(); }

  DDS_Boolean get_trigger_value() override { return core_->triggered(); }
  void reset() override;
  ConditionCore& core() override { return *core_; }

 private:
  ConditionCore* core_;  // counted; shared with the wait sets it is attached to
};

/// The match conditions of one writer or reader. They change under the entity's lock, and so do its matches: whoever
/// resets a condition and then looks at the matches misses none.
class MatchConditions {
 public:
  /// `owner` is the entity's lock, which must outlive this.
  explicit MatchConditions(OwnerLock& owner) : owner_(owner), mutex_(owner.mutex) {}
  MatchConditions(const MatchConditions&) = delete;
  MatchConditions& operator=(const MatchConditions&) = delete;
  ~MatchConditions() { remove_all(); }

  /// Null, and a log line, when memory is exhausted.
  DDSMatchCondition* create() DDS_EXCLUDES(mutex_);
  /// Does not look into a condition that is not one of these.
  DDS_ReturnCode_t remove(DDSMatchCondition* condition) DDS_EXCLUDES(mutex_);
  void remove_all() DDS_EXCLUDES(mutex_);

  // The caller holds the entity's lock, which the analysis does not know to be this one.

  /// The matches have changed.
  void raise(Notifications& notifications) const DDS_NO_THREAD_SAFETY_ANALYSIS {
    for (const auto& condition : conditions_) { condition->core().set(true, notifications); }
  }
  bool empty() const DDS_NO_THREAD_SAFETY_ANALYSIS { return conditions_.empty(); }

 private:
  DDS_ReturnCode_t try_remove(const DDSMatchCondition* condition) DDS_EXCLUDES(mutex_);

  OwnerLock& owner_;
  Mutex& mutex_;  // the owner's
  std::vector<std::unique_ptr<MatchConditionImpl>> conditions_ DDS_GUARDED_BY(mutex_);
};

}  // namespace dds
