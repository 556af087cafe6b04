#include "qos/qos_check.hpp"

#include <cstring>

#include "log/log.hpp"

namespace dds {
namespace {

/// Takes the faults of one QoS down; the first counts and is logged.
class Verdict {
 public:
  explicit Verdict(const char* context) : context_(context) {}

  void unsupported_if(bool fault, const char* policy) {
    report(fault, DDS_RETCODE_UNSUPPORTED, DDS_LOG_UNSUPPORTED_s, policy);
  }
  void inconsistent_if(bool fault, const char* policy) {
    report(fault, DDS_RETCODE_INCONSISTENT_POLICY, DDS_LOG_BAD_PARAMETER_s, policy);
  }
  DDS_ReturnCode_t code() const { return code_; }

 private:
  void report(bool fault, DDS_ReturnCode_t code, const QVXLogMessage& log_template, const char* policy) {
    if (!fault || code_ != DDS_RETCODE_OK) { return; }
    code_ = code;
    DDS_LOG_FAILURE(context_, log_template, "QoS policy %s", policy);
  }

  const char* const context_;
  DDS_ReturnCode_t code_ = DDS_RETCODE_OK;
};

bool is_limit(DDS_Long count) { return count == DDS_LENGTH_UNLIMITED || count > 0; }

bool exceeds(DDS_Long count, DDS_Long limit) { return limit != DDS_LENGTH_UNLIMITED && count > limit; }

void check_reliability(Verdict& verdict, const DDS_ReliabilityQosPolicy& policy) {
  verdict.unsupported_if(policy.kind != DDS_BEST_EFFORT_RELIABILITY_QOS && policy.kind != DDS_RELIABLE_RELIABILITY_QOS,
                         "reliability.kind: neither best-effort nor reliable");
  const DDS_Duration_t& wait = policy.max_blocking_time;
  verdict.inconsistent_if(wait != DDS_DURATION_INFINITE && (wait.sec < 0 || wait.nanosec >= 1000000000),
                          "reliability.max_blocking_time: neither a length of time nor infinite");
}

void check_history(Verdict& verdict, const DDS_HistoryQosPolicy& history, const DDS_ResourceLimitsQosPolicy& limits) {
  verdict.unsupported_if(history.kind != DDS_KEEP_LAST_HISTORY_QOS && history.kind != DDS_KEEP_ALL_HISTORY_QOS,
                         "history.kind: neither keep-last nor keep-all");
  verdict.inconsistent_if(!is_limit(limits.max_samples), "resource_limits.max_samples: not positive");
  verdict.inconsistent_if(!is_limit(limits.max_instances), "resource_limits.max_instances: not positive");
  verdict.inconsistent_if(!is_limit(limits.max_samples_per_instance),
                          "resource_limits.max_samples_per_instance: not positive");
  verdict.inconsistent_if(exceeds(limits.max_samples_per_instance, limits.max_samples),
                          "resource_limits.max_samples: below max_samples_per_instance");
  if (history.kind != DDS_KEEP_LAST_HISTORY_QOS) { return; }
  verdict.inconsistent_if(history.depth <= 0, "history.depth: not positive");
  verdict.inconsistent_if(exceeds(history.depth, limits.max_samples_per_instance),
                          "history.depth: above resource_limits.max_samples_per_instance");
}

/// What topics, writers and readers have in common.
template <class Qos>
void check_endpoint(Verdict& verdict, const Qos& qos) {
  verdict.unsupported_if(qos.durability.kind != DDS_VOLATILE_DURABILITY_QOS, "durability: not volatile");
  verdict.unsupported_if(qos.deadline.period != DDS_DURATION_INFINITE, "deadline: not infinite");
  verdict.unsupported_if(qos.ownership.kind != DDS_SHARED_OWNERSHIP_QOS, "ownership: not shared");
  check_reliability(verdict, qos.reliability);
  check_history(verdict, qos.history, qos.resource_limits);
}

void check_lifespan(Verdict& verdict, const DDS_LifespanQosPolicy& policy) {
  verdict.unsupported_if(policy.duration != DDS_DURATION_INFINITE, "lifespan: not infinite");
}

template <class Qos>
DDS_ReturnCode_t check_group(const Qos& qos, const char* context) {
  Verdict verdict(context);
  verdict.unsupported_if(qos.presentation.access_scope != DDS_INSTANCE_PRESENTATION_QOS,
                         "presentation.access_scope: not by instance");
  verdict.unsupported_if(qos.presentation.coherent_access, "presentation.coherent_access");
  verdict.unsupported_if(qos.presentation.ordered_access, "presentation.ordered_access");
  verdict.unsupported_if(qos.partition.name.length() != 0, "partition");
  return verdict.code();
}

}  // namespace

DDS_ReturnCode_t check(const DDS_DataWriterQos& qos, const char* context) noexcept {
  Verdict verdict(context);
  check_endpoint(verdict, qos);
  check_lifespan(verdict, qos.lifespan);
  verdict.inconsistent_if(qos.writer_resource_limits.max_remote_reader_filters < DDS_LENGTH_UNLIMITED,
                          "writer_resource_limits.max_remote_reader_filters: negative");
  return verdict.code();
}

DDS_ReturnCode_t check(const DDS_DataReaderQos& qos, const char* context) noexcept {
  Verdict verdict(context);
  check_endpoint(verdict, qos);
  verdict.inconsistent_if(!is_limit(qos.reader_resource_limits.max_samples_per_read),
                          "reader_resource_limits.max_samples_per_read: not positive");
  return verdict.code();
}

DDS_ReturnCode_t check(const DDS_TopicQos& qos, const char* context) noexcept {
  Verdict verdict(context);
  check_endpoint(verdict, qos);
  check_lifespan(verdict, qos.lifespan);
  return verdict.code();
}

DDS_ReturnCode_t check(const DDS_PublisherQos& qos, const char* context) noexcept { return check_group(qos, context); }

DDS_ReturnCode_t check(const DDS_SubscriberQos& qos, const char* context) noexcept { return check_group(qos, context); }

DDS_ReturnCode_t check(const DDS_DomainParticipantQos& qos, const char* context) noexcept {
  Verdict verdict(context);
  const DDS_Property_t* transport = DDSPropertyQosPolicyHelper::lookup_property(qos.property, "dds.transport");
  verdict.unsupported_if(
      transport != nullptr && (transport->value == nullptr || (std::strcmp(transport->value, "in_process") != 0 &&
                                                               std::strcmp(transport->value, "rtps") != 0)),
      "property \"dds.transport\": neither \"in_process\" nor \"rtps\"");
  // Each transport looks at its own. Whoever sets one of them means that transport.
  constexpr char of_transport[] = "dds.transport.";
  const bool in_process =
      transport == nullptr || (transport->value != nullptr && std::strcmp(transport->value, "in_process") == 0);
  for (int i = 0; in_process && i < qos.property.value.length(); ++i) {
    const char* const name = qos.property.value[i].name;
    verdict.unsupported_if(name != nullptr && std::strncmp(name, of_transport, sizeof(of_transport) - 1) == 0,
                           "property \"dds.transport\": not \"rtps\", and \"in_process\" has no properties");
  }
  return verdict.code();
}

DDS_QosPolicyId_t incompatible_policy(const DDS_DataWriterQos& offered, const DDS_DataReaderQos& requested) noexcept {
  const bool promises_less = requested.reliability.kind == DDS_RELIABLE_RELIABILITY_QOS &&
                             offered.reliability.kind == DDS_BEST_EFFORT_RELIABILITY_QOS;
  return promises_less ? DDS_RELIABILITY_QOS_POLICY_ID : DDS_INVALID_QOS_POLICY_ID;
}

}  // namespace dds
