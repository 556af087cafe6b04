#include "remote_writer.hpp"

#include <map>

#include "behaviour.hpp"

namespace behaviour {

namespace {

using support::OtherProcess;
using support::Packet;

enum class Verb {
  join,
  create,
  destroy,
  settle,
  write,
  dispose,
  unregister,
  lookup,
  status_changes,
  incompatible,
  matched_status,
  matched_handles,
  matched_data
};

void put(Packet& packet, const DDS_PropertyQosPolicy& policy) {
  packet.put(policy.value.length());
  for (int i = 0; i < policy.value.length(); ++i) {
    packet.put(std::string(policy.value[i].name));
    packet.put(std::string(policy.value[i].value));
    packet.put(policy.value[i].propagate);
  }
}
void get(Packet& packet, DDS_PropertyQosPolicy& policy) {
  for (int left = packet.get<int>(); left > 0; --left) {
    const std::string name = packet.get<std::string>();
    const std::string value = packet.get<std::string>();
    EXPECT_EQ(DDSPropertyQosPolicyHelper::add_property(policy, name.c_str(), value.c_str(), packet.get<bool>()),
              DDS_RETCODE_OK);
  }
}
void put(Packet& packet, const DDS_EntityNameQosPolicy& name) {
  packet.put(name.role_name != nullptr);
  packet.put(std::string(name.role_name == nullptr ? "" : name.role_name));
}
void get(Packet& packet, DDS_EntityNameQosPolicy& name) {
  const bool has_role = packet.get<bool>();
  const std::string role = packet.get<std::string>();
  if (has_role) { name.role_name = DDS_String_dup(role.c_str()); }
}
/// As far as tests use it.
void put(Packet& packet, const DDS_DataWriterQos& qos) {
  packet.put(qos.reliability);
  packet.put(qos.history);
  packet.put(qos.writer_data_lifecycle);
  put(packet, qos.property);
  put(packet, qos.publication_name);
}
void get(Packet& packet, DDS_DataWriterQos& qos) {
  qos.reliability = packet.get<DDS_ReliabilityQosPolicy>();
  qos.history = packet.get<DDS_HistoryQosPolicy>();
  qos.writer_data_lifecycle = packet.get<DDS_WriterDataLifecycleQosPolicy>();
  get(packet, qos.property);
  get(packet, qos.publication_name);
}

void put(Packet& packet, const std::string& key, const std::string& value) {
  packet.put(key);
  packet.put(value);
}
void put(Packet& packet, const char* data) { put(packet, "", data); }
void put(Packet& packet, const DDS_KeyedString& data) { put(packet, data.key, data.value); }
void put(Packet& packet, const DDS_Octets& data) { put(packet, "", {data.value, data.value + data.length}); }
void put(Packet& packet, const DDS_KeyedOctets& data) { put(packet, data.key, {data.value, data.value + data.length}); }

/// A sample that was put so, whatever its type.
class Sample {
 public:
  explicit Sample(Packet& packet) : key_(packet.get<std::string>()), value_(packet.get<std::string>()) {}
  /// Valid as long as this object.
  const void* data(Builtin type) const {
    if (type == Builtin::string) { return &keyed_string_.value; }
    if (type == Builtin::keyed_string) { return &keyed_string_; }
    return type == Builtin::octets ? static_cast<const void*>(&octets_) : &keyed_octets_;
  }

