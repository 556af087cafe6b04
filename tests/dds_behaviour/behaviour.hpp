#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <stdexcept>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include <dds/dds.hpp>

#include "remote_writer.hpp"
#include "setting.hpp"
#include "support/await.hpp"
#include "support/dds_values.hpp"
#include "support/thread.hpp"

namespace behaviour {

using support::hexadecimal;
using support::milliseconds;
using support::Thread;

inline DDSDomainParticipantFactory& factory() { return *DDSDomainParticipantFactory::get_instance(); }

/// A participant that must be empty enough to go at the end of its scope: an outstanding loan fails the test.
class Participant {
 public:
  explicit Participant(DDS_DomainId_t domain = support::own_domain())
      : participant_(factory().create_participant(domain, participant_qos(carrier()), nullptr, DDS_STATUS_MASK_NONE)) {
    if (participant_ == nullptr) { throw std::runtime_error("no participant"); }
    if (Setting::current() != nullptr) { Setting::current()->join(participant_); }
  }
  ~Participant() {
    if (Setting::current() != nullptr) { Setting::current()->leave(participant_); }
    EXPECT_EQ(participant_->delete_contained_entities(), DDS_RETCODE_OK);
    EXPECT_EQ(factory().delete_participant(participant_), DDS_RETCODE_OK);
  }
  Participant(const Participant&) = delete;
  Participant& operator=(const Participant&) = delete;

  DDSDomainParticipant* get() const { return participant_; }
  DDSDomainParticipant* operator->() const { return participant_; }

  template <class TypeSupport>
  DDSTopic* topic(const char* name) const {
    EXPECT_EQ(TypeSupport::register_type(participant_, nullptr), DDS_RETCODE_OK);
    DDSTopic* topic = participant_->create_topic(name, TypeSupport::get_type_name(), DDS_TOPIC_QOS_DEFAULT, nullptr,
                                                 DDS_STATUS_MASK_NONE);
    if (topic == nullptr) { throw std::runtime_error("no topic"); }
    return topic;
  }
  /// The topic of that name, made when it is not there yet.
  DDSTopic* find_topic(Builtin type, const char* name, const char* type_name) const {
    DDSTopic* found = DDSTopic::narrow(participant_->lookup_topicdescription(name));
    if (found != nullptr) { return found; }
    const auto register_type = type == Builtin::string         ? DDSStringTypeSupport::register_type
                               : type == Builtin::keyed_string ? DDSKeyedStringTypeSupport::register_type
                               : type == Builtin::octets       ? DDSOctetsTypeSupport::register_type
                                                               : DDSKeyedOctetsTypeSupport::register_type;
    EXPECT_EQ(register_type(participant_, type_name), DDS_RETCODE_OK);
    return participant_->create_topic(name, type_name, DDS_TOPIC_QOS_DEFAULT, nullptr, DDS_STATUS_MASK_NONE);
  }
  DDSTopic* strings(const char* name) const { return topic<DDSStringTypeSupport>(name); }
  DDSTopic* keyed_strings(const char* name) const { return topic<DDSKeyedStringTypeSupport>(name); }
  DDSTopic* octets(const char* name) const { return topic<DDSOctetsTypeSupport>(name); }

  DDSContentFilteredTopic* filtered(const char* name, DDSTopic* topic, const std::string& expression,
                                    const std::vector<std::string>& parameters = {}) const {
    DDS_StringSeq sequence(static_cast<int>(parameters.size()));
    sequence.length(sequence.maximum());
    for (int i = 0; i < sequence.length(); ++i) {
      sequence[i] = DDS_String_dup(parameters[static_cast<std::size_t>(i)].c_str());
    }
    return participant_->create_contentfilteredtopic(name, topic, expression.c_str(), sequence);
  }

