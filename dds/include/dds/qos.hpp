#pragma once

#include <dds/identity.hpp>
#include <dds/sequence.hpp>
#include <dds/time.hpp>

// Quality of service. Defaults stand beside the fields. Where a policy says "refused", creating an entity with another
// value fails with a log line that names the policy, and the functions that only store QoS return
// `DDS_RETCODE_UNSUPPORTED`.

enum DDS_ReliabilityQosPolicyKind : int { DDS_BEST_EFFORT_RELIABILITY_QOS = 0, DDS_RELIABLE_RELIABILITY_QOS = 1 };
enum DDS_HistoryQosPolicyKind : int { DDS_KEEP_LAST_HISTORY_QOS = 0, DDS_KEEP_ALL_HISTORY_QOS = 1 };
enum DDS_DurabilityQosPolicyKind : int {
  DDS_VOLATILE_DURABILITY_QOS = 0,
  DDS_TRANSIENT_LOCAL_DURABILITY_QOS = 1,
  DDS_TRANSIENT_DURABILITY_QOS = 2,
  DDS_PERSISTENT_DURABILITY_QOS = 3
};
enum DDS_OwnershipQosPolicyKind : int { DDS_SHARED_OWNERSHIP_QOS = 0, DDS_EXCLUSIVE_OWNERSHIP_QOS = 1 };
enum DDS_PresentationQosPolicyAccessScopeKind : int {
  DDS_INSTANCE_PRESENTATION_QOS = 0,
  DDS_TOPIC_PRESENTATION_QOS = 1,
  DDS_GROUP_PRESENTATION_QOS = 2
};

/// Names a policy in the incompatible-QoS statuses; values of the DDS standard.
enum DDS_QosPolicyId_t : int {
  DDS_INVALID_QOS_POLICY_ID = 0,
  DDS_RELIABILITY_QOS_POLICY_ID = 11,
  /// The types of the two ends have different names, or are represented differently.
  DDS_TYPE_CONSISTENCY_ENFORCEMENT_QOS_POLICY_ID = 24
};
/// The policy's name in capitals, for people; "INVALID" for what is no policy of the list. Never fails.
DDS_EXPORT const char* DDS_QosPolicyId_get_name(DDS_QosPolicyId_t policy);

/// Best-effort loses samples rather than wait; reliable blocks the writer while a matched reader is full, at most
/// `max_blocking_time`. A reliable reader does not match a best-effort writer.
struct DDS_ReliabilityQosPolicy {
  DDS_ReliabilityQosPolicyKind kind = DDS_BEST_EFFORT_RELIABILITY_QOS;
  DDS_Duration_t max_blocking_time{0, 100000000};
};
/// How many samples of an instance a reader keeps: the newest `depth`, or all.
struct DDS_HistoryQosPolicy {
  DDS_HistoryQosPolicyKind kind = DDS_KEEP_LAST_HISTORY_QOS;
  DDS_Long depth = 1;
};
/// What a reader's cache may hold. A writer's limits have nothing to limit: samples go straight to the readers.
struct DDS_ResourceLimitsQosPolicy {
  DDS_Long max_samples = DDS_LENGTH_UNLIMITED;
  DDS_Long max_instances = DDS_LENGTH_UNLIMITED;
  DDS_Long max_samples_per_instance = DDS_LENGTH_UNLIMITED;
};
/// Anything but volatile is refused.
struct DDS_DurabilityQosPolicy {
  DDS_DurabilityQosPolicyKind kind = DDS_VOLATILE_DURABILITY_QOS;
};
/// Anything but infinite is refused.
struct DDS_DeadlineQosPolicy {
  DDS_Duration_t period = DDS_DURATION_INFINITE;
};
/// Anything but infinite is refused.
struct DDS_LifespanQosPolicy {
  DDS_Duration_t duration = DDS_DURATION_INFINITE;
};
/// Anything but shared is refused.
struct DDS_OwnershipQosPolicy {
  DDS_OwnershipQosPolicyKind kind = DDS_SHARED_OWNERSHIP_QOS;
};
/// Anything but the defaults is refused.
struct DDS_PresentationQosPolicy {
  DDS_PresentationQosPolicyAccessScopeKind access_scope = DDS_INSTANCE_PRESENTATION_QOS;
  DDS_Boolean coherent_access = false;
  DDS_Boolean ordered_access = false;
};
/// Anything but no partition is refused.
struct DDS_PartitionQosPolicy {
  DDS_StringSeq name;
};
/// Whether unregistering an instance also disposes it.
struct DDS_WriterDataLifecycleQosPolicy {
  DDS_Boolean autodispose_unregistered_instances = true;
};

