#pragma once

#include <dds/qos.hpp>

namespace dds {

// Whether an entity can be had with such QoS: `DDS_RETCODE_OK`; `DDS_RETCODE_UNSUPPORTED` for what this layer does not
// offer; `DDS_RETCODE_INCONSISTENT_POLICY` for values that contradict each other or mean nothing. Of a refusal one log
// line under `context` names the policy.

DDS_ReturnCode_t check(const DDS_DataWriterQos& qos, const char* context) noexcept;
DDS_ReturnCode_t check(const DDS_DataReaderQos& qos, const char* context) noexcept;
DDS_ReturnCode_t check(const DDS_TopicQos& qos, const char* context) noexcept;
DDS_ReturnCode_t check(const DDS_PublisherQos& qos, const char* context) noexcept;
DDS_ReturnCode_t check(const DDS_SubscriberQos& qos, const char* context) noexcept;
DDS_ReturnCode_t check(const DDS_DomainParticipantQos& qos, const char* context) noexcept;

/// The policy that keeps two ends from matching; `DDS_INVALID_QOS_POLICY_ID` when they match.
DDS_EXPORT DDS_QosPolicyId_t incompatible_policy(const DDS_DataWriterQos& offered,
                                                 const DDS_DataReaderQos& requested) noexcept;

}  // namespace dds
