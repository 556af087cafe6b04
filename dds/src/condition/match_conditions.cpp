#include "condition/match_conditions.hpp"

#include <algorithm>
#include <new>
#include <utility>

#include "log/log.hpp"

namespace dds {

void MatchConditionImpl::reset() {
  Notifications notifications;
  const MutexLock lock(core_->mutex());
  core_->set(false, notifications);
}

DDSMatchCondition* MatchConditions::create() {
  try {
    auto condition = std::make_unique<MatchConditionImpl>(owner_);
    const MutexLock lock(mutex_);
    conditions_.push_back(std::move(condition));
    return conditions_.back().get();
  } catch (const std::bad_alloc&) {
    DDS_LOG_FAILURE("create_match_condition", QVX_LOG_CREATION_FAILURE_s, "out of memory");
    return nullptr;
  }
}

DDS_ReturnCode_t MatchConditions::remove(DDSMatchCondition* condition) {
  return DDS_LOG_REFUSAL("delete_match_condition", try_remove(condition), "not a match condition of this entity");
}

DDS_ReturnCode_t MatchConditions::try_remove(const DDSMatchCondition* condition) {
  if (condition == nullptr) { return DDS_RETCODE_BAD_PARAMETER; }
  const MutexLock lock(mutex_);
  const auto found =
      std::find_if(conditions_.begin(), conditions_.end(), [=](const auto& own) { return own.get() == condition; });
  if (found == conditions_.end()) { return DDS_RETCODE_PRECONDITION_NOT_MET; }
  (*found)->core().detach_all();
  conditions_.erase(found);
  return DDS_RETCODE_OK;
}

void MatchConditions::remove_all() {
  const MutexLock lock(mutex_);
  for (const auto& condition : conditions_) { condition->core().detach_all(); }
  conditions_.clear();
}

}  // namespace dds
