#include "condition/wait_set_core.hpp"

#include <algorithm>
#include <new>

#include "condition/condition_core.hpp"

namespace dds {

WaitSetCore::WaitSetCore() = default;
WaitSetCore::~WaitSetCore() = default;

std::vector<WaitSetCore::Attachment>::iterator WaitSetCore::find(const ConditionCore* core) {
  return std::find_if(attachments_.begin(), attachments_.end(),
                      [=](const Attachment& a) { return a.core.get() == core; });
}

DDS_ReturnCode_t WaitSetCore::attach(DDSCondition* condition) {
  ConditionCore& core = condition->core();
  {
    const MutexLock condition_lock(core.mutex());
    const MutexLock lock(mutex_);
    if (find(&core) != attachments_.end()) { return DDS_RETCODE_OK; }
    try {
      attachments_.push_back({RefPtr<ConditionCore>(&core), condition});
      core.add(this);
    } catch (const std::bad_alloc&) {
      if (!attachments_.empty() && attachments_.back().core.get() == &core) { attachments_.pop_back(); }
      return DDS_RETCODE_OUT_OF_RESOURCES;
    }
  }
  if (signal()) { wake(); }
  return DDS_RETCODE_OK;
}

DDS_ReturnCode_t WaitSetCore::detach(DDSCondition* condition) {
  ConditionCore& core = condition->core();
  const MutexLock condition_lock(core.mutex());
  const MutexLock lock(mutex_);
  const auto found = find(&core);
  if (found == attachments_.end()) { return DDS_RETCODE_PRECONDITION_NOT_MET; }
  core.remove(this);
  attachments_.erase(found);
  return DDS_RETCODE_OK;
}

// The condition's lock comes before the wait set's, so each condition is picked under the one and detached under both.
void WaitSetCore::detach_all() {
  for (;;) {
    RefPtr<ConditionCore> core;
    {
      const MutexLock lock(mutex_);
      if (attachments_.empty()) { return; }
      core = RefPtr<ConditionCore>(attachments_.back().core.get());
    }
    const MutexLock condition_lock(core->mutex());
    core->remove(this);
    forget(core.get());
  }
}

void WaitSetCore::forget(ConditionCore* core) {
  RefPtr<ConditionCore> last;  // released after the lock
  const MutexLock lock(mutex_);
  const auto found = find(core);
  if (found == attachments_.end()) { return; }
  last = std::move(found->core);
  attachments_.erase(found);
}

DDS_ReturnCode_t WaitSetCore::get_conditions(DDSConditionSeq& conditions) {
  const MutexLock lock(mutex_);
  const int count = static_cast<int>(attachments_.size());
  if (!conditions.ensure_length(count, count)) { return DDS_RETCODE_OUT_OF_RESOURCES; }
  for (int i = 0; i < count; ++i) { conditions[i] = attachments_[static_cast<std::size_t>(i)].condition; }
  return DDS_RETCODE_OK;
}

bool WaitSetCore::collect(DDSConditionSeq& active, DDS_ReturnCode_t& outcome) {
  int count = 0;
  for (const Attachment& attachment : attachments_) {
    if (!attachment.core->triggered()) { continue; }
    if (count == active.maximum()) {
      if (!active.has_ownership()) { break; }
      if (!active.maximum(static_cast<int>(attachments_.size()))) {
        outcome = DDS_RETCODE_OUT_OF_RESOURCES;
        active.length(0);
        return true;
      }
    }
    active.length(count + 1);
    active[count++] = attachment.condition;
  }
  outcome = count > 0 ? DDS_RETCODE_OK : DDS_RETCODE_TIMEOUT;
  return count > 0;
}

DDS_ReturnCode_t WaitSetCore::wait(DDSConditionSeq& active, const DDS_Duration_t& timeout) {
  active.length(0);
  if (active.maximum() == 0 && !active.has_ownership()) { return DDS_RETCODE_BAD_PARAMETER; }
  Deadline deadline(timeout);
  mutex_.lock();
  if (waiting_) {
    mutex_.unlock();
    return DDS_RETCODE_PRECONDITION_NOT_MET;
  }
  waiting_ = true;
  DDS_ReturnCode_t outcome = DDS_RETCODE_TIMEOUT;
  for (;;) {
    const std::uint32_t ticket = event_.ticket();
    if (collect(active, outcome) || deadline.passed()) { break; }
    mutex_.unlock();
    event_.wait(ticket, deadline);
    mutex_.lock();
  }
  waiting_ = false;
  mutex_.unlock();
  return outcome;
}

}  // namespace dds
