#pragma once

#include <dds/condition.hpp>

#include "cache/entry.hpp"
#include "condition/condition_core.hpp"
#include "util/handles.hpp"

namespace dds {

class ReaderCore;

/// A condition of a reader. Reused by its reader from one creation to the next, since requesters create some for every
/// call.
class ReadConditionImpl final : public DDSReadCondition, public DDS_ReadCondition {
 public:
  ReadConditionImpl(ReaderCore& reader, OwnerLock& lock) : reader_(reader), core_(new ConditionCore(lock)) {
    watch_.condition = core_;
  }
  ~ReadConditionImpl() override { core_->unref(); }

  DDS_Boolean get_trigger_value() override { return core_->triggered(); }
  ConditionCore& core() override { return *core_; }
  DDS_SampleStateMask get_sample_state_mask() override { return sample_states_; }
  DDS_ViewStateMask get_view_state_mask() override { return view_states_; }
  DDS_InstanceStateMask get_instance_state_mask() override { return instance_states_; }
  DDSDataReader* get_datareader() override;
  DDS_ReadCondition* procedural_handle() override { return this; }

  ListHook<ReadConditionImpl> in_reader;  // the reader's conditions, under its lock

 private:
  friend class ReaderCore;

  ReaderCore& reader_;
  ConditionCore* core_;
  // Guarded by the reader's lock; the masks do not change while the application has the condition.
  DDS_SampleStateMask sample_states_ = 0;
  DDS_ViewStateMask view_states_ = 0;
  DDS_InstanceStateMask instance_states_ = 0;
  Watch watch_;
  bool in_use_ = false;
  ReadConditionImpl* next_ = nullptr;  // idle conditions
};

}  // namespace dds
