#pragma once

#include <dds/qos.hpp>

// Communication statuses. The `_change` counts are those since the status was last read, by a getter or a listener.

struct DDS_SampleLostStatus {
  DDS_Long total_count = 0;
  DDS_Long total_count_change = 0;
};

enum DDS_SampleRejectedStatusKind {
  DDS_NOT_REJECTED = 0,
  DDS_REJECTED_BY_INSTANCES_LIMIT = 1,
  DDS_REJECTED_BY_SAMPLES_LIMIT = 2,
  DDS_REJECTED_BY_SAMPLES_PER_INSTANCE_LIMIT = 3
};

/// Counts the samples that a full reader turned away for good. A reliable sample is not counted: its writer waits
/// instead.
struct DDS_SampleRejectedStatus {
  DDS_Long total_count = 0;
  DDS_Long total_count_change = 0;
  DDS_SampleRejectedStatusKind last_reason = DDS_NOT_REJECTED;
  DDS_InstanceHandle_t last_instance_handle = DDS_HANDLE_NIL;
};

struct DDS_QosPolicyCount {
  DDS_QosPolicyId_t policy_id = DDS_INVALID_QOS_POLICY_ID;
  DDS_Long count = 0;
};
using DDS_QosPolicyCountSeq = DDSSequence<DDS_QosPolicyCount>;

/// Counts the other ends that this end would have matched but for a policy.
struct DDS_RequestedIncompatibleQosStatus {
  DDS_Long total_count = 0;
  DDS_Long total_count_change = 0;
  DDS_QosPolicyId_t last_policy_id = DDS_INVALID_QOS_POLICY_ID;
  DDS_QosPolicyCountSeq policies;
};
using DDS_OfferedIncompatibleQosStatus = DDS_RequestedIncompatibleQosStatus;

/// What a participant's transport could not deliver, since it was created; zeros for a transport that delivers
/// everything.
struct DDS_TransportStatistics {
  DDS_LongLong malformed_messages = 0;  ///< received and dropped: not of our making, or data that does not decode
  DDS_LongLong vanished_replies = 0;    ///< written in answer to a writer that is not there any more
};

/// Counts the other ends that match now (current) and ever did (total).
struct DDS_SubscriptionMatchedStatus {
  DDS_Long total_count = 0;
  DDS_Long total_count_change = 0;
  DDS_Long current_count = 0;
  DDS_Long current_count_change = 0;
  DDS_InstanceHandle_t last_publication_handle = DDS_HANDLE_NIL;
};
struct DDS_PublicationMatchedStatus {
  DDS_Long total_count = 0;
  DDS_Long total_count_change = 0;
  DDS_Long current_count = 0;
  DDS_Long current_count_change = 0;
  DDS_InstanceHandle_t last_subscription_handle = DDS_HANDLE_NIL;
};
