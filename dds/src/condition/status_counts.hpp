#pragma once

#include <dds/status.hpp>
#include <limits>
#include <type_traits>

namespace dds {

/// One more; the counts stay at their largest value, which a full reader may well reach.
template <class Status>
void count_one(Status& status) {
  constexpr DDS_Long most = std::numeric_limits<DDS_Long>::max();
  if (status.total_count != most) { ++status.total_count; }
  if (status.total_count_change != most) { ++status.total_count_change; }
}

/// Counts another end that a policy kept from matching. Exhausted memory costs the count per policy, not the total.
inline void count_policy(DDS_RequestedIncompatibleQosStatus& status, DDS_QosPolicyId_t policy) {
  count_one(status);
  status.last_policy_id = policy;
  int i = 0;
  while (i < status.policies.length() && status.policies[i].policy_id != policy) { ++i; }
  if (i == status.policies.length() && !status.policies.ensure_length(i + 1, i + 1)) { return; }
  status.policies[i].policy_id = policy;
  ++status.policies[i].count;
}

template <class Status>
void count_match(Status& status, DDS_InstanceHandle_t Status::*last, DDS_InstanceHandle_t handle) {
  count_one(status);
  ++status.current_count;
  ++status.current_count_change;
  status.*last = handle;
}

template <class Status>
void count_unmatch(Status& status, DDS_InstanceHandle_t Status::*last, DDS_InstanceHandle_t handle) {
  --status.current_count;
  --status.current_count_change;
  status.*last = handle;
}

// Copies a status out and resets its changes; false, and nothing is reset, when memory is exhausted.

inline bool take_status(DDS_RequestedIncompatibleQosStatus& own, DDS_RequestedIncompatibleQosStatus& status) {
  if (!status.policies.assign(own.policies)) { return false; }
  status.total_count = own.total_count;
  status.total_count_change = own.total_count_change;
  status.last_policy_id = own.last_policy_id;
  own.total_count_change = 0;
  return true;
}

template <class Status>
bool take_status(Status& own, Status& status) {
  status = own;
  own.total_count_change = 0;
  if constexpr (std::is_same_v<Status, DDS_SubscriptionMatchedStatus> ||
                std::is_same_v<Status, DDS_PublicationMatchedStatus>) {
    own.current_count_change = 0;
  }
  return true;
}

}  // namespace dds
