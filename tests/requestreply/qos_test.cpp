#include "requestreply/fixture.hpp"

namespace requestreply_test {
namespace {

using ::testing::ElementsAre;

constexpr const char* kProperty = "dds.data_reader.history.generate_not_alive_no_writers_sample";

/// An entity that has a participant and nothing else, so that its QoS can be asked for.
struct QosOnly : Open<EntityUntypedImpl> {
  explicit QosOnly(DDSDomainParticipant* its_participant) : Open(false) { this->participant = its_participant; }
  ~QosOnly() override { this->participant = nullptr; }
};

class Qos : public RequestReply {
 protected:
  Qos() : entity_(participant_.get()) {}
  ~Qos() override { DDSDomainParticipantFactory::get_instance()->clear_profiles(); }

  DDS_DataWriterQos writer_qos(const EntityParams& params) {
    DDS_DataWriterQos qos;
    entity_.get_datawriter_qos(qos, params, "Topic", "Role");
    return qos;
  }
  DDS_DataReaderQos reader_qos(const EntityParams& params) {
    DDS_DataReaderQos qos;
    entity_.get_datareader_qos(qos, params, "Topic", "Role");
    return qos;
  }
  static std::string property(const DDS_DataReaderQos& qos) {
    const DDS_Property_t* found = DDSPropertyQosPolicyHelper::lookup_property(qos.property, kProperty);
    return found == nullptr ? "absent" : std::string(found->value) + (found->propagate ? ", propagated" : "");
  }

