#pragma once

#include <dds/basic_types.hpp>
#include <dds/export.hpp>
#include <dds/sequence.hpp>
#include <dds/time.hpp>

class DDSDataReader;
class DDSEntity;
struct DDS_ReadCondition;

namespace dds {
class ConditionCore;
class WaitSetCore;
}  // namespace dds

/// Something that is true or false and can be waited for through a wait set. All operations are thread-safe.
class DDS_EXPORT DDSCondition {
 public:
  /// Costs the same whatever the reader holds.
  virtual DDS_Boolean get_trigger_value() = 0;
  /// For this layer: the state that wait sets share. A wrapping condition passes on the wrapped one's.
  virtual dds::ConditionCore& core() = 0;

 protected:
  virtual ~DDSCondition();
};

using DDSConditionSeq = DDSSequence<DDSCondition*>;

/// A condition that the application sets. Destroying it detaches it from every wait set.
class DDS_EXPORT DDSGuardCondition : public DDSCondition {
 public:
  /// False at first. Throws `std::bad_alloc`.
  DDSGuardCondition();
  ~DDSGuardCondition() override;
  DDSGuardCondition(const DDSGuardCondition&) = delete;
  DDSGuardCondition& operator=(const DDSGuardCondition&) = delete;

  DDS_Boolean get_trigger_value() override;
  DDS_ReturnCode_t set_trigger_value(DDS_Boolean value);
  dds::ConditionCore& core() override;

 private:
  dds::ConditionCore* core_;  // counted; shared with the wait sets it is attached to
};

/// True while a status of its entity that is enabled here has changed and not been read. Belongs to its entity.
class DDS_EXPORT DDSStatusCondition : public DDSCondition {
 public:
  virtual DDS_ReturnCode_t set_enabled_statuses(DDS_StatusMask mask) = 0;
  virtual DDS_StatusMask get_enabled_statuses() = 0;
  virtual DDSEntity* get_entity() = 0;

 protected:
  ~DDSStatusCondition() override;
};

/// True while its reader holds a sample of the given states (and, for an index condition, with the given key). Belongs
/// to its reader and is deleted through it, which detaches it from every wait set.
class DDS_EXPORT DDSReadCondition : public DDSCondition {
 public:
  virtual DDS_SampleStateMask get_sample_state_mask() = 0;
  virtual DDS_ViewStateMask get_view_state_mask() = 0;
  virtual DDS_InstanceStateMask get_instance_state_mask() = 0;
  virtual DDSDataReader* get_datareader() = 0;
  /// For the untyped procedural calls.
  virtual DDS_ReadCondition* procedural_handle() = 0;

 protected:
  ~DDSReadCondition() override;
};

/// Becomes true when an other end is matched, unmatched or found incompatible with its writer or reader, and stays true
/// until `reset`. Each such condition does so on its own: status conditions, listeners and the reading of statuses
/// neither change it nor notice it. Reset it, look at the matches, then wait for it: nothing is missed. Belongs to its
/// writer or reader and is deleted through it, which detaches it from every wait set.
class DDS_EXPORT DDSMatchCondition : public DDSCondition {
 public:
  /// Makes it false until the next change.
  virtual void reset() = 0;

 protected:
  ~DDSMatchCondition() override;
};

/// Blocks a thread until one of the attached conditions is true. Serves one waiting thread at a time; everything else
/// may be called by any thread, also while one waits, and so may conditions be created, changed and deleted meanwhile:
/// nothing is missed.
class DDS_EXPORT DDSWaitSet {
 public:
  /// Empty. Throws `std::bad_alloc`.
  DDSWaitSet();
  /// Detaches every condition; no thread may be waiting.
  ~DDSWaitSet();
  DDSWaitSet(const DDSWaitSet&) = delete;
  DDSWaitSet& operator=(const DDSWaitSet&) = delete;

  /// Attaching what is attached already changes nothing and succeeds. `DDS_RETCODE_BAD_PARAMETER` for null,
  /// `DDS_RETCODE_OUT_OF_RESOURCES` when memory is exhausted.
  DDS_ReturnCode_t attach_condition(DDSCondition* condition);
  /// `DDS_RETCODE_PRECONDITION_NOT_MET` when the condition is not attached, `DDS_RETCODE_BAD_PARAMETER` for null.
  DDS_ReturnCode_t detach_condition(DDSCondition* condition);
  /// Replaces the content of `conditions` by the attached ones.
  DDS_ReturnCode_t get_conditions(DDSConditionSeq& conditions);

  /// Returns `DDS_RETCODE_OK` once a condition is true, with the true ones in `active_conditions`; a sequence that
  /// refers to a lent buffer receives as many as fit. `DDS_RETCODE_TIMEOUT`, and an empty sequence, after `timeout`; a
  /// timeout of zero or less looks once and does not block. `DDS_RETCODE_PRECONDITION_NOT_MET`, at once, while another
  /// thread waits on this wait set. Allocates nothing when the sequence is large enough.
  DDS_ReturnCode_t wait(DDSConditionSeq& active_conditions, const DDS_Duration_t& timeout);

  /// Exchanges the conditions of two wait sets on neither of which a thread waits.
  void swap(DDSWaitSet& other) noexcept;

 private:
  dds::WaitSetCore* core_;  // counted; shared with threads that are about to wake it
};
