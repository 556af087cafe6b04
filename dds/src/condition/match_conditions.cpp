#include "condition/match_conditions.hpp"

#include <new>

#include "log/log.hpp"

namespace dds {

void MatchConditionImpl::reset() {
  Notifications notifications;
  const MutexLock lock(core_->mutex());
  core_->set(false, notifications);
}

DDSMatchCondition* MatchConditions::create() {
  MatchConditionImpl* condition = nullptr;
  try {
    condition = new MatchConditionImpl(owner_);
  } catch (const std::bad_alloc&) {
    DDS_LOG_FAILURE("create_match_condition", QVX_LOG_CREATION_FAILURE_s, "out of memory");
    return nullptr;
  }
  const MutexLock lock(mutex_);
  list_.push_back(condition);
  return condition;
}

DDS_ReturnCode_t MatchConditions::remove(DDSMatchCondition* condition) {
  return DDS_LOG_REFUSAL("delete_match_condition", try_remove(condition), "not a match condition of this entity");
}

DDS_ReturnCode_t MatchConditions::try_remove(const DDSMatchCondition* condition) {
  if (condition == nullptr) { return DDS_RETCODE_BAD_PARAMETER; }
  const MutexLock lock(mutex_);
  MatchConditionImpl* own = list_.front();
  while (own != nullptr && own != condition) { own = list_.next(own); }
  if (own == nullptr) { return DDS_RETCODE_PRECONDITION_NOT_MET; }
  drop(own);
  return DDS_RETCODE_OK;
}

void MatchConditions::remove_all() {
  const MutexLock lock(mutex_);
  while (!list_.empty()) { drop(list_.front()); }
}

void MatchConditions::drop(MatchConditionImpl* condition) {
  list_.erase(condition);
  condition->core().detach_all();
  delete condition;
}

}  // namespace dds
