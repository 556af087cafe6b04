#pragma once

#include <dds/condition.hpp>

/// What participants, topics, publishers, subscribers, writers and readers have in common. Entities are enabled from
/// the start.
class DDS_EXPORT DDSEntity {
 public:
  /// The entity's own condition, valid as long as the entity. Participants, topics, publishers and subscribers have no
  /// statuses; theirs is never true.
  virtual DDSStatusCondition* get_statuscondition() = 0;
  /// The statuses that have changed and not been read.
  virtual DDS_StatusMask get_status_changes() = 0;
  virtual DDS_InstanceHandle_t get_instance_handle() = 0;

 protected:
  virtual ~DDSEntity();
};