 private:
  std::string key_, value_;
  const DDS_KeyedString keyed_string_{key_.data(), value_.data()};
  const DDS_Octets octets_{static_cast<DDS_Long>(value_.size()), reinterpret_cast<DDS_Octet*>(value_.data())};
  const DDS_KeyedOctets keyed_octets_{key_.data(), octets_.length, octets_.value};
};

/// In the other process: a participant for each domain, with writers.
class WriterService : public support::Service {
 public:
  Packet obey(Packet command) override {
    const Verb verb = command.get<Verb>();
    if (verb == Verb::join) {
      participant(command.get<DDS_DomainId_t>());
      return {};
    }
    if (verb == Verb::create) { return create(command); }
    if (verb == Verb::settle) {
      const auto domain = command.get<DDS_DomainId_t>();
      const int round = command.get<int>();
      setting_.take_part(domain, round, command.get<int>());
      return {};
    }
    const int number = command.get<int>();
    if (verb != Verb::destroy) { return obey(verb, writers_[number], command); }
    DDSDataWriter* writer = writers_[number].writer;
    const DDS_ReturnCode_t retcode = writer->get_topic()->get_participant()->delete_datawriter(writer);
    writers_.remove(number);
    return Packet::of(retcode);
  }

 private:
  struct Made {
    Builtin type;
    DDSDataWriter* writer;
  };

  const Participant& participant(DDS_DomainId_t domain) {
    const std::lock_guard<std::mutex> lock(mutex_);
    std::unique_ptr<Participant>& found = participants_[domain];
    if (found == nullptr) { found = std::make_unique<Participant>(domain); }
    return *found;
  }
  Packet create(Packet& command) {
    const auto type = command.get<Builtin>();
    const Participant& mine = participant(command.get<DDS_DomainId_t>());
    const std::string topic_name = command.get<std::string>();
    const std::string type_name = command.get<std::string>();
    DDS_DataWriterQos qos;
    get(command, qos);
    DDSTopic* topic = mine.find_topic(type, topic_name.c_str(), type_name.c_str());
    DDSDataWriter* writer = mine->create_datawriter(topic, qos, nullptr, DDS_STATUS_MASK_NONE);
    if (writer == nullptr) { return Packet::of(0); }
    const int number = writers_.add(std::make_unique<Made>(Made{type, writer}));
    return Packet::of(number, guid_of(writer), writer->get_instance_handle());
  }
  static Packet write(Verb verb, const Made& made, Packet& command) {
    DDSDataWriter& writer = *made.writer;
    const Sample sample(command);
    const void* const data = sample.data(made.type);
    DDS_WriteParams_t params;
    params.identity = command.get<DDS_SampleIdentity_t>();
    params.related_sample_identity = command.get<DDS_SampleIdentity_t>();
    params.source_timestamp = command.get<DDS_Time_t>();
    params.handle = command.get<DDS_InstanceHandle_t>();
    const DDS_ReturnCode_t retcode = verb == Verb::write     ? writer.write_untyped(data, params)
                                     : verb == Verb::dispose ? writer.dispose_untyped(data, params)
                                                             : writer.unregister_untyped(data, params);
    return Packet::of(retcode, params.identity);
  }
  static Packet obey(Verb verb, Made& made, Packet& command) {
    DDSDataWriter& writer = *made.writer;
    switch (verb) {
      case Verb::lookup:
        return Packet::of(writer.lookup_instance_untyped(Sample(command).data(made.type)));
      case Verb::status_changes:
        return Packet::of(writer.get_status_changes());
      case Verb::incompatible: {
        DDS_OfferedIncompatibleQosStatus status;
        EXPECT_EQ(writer.get_offered_incompatible_qos_status(status), DDS_RETCODE_OK);
        Packet answer = Packet::of(status.total_count, status.total_count_change, status.last_policy_id);
        for (int i = 0; i < status.policies.length(); ++i) { answer.put(status.policies[i]); }
        return answer;
      }
      case Verb::matched_status: {
        DDS_PublicationMatchedStatus status;
        EXPECT_EQ(writer.get_publication_matched_status(status), DDS_RETCODE_OK);
        return Packet::of(status);
      }
      case Verb::matched_handles: {
        DDS_InstanceHandleSeq handles;
        EXPECT_EQ(writer.get_matched_subscriptions(handles), DDS_RETCODE_OK);
        Packet answer;
        for (int i = 0; i < handles.length(); ++i) { answer.put(handles[i]); }
        return answer;
      }
      case Verb::matched_data:
        return matched_data(writer, command.get<DDS_InstanceHandle_t>());
      default:
        return write(verb, made, command);
    }
  }
  static Packet matched_data(DDSDataWriter& writer, DDS_InstanceHandle_t reader) {
    DDS_SubscriptionBuiltinTopicData data;
    Packet answer = Packet::of(writer.get_matched_subscription_data(data, reader), data.key, data.participant_key,
                               data.related_writer_guid);
    put(answer, data.property);
    put(answer, data.subscription_name);
    return answer;
  }

