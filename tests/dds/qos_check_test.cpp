#include "qos/qos_check.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "recorded_log.hpp"

namespace {

class QosCheck : public testing::Test {
 protected:
  template <class Qos>
  void expect_accepted(const Qos& qos) {
    EXPECT_EQ(dds::check(qos, "Context"), DDS_RETCODE_OK);
    EXPECT_TRUE(log_.take_lines().empty());
  }
  /// One log line, whose text begins with `text` after the template and the words "QoS policy".
  template <class Qos>
  void expect_refused(const Qos& qos, DDS_ReturnCode_t retcode, const std::string& text) {
    EXPECT_EQ(dds::check(qos, "Context"), retcode) << text;
    const char* kind = retcode == DDS_RETCODE_UNSUPPORTED ? "unsupported: " : "bad parameter: ";
    const std::string expected = kind + ("QoS policy " + text);
    EXPECT_EQ(log_.take_text().substr(0, expected.size()), expected);
  }
  /// What a change to default QoS of one kind of endpoint comes to.
  template <class Qos, class Change>
  void refuses(DDS_ReturnCode_t retcode, const std::string& text, Change change) {
    Qos qos;
    change(qos);
    expect_refused(qos, retcode, text);
  }
  /// The same for topics, writers and readers alike.
  template <class Change>
  void all_refuse(DDS_ReturnCode_t retcode, const std::string& text, Change change) {
    refuses<DDS_TopicQos>(retcode, text, change);
    refuses<DDS_DataWriterQos>(retcode, text, change);
    refuses<DDS_DataReaderQos>(retcode, text, change);
  }

