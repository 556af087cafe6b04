#include <dds/domain_participant_factory.hpp>
#include <requestreply/entity_params.hpp>
#include <requestreply/entity_untyped_impl.hpp>

#include "internal/check.hpp"

namespace zemtra {
namespace details {

namespace {

constexpr const char* kGetDataWriterQos = "EntityUntypedImpl::get_datawriter_qos";
constexpr const char* kGetDataReaderQos = "EntityUntypedImpl::get_datareader_qos";
constexpr const char* kNoWritersSampleProperty = "dds.data_reader.history.generate_not_alive_no_writers_sample";

constexpr DDS_Duration_t kMaxBlockingTime{10, 0};
constexpr DDS_Duration_t kHeartbeatPeriod{0, 100000000};
constexpr DDS_Duration_t kFastHeartbeatPeriod{0, 10000000};
constexpr int kHeartbeatsPerMaxSamples = 2;
constexpr int kSendWindowSize = 32;

/// Requests and replies are kept and repeated until they have arrived, and lost samples are noticed within
/// milliseconds, since somebody is waiting for the answer.
void lay_request_reply_settings_over(DDS_DataWriterQos& qos) {
  qos.reliability.kind = DDS_RELIABLE_RELIABILITY_QOS;
  qos.reliability.max_blocking_time = kMaxBlockingTime;
  qos.history.kind = DDS_KEEP_ALL_HISTORY_QOS;
  qos.resource_limits.max_samples = DDS_LENGTH_UNLIMITED;
  qos.writer_resource_limits.max_remote_reader_filters = DDS_LENGTH_UNLIMITED;
  DDS_RtpsReliableWriterProtocol_t& protocol = qos.protocol.rtps_reliable_writer;
  protocol.heartbeat_period = kHeartbeatPeriod;
  protocol.fast_heartbeat_period = kFastHeartbeatPeriod;
  protocol.late_joiner_heartbeat_period = kFastHeartbeatPeriod;
  protocol.max_heartbeat_retries = DDS_LENGTH_UNLIMITED;
  protocol.heartbeats_per_max_samples = kHeartbeatsPerMaxSamples;
  protocol.min_nack_response_delay = DDS_DURATION_ZERO;
  protocol.max_nack_response_delay = DDS_DURATION_ZERO;
  protocol.min_send_window_size = kSendWindowSize;
  protocol.max_send_window_size = kSendWindowSize;
}

void lay_request_reply_settings_over(DDS_DataReaderQos& qos) {
  qos.reliability.kind = DDS_RELIABLE_RELIABILITY_QOS;
  qos.reliability.max_blocking_time = kMaxBlockingTime;
  qos.history.kind = DDS_KEEP_ALL_HISTORY_QOS;
  qos.resource_limits.max_samples = DDS_LENGTH_UNLIMITED;
  DDS_RtpsReliableReaderProtocol_t& protocol = qos.protocol.rtps_reliable_reader;
  protocol.min_heartbeat_response_delay = DDS_DURATION_ZERO;
  protocol.max_heartbeat_response_delay = DDS_DURATION_ZERO;
}

DDS_ReturnCode_t fill_from_source(DDS_DataWriterQos& qos, const EntityParams& params, DDSDomainParticipant& participant,
                                  const char* topic_name) {
  if (params.datawriter_qos() != nullptr) { return DDS_DataWriterQos_copy(&qos, params.datawriter_qos()); }
  if (!params.qos_library_name().empty()) {
    return DDSDomainParticipantFactory::get_instance()->get_datawriter_qos_from_profile(
        qos, params.qos_library_name().c_str(), params.qos_profile_name().c_str(), topic_name);
  }
  const DDS_ReturnCode_t retcode = participant.get_default_datawriter_qos(qos, topic_name);
  lay_request_reply_settings_over(qos);
  return retcode;
}

DDS_ReturnCode_t fill_from_source(DDS_DataReaderQos& qos, const EntityParams& params, DDSDomainParticipant& participant,
                                  const char* topic_name) {
  if (params.datareader_qos() != nullptr) { return DDS_DataReaderQos_copy(&qos, params.datareader_qos()); }
  if (!params.qos_library_name().empty()) {
    return DDSDomainParticipantFactory::get_instance()->get_datareader_qos_from_profile(
        qos, params.qos_library_name().c_str(), params.qos_profile_name().c_str(), topic_name);
  }
  const DDS_ReturnCode_t retcode = participant.get_default_datareader_qos(qos, topic_name);
  lay_request_reply_settings_over(qos);
  return retcode;
}

/// Sets the role name, which the QoS owns, unless there is one.
void set_role_name(DDS_EntityNameQosPolicy& policy, const char* role, const char* method_name) {
  if (policy.role_name != nullptr) { return; }
  policy.role_name = DDS_String_dup(role);
  if (policy.role_name == nullptr) { fail(DDS_RETCODE_ERROR, method_name, QVX_LOG_ANY_FAILURE_s, "allocate string"); }
}

}  // namespace

void EntityUntypedImpl::get_datawriter_qos(DDS_DataWriterQos& qos, const EntityParams& params, const char* topic_name,
                                           const char* role) {
  const DDS_ReturnCode_t retcode = fill_from_source(qos, params, *participant, topic_name);
  set_role_name(qos.publication_name, role, kGetDataWriterQos);
  check(retcode, kGetDataWriterQos, QVX_LOG_GET_FAILURE_s, "DataWriter qos");
}

void EntityUntypedImpl::get_datareader_qos(DDS_DataReaderQos& qos, const EntityParams& params, const char* topic_name,
                                           const char* role) {
  const DDS_ReturnCode_t retcode = fill_from_source(qos, params, *participant, topic_name);
  set_role_name(qos.subscription_name, role, kGetDataReaderQos);
  check(retcode, kGetDataReaderQos, QVX_LOG_GET_FAILURE_s, "DataReader qos");
  if (DDSPropertyQosPolicyHelper::lookup_property(qos.property, kNoWritersSampleProperty) == nullptr) {
    check(DDSPropertyQosPolicyHelper::add_property(qos.property, kNoWritersSampleProperty, "0", false),
          kGetDataReaderQos, QVX_LOG_ANY_FAILURE_s, "set DataReader qos property");
  }
}

}  // namespace details
}  // namespace zemtra