  Setting setting_{{"", support::kAcrossProcesses.transport, support::Carrier::one_participant}};
  std::mutex mutex_;
  std::map<DDS_DomainId_t, std::unique_ptr<Participant>> participants_;
  support::Numbered<Made> writers_;
};
const support::Role role("writers",
                         []() -> std::unique_ptr<support::Service> { return std::make_unique<WriterService>(); });

/// Of the typed class that tests narrow to.
template <class Api>
class Proxy final : public Api, public RemoteWriter {
 public:
  Proxy(OtherProcess& process, DDSTopic* topic, const DDS_DataWriterQos& qos, Packet& made, int number)
      : process_(process),
        topic_(topic),
        qos_(qos),
        number_(number),
        guid_(made.get<DDS_GUID_t>()),
        handle_(made.get<DDS_InstanceHandle_t>()) {}

  DDSDataWriter* api() override { return this; }
  DDS_ReturnCode_t remove() override { return call(Verb::destroy).template get<DDS_ReturnCode_t>(); }

  DDSStatusCondition* get_statuscondition() override { not_here(); }
  DDS_StatusMask get_status_changes() override { return call(Verb::status_changes).template get<DDS_StatusMask>(); }
  DDS_InstanceHandle_t get_instance_handle() override { return handle_; }
  DDSTopic* get_topic() override { return topic_; }
  DDSPublisher* get_publisher() override { not_here(); }
  DDS_ReturnCode_t get_qos(DDS_DataWriterQos& qos) override {
    qos = qos_;
    qos.protocol.writer_guid = guid_;
    return DDS_RETCODE_OK;
  }
  DDS_ReturnCode_t set_listener(DDSDataWriterListener*, DDS_StatusMask) override { not_here(); }
  DDSDataWriterListener* get_listener() override { not_here(); }
  DDS_ReturnCode_t write_untyped(const void* data, DDS_WriteParams_t& params) override {
    return write(Verb::write, data, params);
  }
  DDS_ReturnCode_t dispose_untyped(const void* data, DDS_WriteParams_t& params) override {
    return write(Verb::dispose, data, params);
  }
  DDS_ReturnCode_t unregister_untyped(const void* data, DDS_WriteParams_t& params) override {
    return write(Verb::unregister, data, params);
  }
  DDS_InstanceHandle_t lookup_instance_untyped(const void* data) override {
    Packet command = Packet::of(Verb::lookup, number_);
    put(command, *static_cast<const Data*>(data));
    return process_.call(command).get<DDS_InstanceHandle_t>();
  }
  DDS_ReturnCode_t get_offered_incompatible_qos_status(DDS_OfferedIncompatibleQosStatus& status) override {
    Packet answer = call(Verb::incompatible);
    status.total_count = answer.get<DDS_Long>();
    status.total_count_change = answer.get<DDS_Long>();
    status.last_policy_id = answer.get<DDS_QosPolicyId_t>();
    status.policies.length(0);
    while (!answer.empty()) { append(status.policies, answer.get<DDS_QosPolicyCount>()); }
    return DDS_RETCODE_OK;
  }
  DDS_ReturnCode_t get_publication_matched_status(DDS_PublicationMatchedStatus& status) override {
    status = call(Verb::matched_status).template get<DDS_PublicationMatchedStatus>();
    return DDS_RETCODE_OK;
  }
  DDS_ReturnCode_t get_matched_subscriptions(DDS_InstanceHandleSeq& handles) override {
    Packet answer = call(Verb::matched_handles);
    handles.length(0);
    while (!answer.empty()) { append(handles, answer.get<DDS_InstanceHandle_t>()); }
    return DDS_RETCODE_OK;
  }
  DDS_ReturnCode_t get_matched_subscription_data(DDS_SubscriptionBuiltinTopicData& data,
                                                 DDS_InstanceHandle_t handle) override {
    Packet answer = call(Verb::matched_data, handle);
    const auto retcode = answer.get<DDS_ReturnCode_t>();
    if (retcode != DDS_RETCODE_OK) { return retcode; }
    data = {};
    data.key = answer.get<DDS_GUID_t>();
    data.participant_key = answer.get<DDS_GUID_t>();
    data.related_writer_guid = answer.get<DDS_GUID_t>();
    get(answer, data.property);
    get(answer, data.subscription_name);
    return retcode;
  }
  DDSMatchCondition* create_match_condition() override { not_here(); }
  DDS_ReturnCode_t delete_match_condition(DDSMatchCondition*) override { not_here(); }
  DDS_DataWriter* procedural_handle() override { not_here(); }

