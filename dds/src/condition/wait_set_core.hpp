#pragma once

#include <dds/condition.hpp>
#include <vector>

#include "util/futex.hpp"
#include "util/mutex.hpp"
#include "util/ref_ptr.hpp"

namespace dds {

/// What a wait set consists of; shared by the `DDSWaitSet` and by threads that are about to wake it.
class DDS_EXPORT WaitSetCore : public RefCounted<WaitSetCore> {
 public:
  WaitSetCore();
  ~WaitSetCore();
  DDS_ReturnCode_t attach(DDSCondition* condition) DDS_EXCLUDES(mutex_);
  DDS_ReturnCode_t detach(DDSCondition* condition) DDS_EXCLUDES(mutex_);
  /// Detaches everything, before the wait set goes.
  void detach_all() DDS_EXCLUDES(mutex_);
  /// Forgets a condition that is being deleted.
  void forget(ConditionCore* core) DDS_EXCLUDES(mutex_);
  DDS_ReturnCode_t get_conditions(DDSConditionSeq& conditions) DDS_EXCLUDES(mutex_);
  DDS_ReturnCode_t wait(DDSConditionSeq& active, const DDS_Duration_t& timeout) DDS_EXCLUDES(mutex_);

  /// A condition turned true, was attached or was forgotten: whoever sleeps has to look again. True when `wake` is
  /// needed.
  bool signal() { return event_.advance(); }
  void wake() const { event_.wake(); }

 private:
  struct Attachment {
    RefPtr<ConditionCore> core;  // keeps the core, not the condition, which the core outlives
    DDSCondition* condition;
  };

  std::vector<Attachment>::iterator find(const ConditionCore* core) DDS_REQUIRES(mutex_);
  /// Fills `active` with the true conditions; false when there is none.
  bool collect(DDSConditionSeq& active, DDS_ReturnCode_t& outcome) DDS_REQUIRES(mutex_);

  Mutex mutex_;
  std::vector<Attachment> attachments_ DDS_GUARDED_BY(mutex_);
  bool waiting_ DDS_GUARDED_BY(mutex_) = false;
  EventCount event_;
};

}  // namespace dds