/// A named value for the layer or the application; owns its strings.
struct DDS_EXPORT DDS_Property_t {
  DDS_Property_t() = default;
  DDS_Property_t(const DDS_Property_t& other);
  DDS_Property_t(DDS_Property_t&& other) noexcept;
  DDS_Property_t& operator=(DDS_Property_t other) noexcept;
  ~DDS_Property_t();
  char* name = nullptr;   ///< made with `DDS_String_dup`
  char* value = nullptr;  ///< made with `DDS_String_dup`
  DDS_Boolean propagate = false;
};
using DDS_PropertySeq = DDSSequence<DDS_Property_t>;
/// Properties that the layer knows:
///   participant "dds.transport": "in_process" (the default) or "rtps", which carries samples between processes and
///   hosts; anything else is refused. The properties of "rtps", all optional:
///     "dds.transport.rtps.interface": name or address of the network interface; the default is the loopback interface,
///     with which nothing leaves the host. Participants meet only those that use the same one.
///     "dds.transport.rtps.peers": addresses, separated by commas, at which participants are looked for besides.
///     "dds.transport.rtps.multicast": "0" does without multicast, "1" (the default) discovers by it; all that are to
///     meet have the same value. "dds.transport.rtps.lease_milliseconds": silence after which the others take this
///     participant for dead, 100 to 3600000, "2000" by default. "dds.transport.rtps.max_message_size",
///     "dds.transport.rtps.receive_buffer_size", "dds.transport.rtps.send_buffer_size": octets of a message (1500 to
///     65500, the default) and of the sockets' buffers (64 KiB to 1 GiB; 4 MiB and 1 MiB by default, less where the
///     system gives less). "dds.sec.…": the engine's security, as it stands. Any other property that begins with
///     "dds.transport." is refused, and without "rtps" all of them are.
///   reader "dds.data_reader.history.generate_not_alive_no_writers_sample": "0" keeps the end of an instance's last
///   writer from leaving a sample without valid data; the default is "1".
/// Others are carried along and mean nothing here.
struct DDS_PropertyQosPolicy {
  DDS_PropertySeq value;
};

/// Names of an entity for people and tools; owns its strings.
struct DDS_EXPORT DDS_EntityNameQosPolicy {
  DDS_EntityNameQosPolicy() = default;
  DDS_EntityNameQosPolicy(const DDS_EntityNameQosPolicy& other);
  DDS_EntityNameQosPolicy(DDS_EntityNameQosPolicy&& other) noexcept;
  DDS_EntityNameQosPolicy& operator=(DDS_EntityNameQosPolicy other) noexcept;
  ~DDS_EntityNameQosPolicy();
  char* name = nullptr;       ///< made with `DDS_String_dup`
  char* role_name = nullptr;  ///< made with `DDS_String_dup`
};

/// Settings of the reliable wire protocol, for transports that have one; in one process they mean nothing.
struct DDS_RtpsReliableWriterProtocol_t {
  DDS_Duration_t heartbeat_period{3, 0};
  DDS_Duration_t fast_heartbeat_period{3, 0};
  DDS_Duration_t late_joiner_heartbeat_period{3, 0};
  DDS_Long max_heartbeat_retries = 10;
  DDS_Long heartbeats_per_max_samples = 8;
  DDS_Duration_t min_nack_response_delay{0, 0};
  DDS_Duration_t max_nack_response_delay{0, 200000000};
  DDS_Long min_send_window_size = DDS_LENGTH_UNLIMITED;
  DDS_Long max_send_window_size = DDS_LENGTH_UNLIMITED;
};
struct DDS_RtpsReliableReaderProtocol_t {
  DDS_Duration_t min_heartbeat_response_delay{0, 0};
  DDS_Duration_t max_heartbeat_response_delay{0, 500000000};
};
struct DDS_DataWriterProtocolQosPolicy {
  /// Read only, through `DDSDataWriter::get_qos`: the GUID that stamps this writer's samples. Ignored when a writer is
  /// created.
  DDS_GUID_t writer_guid = DDS_GUID_AUTO;
  DDS_RtpsReliableWriterProtocol_t rtps_reliable_writer;
};
struct DDS_DataReaderProtocolQosPolicy {
  DDS_RtpsReliableReaderProtocol_t rtps_reliable_reader;
};
struct DDS_DataWriterResourceLimitsQosPolicy {
  /// Readers whose content filter the writer evaluates; in one process all of them are, whatever the number.
  DDS_Long max_remote_reader_filters = 32;
};
struct DDS_DataReaderResourceLimitsQosPolicy {
  /// The limit on the samples of one read or take.
  DDS_Long max_samples_per_read = 1024;
};