  RecordedLog log_;
};

/// An enumerator that no C++ program could name, as one in C could.
template <class Enum>
void make_invalid(Enum& kind) {
  const int value = 77;
  static_assert(sizeof(Enum) == sizeof(int));
  std::memcpy(&kind, &value, sizeof value);
}

TEST_F(QosCheck, AcceptsTheDefaultsAndWhatIsImplemented) {
  expect_accepted(DDS_TopicQos());
  expect_accepted(DDS_PublisherQos());
  expect_accepted(DDS_SubscriberQos());
  expect_accepted(DDS_DomainParticipantQos());
  DDS_DataWriterQos writer;
  expect_accepted(writer);
  writer.reliability = {DDS_RELIABLE_RELIABILITY_QOS, DDS_DURATION_INFINITE};
  writer.writer_resource_limits.max_remote_reader_filters = DDS_LENGTH_UNLIMITED;
  writer.writer_data_lifecycle.autodispose_unregistered_instances = false;
  expect_accepted(writer);
  DDS_DataReaderQos reader;
  expect_accepted(reader);
  reader.resource_limits = {10, 5, 10};
  reader.reader_resource_limits.max_samples_per_read = DDS_LENGTH_UNLIMITED;
  for (const DDS_HistoryQosPolicy& history :
       {DDS_HistoryQosPolicy{DDS_KEEP_ALL_HISTORY_QOS, 0}, DDS_HistoryQosPolicy{DDS_KEEP_LAST_HISTORY_QOS, 10}}) {
    reader.history = history;
    expect_accepted(reader);
  }
}

TEST_F(QosCheck, RefusesPoliciesThatThisLayerDoesNotOffer) {
  constexpr DDS_ReturnCode_t unsupported = DDS_RETCODE_UNSUPPORTED;
  all_refuse(unsupported, "durability", [](auto& qos) { qos.durability.kind = DDS_TRANSIENT_LOCAL_DURABILITY_QOS; });
  all_refuse(unsupported, "deadline", [](auto& qos) { qos.deadline.period = {1, 0}; });
  all_refuse(unsupported, "ownership", [](auto& qos) { qos.ownership.kind = DDS_EXCLUSIVE_OWNERSHIP_QOS; });
  all_refuse(unsupported, "reliability.kind", [](auto& qos) { make_invalid(qos.reliability.kind); });
  all_refuse(unsupported, "history.kind", [](auto& qos) { make_invalid(qos.history.kind); });
  const auto set_lifespan = [](auto& qos) { qos.lifespan.duration = {1, 0}; };
  refuses<DDS_TopicQos>(unsupported, "lifespan", set_lifespan);
  refuses<DDS_DataWriterQos>(unsupported, "lifespan", set_lifespan);
  const auto both_refuse = [this](const char* policy, auto change) {
    refuses<DDS_PublisherQos>(unsupported, policy, change);
    refuses<DDS_SubscriberQos>(unsupported, policy, change);
  };
  both_refuse("presentation.access_scope",
              [](auto& qos) { qos.presentation.access_scope = DDS_TOPIC_PRESENTATION_QOS; });
  both_refuse("presentation.coherent_access", [](auto& qos) { qos.presentation.coherent_access = true; });
  both_refuse("presentation.ordered_access", [](auto& qos) { qos.presentation.ordered_access = true; });
  both_refuse("partition", [](auto& qos) { EXPECT_TRUE(qos.partition.name.ensure_length(1, 1)); });
}

TEST_F(QosCheck, RefusesValuesThatContradictEachOtherAndReportsTheFirstOfSeveralFaultsOnly) {
  constexpr DDS_ReturnCode_t inconsistent = DDS_RETCODE_INCONSISTENT_POLICY;
  all_refuse(DDS_RETCODE_UNSUPPORTED, "durability", [](auto& qos) {
    qos.durability.kind = DDS_PERSISTENT_DURABILITY_QOS;
    qos.history.depth = 0;
  });
  for (const int depth : {0, -1}) {
    all_refuse(inconsistent, "history.depth: not positive", [=](auto& qos) { qos.history.depth = depth; });
  }
  all_refuse(inconsistent, "history.depth: above", [](auto& qos) {
    qos.history.depth = 3;
    qos.resource_limits.max_samples_per_instance = 2;
  });
  for (const int limit : {0, -2}) {
    all_refuse(inconsistent,
               "resource_limits.max_samples:", [=](auto& qos) { qos.resource_limits.max_samples = limit; });
    all_refuse(inconsistent,
               "resource_limits.max_instances:", [=](auto& qos) { qos.resource_limits.max_instances = limit; });
    all_refuse(inconsistent, "resource_limits.max_samples_per_instance:", [=](auto& qos) {
      qos.resource_limits.max_samples_per_instance = limit;
    });
    refuses<DDS_DataReaderQos>(inconsistent, "reader_resource_limits.max_samples_per_read",
                               [=](auto& qos) { qos.reader_resource_limits.max_samples_per_read = limit; });
  }
  all_refuse(inconsistent, "resource_limits.max_samples: below", [](auto& qos) {
    qos.resource_limits.max_samples = 4;
    qos.resource_limits.max_samples_per_instance = 5;
  });
  for (const DDS_Duration_t wait : {DDS_Duration_t{-1, 0}, DDS_Duration_t{0, 1000000000}}) {
    all_refuse(inconsistent, "reliability.max_blocking_time",
               [=](auto& qos) { qos.reliability.max_blocking_time = wait; });
  }
}

TEST_F(QosCheck, KnowsOneTransport) {
  const auto with_transport = [](const char* value) {
    DDS_DomainParticipantQos qos;
    EXPECT_EQ(DDSPropertyQosPolicyHelper::add_property(qos.property, "dds.transport", value, false), DDS_RETCODE_OK);
    return qos;
  };
  expect_accepted(with_transport("in_process"));
  for (const char* value : {"", "in_process ", "carrier pigeon"}) {
    EXPECT_EQ(dds::check(with_transport(value), "Context"), DDS_RETCODE_UNSUPPORTED);
    EXPECT_NE(log_.take_text().find("\"dds.transport\""), std::string::npos);
  }
  const auto add = [](DDS_DomainParticipantQos qos, const char* name) {
    EXPECT_EQ(DDSPropertyQosPolicyHelper::add_property(qos.property, name, "x", false), DDS_RETCODE_OK);
    return qos;
  };
  expect_accepted(add({}, "application.property"));
  // Whoever has forgotten to ask for the transport is told so.
  for (const DDS_DomainParticipantQos& qos : {DDS_DomainParticipantQos(), with_transport("in_process")}) {
    EXPECT_EQ(dds::check(add(qos, "dds.transport.rtps.interface"), "Context"), DDS_RETCODE_UNSUPPORTED);
    EXPECT_NE(log_.take_text().find("not \"rtps\""), std::string::npos);
  }
}

TEST_F(QosCheck, NamesPoliciesAlsoOfNumbersThatAreNone) {
  EXPECT_STREQ(DDS_QosPolicyId_get_name(DDS_RELIABILITY_QOS_POLICY_ID), "RELIABILITY");
  EXPECT_STREQ(DDS_QosPolicyId_get_name(static_cast<DDS_QosPolicyId_t>(24)), "TYPE_CONSISTENCY_ENFORCEMENT");
  EXPECT_STREQ(DDS_QosPolicyId_get_name(static_cast<DDS_QosPolicyId_t>(-1)), "INVALID");
}

}  // namespace