 private:
  template <class T>
  static T data_of(const DDSTypedDataWriter<T>*);
  using Data = decltype(data_of(static_cast<Api*>(nullptr)));

  [[noreturn]] static void not_here() { throw std::logic_error("not across processes"); }
  template <class Seq, class T>
  static void append(Seq& sequence, const T& value) {
    ASSERT_TRUE(sequence.ensure_length(sequence.length() + 1, sequence.length() + 1));
    sequence[sequence.length() - 1] = value;
  }
  template <class... Values>
  Packet call(Verb verb, const Values&... values) {
    return process_.call(Packet::of(verb, number_, values...));
  }
  DDS_ReturnCode_t write(Verb verb, const void* data, DDS_WriteParams_t& params) {
    Packet command = Packet::of(verb, number_);
    put(command, *static_cast<const Data*>(data));
    command.put(params.identity);
    command.put(params.related_sample_identity);
    command.put(params.source_timestamp);
    command.put(params.handle);
    Packet answer = process_.call(command);
    const auto retcode = answer.get<DDS_ReturnCode_t>();
    params.identity = answer.get<DDS_SampleIdentity_t>();
    return retcode;
  }

  OtherProcess& process_;
  DDSTopic* const topic_;
  const DDS_DataWriterQos qos_;
  const int number_;
  const DDS_GUID_t guid_;
  const DDS_InstanceHandle_t handle_;
};

}  // namespace

std::unique_ptr<OtherProcess> start_writer_process() { return std::make_unique<OtherProcess>("writers"); }

std::unique_ptr<RemoteWriter> create_remote_writer(OtherProcess& process, Builtin type, DDSTopic* topic,
                                                   const DDS_DataWriterQos& qos) {
  Packet command = Packet::of(Verb::create, type, topic->get_participant()->get_domain_id(),
                              std::string(topic->get_name()), std::string(topic->get_type_name()));
  put(command, qos);
  Packet made = process.call(command);
  const int number = made.get<int>();
  if (number == 0) { return nullptr; }
  switch (type) {
    case Builtin::string:
      return std::make_unique<Proxy<DDSStringDataWriter>>(process, topic, qos, made, number);
    case Builtin::keyed_string:
      return std::make_unique<Proxy<DDSKeyedStringDataWriter>>(process, topic, qos, made, number);
    case Builtin::octets:
      return std::make_unique<Proxy<DDSOctetsDataWriter>>(process, topic, qos, made, number);
    default:
      return std::make_unique<Proxy<DDSKeyedOctetsDataWriter>>(process, topic, qos, made, number);
  }
}

void join_remotely(OtherProcess& process, DDS_DomainId_t domain) { process.call(Packet::of(Verb::join, domain)); }
void settle_remotely(OtherProcess& process, DDS_DomainId_t domain, int round, int everybody) {
  process.call(Packet::of(Verb::settle, domain, round, everybody));
}

}  // namespace behaviour