struct DDS_TopicQos {
  DDS_DurabilityQosPolicy durability;
  DDS_DeadlineQosPolicy deadline;
  DDS_ReliabilityQosPolicy reliability;
  DDS_HistoryQosPolicy history;
  DDS_ResourceLimitsQosPolicy resource_limits;
  DDS_LifespanQosPolicy lifespan;
  DDS_OwnershipQosPolicy ownership;
};

struct DDS_DataWriterQos {
  DDS_DurabilityQosPolicy durability;
  DDS_DeadlineQosPolicy deadline;
  DDS_ReliabilityQosPolicy reliability{DDS_RELIABLE_RELIABILITY_QOS, {0, 100000000}};
  DDS_HistoryQosPolicy history;
  DDS_ResourceLimitsQosPolicy resource_limits;
  DDS_LifespanQosPolicy lifespan;
  DDS_OwnershipQosPolicy ownership;
  DDS_WriterDataLifecycleQosPolicy writer_data_lifecycle;
  DDS_DataWriterResourceLimitsQosPolicy writer_resource_limits;
  DDS_DataWriterProtocolQosPolicy protocol;
  DDS_PropertyQosPolicy property;
  DDS_EntityNameQosPolicy publication_name;
};

struct DDS_DataReaderQos {
  DDS_DurabilityQosPolicy durability;
  DDS_DeadlineQosPolicy deadline;
  DDS_ReliabilityQosPolicy reliability;
  DDS_HistoryQosPolicy history;
  DDS_ResourceLimitsQosPolicy resource_limits;
  DDS_OwnershipQosPolicy ownership;
  DDS_DataReaderResourceLimitsQosPolicy reader_resource_limits;
  DDS_DataReaderProtocolQosPolicy protocol;
  DDS_PropertyQosPolicy property;
  DDS_EntityNameQosPolicy subscription_name;
};

struct DDS_PublisherQos {
  DDS_PresentationQosPolicy presentation;
  DDS_PartitionQosPolicy partition;
};
struct DDS_SubscriberQos {
  DDS_PresentationQosPolicy presentation;
  DDS_PartitionQosPolicy partition;
};
struct DDS_DomainParticipantQos {
  DDS_PropertyQosPolicy property;
  DDS_EntityNameQosPolicy participant_name;
};

/// Deep copies; `DDS_RETCODE_OUT_OF_RESOURCES` when memory is exhausted, the destination then being unchanged.
DDS_EXPORT DDS_ReturnCode_t DDS_DataWriterQos_copy(DDS_DataWriterQos* destination, const DDS_DataWriterQos* source);
DDS_EXPORT DDS_ReturnCode_t DDS_DataReaderQos_copy(DDS_DataReaderQos* destination, const DDS_DataReaderQos* source);

// Tokens that stand for the creating entity's current default, told apart by address.
DDS_EXPORT extern const DDS_DomainParticipantQos DDS_PARTICIPANT_QOS_DEFAULT;
DDS_EXPORT extern const DDS_TopicQos DDS_TOPIC_QOS_DEFAULT;
DDS_EXPORT extern const DDS_PublisherQos DDS_PUBLISHER_QOS_DEFAULT;
DDS_EXPORT extern const DDS_SubscriberQos DDS_SUBSCRIBER_QOS_DEFAULT;
DDS_EXPORT extern const DDS_DataWriterQos DDS_DATAWRITER_QOS_DEFAULT;
DDS_EXPORT extern const DDS_DataReaderQos DDS_DATAREADER_QOS_DEFAULT;

/// Finds and adds properties. Not thread-safe for one policy.
class DDS_EXPORT DDSPropertyQosPolicyHelper {
 public:
  /// The property of that name, owned by the policy and valid until it changes; null when there is none.
  static DDS_Property_t* lookup_property(DDS_PropertyQosPolicy& policy, const char* name);
  static const DDS_Property_t* lookup_property(const DDS_PropertyQosPolicy& policy, const char* name);
  /// Adds copies of `name` and `value`. `DDS_RETCODE_PRECONDITION_NOT_MET` when the name is there already,
  /// `DDS_RETCODE_BAD_PARAMETER` for a null, `DDS_RETCODE_OUT_OF_RESOURCES` when memory is exhausted.
  static DDS_ReturnCode_t add_property(DDS_PropertyQosPolicy& policy, const char* name, const char* value,
                                       DDS_Boolean propagate);
};