 private:
  DDSDomainParticipant* participant_;
};

/// Two participants of a domain, the first with a topic of strings, within the process.
class OneTopic : public ::testing::Test {
 protected:
  const Participant participant, other;
  DDSTopic* topic = participant.strings("Topic");
};

/// Makes the carrier in a test's parameter, alone or with a further one, what the test runs over. Comes before the
/// fixture among the bases.
template <class... Further>
class OverCarrier
    : public ::testing::WithParamInterface<
          std::conditional_t<sizeof...(Further) == 0, support::Carrier, std::tuple<support::Carrier, Further...>>> {
 protected:
  OverCarrier() : setting_(carrier_of(OverCarrier::GetParam())) {}

 private:
  static const support::Carrier& carrier_of(const support::Carrier& parameter) { return parameter; }
  template <class Parameter>
  static const support::Carrier& carrier_of(const Parameter& parameter) {
    return std::get<0>(parameter);
  }

  Setting setting_;
};

/// The same over the carrier under test. `topic` is that of the readers.
class OneTopicOver : public OverCarrier<>, public OneTopic {};

#define RUN_OVER_EVERY_CARRIER(suite) \
  INSTANTIATE_TEST_SUITE_P(Over, suite, ::testing::ValuesIn(::support::carriers()), ::support::carrier_name)

/// Repetitions that take about as long over the carrier as `count` do in a plain build within a process.
inline int scaled(int count) { return carrier().scaled(count); }
/// For writes that are to time out, or might if they were not given the time that asking a reader takes.
inline DDS_Duration_t brief(DDS_Duration_t within_a_process) {
  return carrier().in_process() ? within_a_process : milliseconds(500);
}

/// Reliable; waits for a full reader as long as it takes unless told otherwise.
inline DDS_DataWriterQos reliable_writer(DDS_Duration_t max_blocking_time = DDS_DURATION_INFINITE) {
  DDS_DataWriterQos qos;
  qos.reliability.max_blocking_time = max_blocking_time;
  qos.history.kind = DDS_KEEP_ALL_HISTORY_QOS;
  qos.writer_data_lifecycle.autodispose_unregistered_instances = false;
  return qos;
}
inline DDS_DataWriterQos best_effort_writer() {
  DDS_DataWriterQos qos = reliable_writer();
  qos.reliability.kind = DDS_BEST_EFFORT_RELIABILITY_QOS;
  return qos;
}
/// Reliable, keeps everything up to `max_samples`.
inline DDS_DataReaderQos keep_all_reader(DDS_Long max_samples = DDS_LENGTH_UNLIMITED) {
  DDS_DataReaderQos qos;
  qos.reliability.kind = DDS_RELIABLE_RELIABILITY_QOS;
  qos.history.kind = DDS_KEEP_ALL_HISTORY_QOS;
  qos.resource_limits.max_samples = max_samples;
  return qos;
}
inline DDS_DataReaderQos best_effort_reader(DDS_Long max_samples = DDS_LENGTH_UNLIMITED) {
  DDS_DataReaderQos qos = keep_all_reader(max_samples);
  qos.reliability.kind = DDS_BEST_EFFORT_RELIABILITY_QOS;
  return qos;
}

/// The QoS with a role and two properties, of which the second is propagated.
template <class Qos>
Qos described(Qos qos, DDS_EntityNameQosPolicy Qos::*name) {
  (qos.*name).role_name = DDS_String_dup("role");
  EXPECT_EQ(DDSPropertyQosPolicyHelper::add_property(qos.property, "hidden", "0", false), DDS_RETCODE_OK);
  EXPECT_EQ(DDSPropertyQosPolicyHelper::add_property(qos.property, "known", "1", true), DDS_RETCODE_OK);
  return qos;
}

/// A writer on the topic, at the place that the carrier has for writers, which has met its readers.
template <class Writer = DDSStringDataWriter>
Writer* make_writer(DDSTopic* topic, const DDS_DataWriterQos& qos = reliable_writer(),
                    DDSDataWriterListener* listener = nullptr) {
  DDSDataWriter* writer =
      Setting::current() == nullptr
          ? topic->get_participant()->create_datawriter(
                topic, qos, listener, listener == nullptr ? DDS_STATUS_MASK_NONE : DDS_STATUS_MASK_ALL)
          : Setting::current()->create_writer(builtin_of<Writer>, topic, qos, listener);
  settle();
  return Writer::narrow(writer);
}
/// A reader that has met its writers.
template <class Reader = DDSStringDataReader>
Reader* make_reader(DDSTopicDescription* topic, const DDS_DataReaderQos& qos = keep_all_reader(),
                    DDSDataReaderListener* listener = nullptr, DDS_StatusMask mask = DDS_DATA_AVAILABLE_STATUS) {
  DDSDataReader* reader = topic->get_participant()->create_datareader(
      topic, qos, listener, listener == nullptr ? DDS_STATUS_MASK_NONE : mask);
  settle();
  return Reader::narrow(reader);
}
/// The other ends have heard of it on return.
inline DDS_ReturnCode_t remove(DDSDataWriter* writer) {
  auto* remote = dynamic_cast<RemoteWriter*>(writer);
  const DDS_ReturnCode_t retcode =
      remote != nullptr ? remote->remove() : writer->get_topic()->get_participant()->delete_datawriter(writer);
  settle();
  return retcode;
}
inline DDS_ReturnCode_t remove(DDSDataReader* reader) {
  const DDS_ReturnCode_t retcode = reader->get_topicdescription()->get_participant()->delete_datareader(reader);
  settle();
  return retcode;
}

inline DDS_ReturnCode_t write(DDSStringDataWriter* writer, const std::string& value) {
  return writer->write(value.c_str(), DDS_HANDLE_NIL);
}
/// A view of two strings as a keyed sample, for the length of a full expression.
inline DDS_KeyedString keyed(std::string& key, std::string& value) { return {key.data(), value.data()}; }
inline DDS_ReturnCode_t write(DDSKeyedStringDataWriter* writer, std::string key, std::string value) {
  return writer->write(keyed(key, value), DDS_HANDLE_NIL);
}
/// Names the index key with that number.
inline DDS_SampleInfo key_of(std::uint32_t number) {
  DDS_SampleInfo key;
  key.related_sample_identity.sequence_number = {0, number};
  return key;
}
/// Writes a sample with it.
inline DDS_ReturnCode_t answer(DDSStringDataWriter* writer, std::uint32_t number, const std::string& value) {
  DDS_WriteParams_t params;
  params.related_sample_identity.sequence_number = {0, number};
  return writer->write_w_params(value.c_str(), params);
}
inline DDS_ReturnCode_t dispose(DDSKeyedStringDataWriter* writer, std::string key) {
  std::string none;
  return writer->dispose(keyed(key, none), DDS_HANDLE_NIL);
}
inline DDS_ReturnCode_t unregister(DDSKeyedStringDataWriter* writer, std::string key) {
  std::string none;
  return writer->unregister_instance(keyed(key, none), DDS_HANDLE_NIL);
}

/// A copy of a received sample, whatever its built-in type.
struct Received {
  std::string key;
  std::string value;
  DDS_SampleInfo info;
};
inline Received copy_sample(const char* data, const DDS_SampleInfo& info) {
  return {"", info.valid_data ? data : "", info};
}
inline Received copy_sample(const DDS_KeyedString& data, const DDS_SampleInfo& info) {
  return {data.key == nullptr ? "" : data.key, info.valid_data ? data.value : "", info};
}
inline Received copy_sample(const DDS_Octets& data, const DDS_SampleInfo& info) {
  return {"", info.valid_data ? std::string(data.value, data.value + data.length) : "", info};
}
inline Received copy_sample(const DDS_KeyedOctets& data, const DDS_SampleInfo& info) {
  return {data.key, info.valid_data ? std::string(data.value, data.value + data.length) : "", info};
}

struct Selection {
  DDS_SampleStateMask sample_states = DDS_ANY_SAMPLE_STATE;
  DDS_ViewStateMask view_states = DDS_ANY_VIEW_STATE;
  DDS_InstanceStateMask instance_states = DDS_ANY_INSTANCE_STATE;
};

template <class T, class Seq>
std::vector<Received> collect(DDSTypedDataReader<T, Seq>* reader, bool take, int max_samples = DDS_LENGTH_UNLIMITED,
                              Selection selection = {}, DDSReadCondition* condition = nullptr) {
  settle();
  Seq data;
  DDS_SampleInfoSeq infos;
  DDS_ReturnCode_t retcode = DDS_RETCODE_OK;
  if (condition != nullptr) {
    retcode = take ? reader->take_w_condition(data, infos, max_samples, condition)
                   : reader->read_w_condition(data, infos, max_samples, condition);
  } else {
    retcode = take ? reader->take(data, infos, max_samples, selection.sample_states, selection.view_states,
                                  selection.instance_states)
                   : reader->read(data, infos, max_samples, selection.sample_states, selection.view_states,
                                  selection.instance_states);
  }
  std::vector<Received> received;
  if (retcode == DDS_RETCODE_NO_DATA) {
    EXPECT_EQ(data.length(), 0);
    return received;
  }
  EXPECT_EQ(retcode, DDS_RETCODE_OK);
  for (int i = 0; i < data.length(); ++i) { received.push_back(copy_sample(data[i], infos[i])); }
  EXPECT_EQ(reader->return_loan(data, infos), DDS_RETCODE_OK);
  return received;
}
template <class Reader>
std::vector<Received> take_all(Reader* reader) {
  return collect(reader, true);
}
template <class Reader>
std::vector<Received> read_all(Reader* reader) {
  return collect(reader, false);
}
inline std::vector<std::string> values(const std::vector<Received>& received) {
  std::vector<std::string> result;
  for (const Received& sample : received) { result.push_back(sample.value); }
  return result;
}
template <class Reader>
std::vector<std::string> take_values(Reader* reader) {
  return values(take_all(reader));
}
using Strings = std::vector<std::string>;

inline bool has_data(DDSDataReader* reader) {
  settle();
  return (reader->get_status_changes() & DDS_DATA_AVAILABLE_STATUS) != 0;
}

/// The number of a sequence number whose high half is zero.
inline std::uint32_t number(const DDS_SampleIdentity_t& identity) {
  EXPECT_EQ(identity.sequence_number.high, 0);
  return identity.sequence_number.low;
}

inline DDS_GUID_t guid_of(DDSDataWriter* writer) {
  DDS_DataWriterQos qos;
  EXPECT_EQ(writer->get_qos(qos), DDS_RETCODE_OK);
  return qos.protocol.writer_guid;
}

}  // namespace behaviour