  QosOnly entity_;
};

/// The fields of QoS that request-reply settings concern, as a text, and some that they do not.
template <class Limits, class... Durations>
std::string all_fields(const Limits& qos, std::initializer_list<int> own, const Durations&... durations) {
  std::string text;
  for (const int number : {static_cast<int>(qos.reliability.kind), static_cast<int>(qos.history.kind),
                           qos.resource_limits.max_samples, qos.history.depth, qos.resource_limits.max_instances}) {
    text += std::to_string(number) + " ";
  }
  for (const int number : own) { text += std::to_string(number) + " "; }
  ((text += std::to_string(durations.sec) + "s" + std::to_string(durations.nanosec) + " "), ...);
  return text;
}
std::string fields(const DDS_DataWriterQos& qos) {
  const auto& rtps = qos.protocol.rtps_reliable_writer;
  return all_fields(qos,
                    {qos.writer_resource_limits.max_remote_reader_filters, rtps.max_heartbeat_retries,
                     rtps.heartbeats_per_max_samples, rtps.min_send_window_size, rtps.max_send_window_size,
                     qos.writer_data_lifecycle.autodispose_unregistered_instances},
                    qos.reliability.max_blocking_time, rtps.heartbeat_period, rtps.fast_heartbeat_period,
                    rtps.late_joiner_heartbeat_period, rtps.min_nack_response_delay, rtps.max_nack_response_delay);
}
std::string fields(const DDS_DataReaderQos& qos) {
  const auto& rtps = qos.protocol.rtps_reliable_reader;
  return all_fields(qos, {qos.reader_resource_limits.max_samples_per_read}, qos.reliability.max_blocking_time,
                    rtps.min_heartbeat_response_delay, rtps.max_heartbeat_response_delay);
}

/// Writer QoS that differs from what the request-reply settings would make of it, in every field.
DDS_DataWriterQos unusual_writer_qos() {
  DDS_DataWriterQos qos;
  qos.reliability.kind = DDS_BEST_EFFORT_RELIABILITY_QOS;
  qos.history.depth = 5;
  qos.resource_limits.max_samples = 77;
  qos.resource_limits.max_instances = 78;
  qos.writer_data_lifecycle.autodispose_unregistered_instances = false;
  auto& rtps = qos.protocol.rtps_reliable_writer;
  rtps.min_nack_response_delay = {1, 0};
  rtps.max_nack_response_delay = {2, 0};
  return qos;
}

DDS_DataReaderQos unusual_reader_qos() {
  DDS_DataReaderQos qos;
  qos.history.depth = 5;
  qos.resource_limits.max_samples = 77;
  qos.resource_limits.max_instances = 78;
  qos.reader_resource_limits.max_samples_per_read = 79;
  qos.protocol.rtps_reliable_reader.min_heartbeat_response_delay = {1, 0};
  qos.protocol.rtps_reliable_reader.max_heartbeat_response_delay = {2, 0};
  return qos;
}

TEST_F(Qos, IsTheParticipantsDefaultForTheTopicWithTheRequestReplySettingsOverIt) {
  ASSERT_EQ(real_participant_->set_default_datawriter_qos(unusual_writer_qos(), "Top*"), DDS_RETCODE_OK);
  ASSERT_EQ(real_participant_->set_default_datareader_qos(unusual_reader_qos(), "Top*"), DDS_RETCODE_OK);
  EXPECT_EQ(fields(writer_qos(replier_params())),
            "1 1 -1 5 78 -1 -1 2 32 32 0 10s0 0s100000000 0s10000000 0s10000000 0s0 0s0 ");
  EXPECT_EQ(fields(reader_qos(replier_params())), "1 1 -1 5 78 79 10s0 0s0 0s0 ");
}

TEST_F(Qos, OfAProfileIsTakenAsItIsWithTheNamesAsTheyAre) {
  DDSDomainParticipantFactory* factory = DDSDomainParticipantFactory::get_instance();
  for (const char* profile : {"P", ""}) {
    SCOPED_TRACE(profile);
    ASSERT_EQ(factory->set_profile_datawriter_qos("L", profile, "Topic", unusual_writer_qos()), DDS_RETCODE_OK);
    ASSERT_EQ(factory->set_profile_datareader_qos("L", profile, "Topic", unusual_reader_qos()), DDS_RETCODE_OK);
    const zemtra::RequesterParams params = requester_params().qos_profile("L", profile);
    Seam::get().reset();
    EXPECT_EQ(fields(writer_qos(params)), fields(unusual_writer_qos()));
    EXPECT_EQ(fields(reader_qos(params)), fields(unusual_reader_qos()));
    const std::string names = std::string("(L, ") + profile + ", Topic)";
    EXPECT_THAT(Seam::get().trace(),
                ElementsAre("factory.get_datawriter_qos_from_profile" + names, "duplicate_string",
                            "factory.get_datareader_qos_from_profile" + names, "duplicate_string", "add_property"));
  }
}

TEST_F(Qos, OfTheCallerGoesBeforeAProfileAndStaysAsItIs) {
  DDS_DataWriterQos writer = unusual_writer_qos();
  DDS_DataReaderQos reader = unusual_reader_qos();
  const auto params =
      requester_params().qos_profile("no such library", "P").datawriter_qos(writer).datareader_qos(reader);
  writer.history.depth = 6;  // seen, since the structure itself is read
  EXPECT_EQ(fields(writer_qos(params)), fields(writer));
  EXPECT_EQ(fields(reader_qos(params)), fields(unusual_reader_qos()));
  EXPECT_EQ(writer.publication_name.role_name, nullptr);
  EXPECT_EQ(reader.subscription_name.role_name, nullptr);
  EXPECT_EQ(property(reader), "absent");
  EXPECT_EQ(Seam::get().count(Call::get_profile_datawriter_qos), 0);
  EXPECT_EQ(Seam::get().count(Call::get_profile_datareader_qos), 0);
}

TEST_F(Qos, IgnoresAProfileWithoutLibrary) {
  EXPECT_EQ(fields(writer_qos(requester_params().qos_profile("", "P"))), fields(writer_qos(requester_params())));
  EXPECT_EQ(Seam::get().count(Call::get_default_datawriter_qos), 2);
}

TEST_F(Qos, NamesTheRoleUnlessItHasAName) {
  EXPECT_STREQ(writer_qos(requester_params()).publication_name.role_name, "Role");
  EXPECT_STREQ(reader_qos(requester_params()).subscription_name.role_name, "Role");
  DDS_DataWriterQos writer;
  writer.publication_name.role_name = DDS_String_dup("");
  DDS_DataReaderQos reader;
  reader.subscription_name.role_name = DDS_String_dup("mine");
  const auto params = requester_params().datawriter_qos(writer).datareader_qos(reader);
  EXPECT_STREQ(writer_qos(params).publication_name.role_name, "");
  EXPECT_STREQ(reader_qos(params).subscription_name.role_name, "mine");
}

TEST_F(Qos, TellsRequestersFromRepliers) {
  const auto expect_role = [](const auto& entity, const char* role) {
    DDS_DataWriterQos writer;
    DDS_DataReaderQos reader;
    ASSERT_EQ(entity->writer->get_qos(writer), DDS_RETCODE_OK);
    ASSERT_EQ(entity->reader->get_qos(reader), DDS_RETCODE_OK);
    EXPECT_STREQ(writer.publication_name.role_name, role);
    EXPECT_STREQ(reader.subscription_name.role_name, role);
  };
  expect_role(make_requester(), "Requester");
  expect_role(make_replier(), "Replier");
}

TEST_F(Qos, OfAReaderLeavesNoSampleOfAVanishedWriterUnlessItSaysSo) {
  EXPECT_EQ(property(reader_qos(requester_params())), "0");
  DDS_DataReaderQos reader;
  ASSERT_EQ(DDSPropertyQosPolicyHelper::add_property(reader.property, kProperty, "1", true), DDS_RETCODE_OK);
  EXPECT_EQ(property(reader_qos(requester_params().datareader_qos(reader))), "1, propagated");
  EXPECT_EQ(Seam::get().count(Call::add_property), 1);
}

TEST_F(Qos, OfAnUnknownProfileIsReportedWithTheRoleNameAlreadySet) {
  const auto params = requester_params().qos_profile("no such library", "P");
  DDS_DataWriterQos writer;
  EXPECT_EQ(
      message_of<zemtra::BadParameterException>([&] { entity_.get_datawriter_qos(writer, params, "Topic", "Role"); }),
      report("EntityUntypedImpl::get_datawriter_qos", QVX_LOG_GET_FAILURE_s, "DataWriter qos"));
  EXPECT_STREQ(writer.publication_name.role_name, "Role");
  DDS_DataReaderQos reader;
  EXPECT_EQ(
      message_of<zemtra::BadParameterException>([&] { entity_.get_datareader_qos(reader, params, "Topic", "Role"); }),
      report("EntityUntypedImpl::get_datareader_qos", QVX_LOG_GET_FAILURE_s, "DataReader qos"));
  EXPECT_STREQ(reader.subscription_name.role_name, "Role");
  EXPECT_EQ(property(reader), "absent");
}

TEST_F(Qos, ThatCannotBeHadStillGetsTheRequestReplySettingsAndTheRoleNameFirst) {
  Seam::get().plan({Call::get_default_datawriter_qos, 1, DDS_RETCODE_NOT_ENABLED});
  DDS_DataWriterQos writer;
  EXPECT_THROW(entity_.get_datawriter_qos(writer, requester_params(), "Topic", "Role"), zemtra::NotEnabledException);
  EXPECT_EQ(writer.protocol.rtps_reliable_writer.max_send_window_size, 32);
  EXPECT_STREQ(writer.publication_name.role_name, "Role");

  // When both fail, the role name is what is reported.
  Seam::get().plan({Call::get_default_datareader_qos, 1, DDS_RETCODE_NOT_ENABLED});
  Seam::get().plan({Call::duplicate_string});
  DDS_DataReaderQos reader;
  EXPECT_EQ(message_of<zemtra::RuntimeException>(
                [&] { entity_.get_datareader_qos(reader, requester_params(), "Topic", "Role"); }),
            report("EntityUntypedImpl::get_datareader_qos", QVX_LOG_ANY_FAILURE_s, "allocate string"));
}

}  // namespace
}  // namespace requestreply_test
