#pragma once

#include "condition/status_dispatch.hpp"
#include "util/entity_ids.hpp"

namespace dds {

/// The entity side of what has no statuses: participants, topics, publishers and subscribers.
template <class Api>
class QuietEntity : public Api {
 public:
  DDSStatusCondition* get_statuscondition() override { return &status_.condition(); }
  DDS_StatusMask get_status_changes() override { return 0; }
  DDS_InstanceHandle_t get_instance_handle() override { return handle_; }

 private:
  class QuietStatus final : public StatusDispatch {
   public:
    using StatusDispatch::StatusDispatch;

   private:
    void tell(DDS_StatusMask /*status*/) override {}
  };

  QuietStatus status_{*this};
  const DDS_InstanceHandle_t handle_ = next_entity_handle();
};

}  // namespace dds
