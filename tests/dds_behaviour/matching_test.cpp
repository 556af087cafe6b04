// Which ends meet, and what the ends that do not are told.

#include "behaviour.hpp"
#include "log_lines.hpp"

namespace behaviour {
namespace {

using Matching = OneTopicOver;

DDS_PublicationMatchedStatus matched(DDSDataWriter* writer) {
  settle();
  DDS_PublicationMatchedStatus status;
  EXPECT_EQ(writer->get_publication_matched_status(status), DDS_RETCODE_OK);
  return status;
}
DDS_SubscriptionMatchedStatus matched(DDSDataReader* reader) {
  settle();
  DDS_SubscriptionMatchedStatus status;
  EXPECT_EQ(reader->get_subscription_matched_status(status), DDS_RETCODE_OK);
  return status;
}

void expect_strangers(DDSStringDataWriter* writer, DDSDataReader* reader) {
  EXPECT_EQ(matched(writer).total_count, 0);
  EXPECT_EQ(matched(reader).total_count, 0);
  EXPECT_EQ(write(writer, "not for you"), DDS_RETCODE_OK);
  EXPECT_FALSE(has_data(reader));
}

TEST_P(Matching, SamplesOfDifferentDomainsOrTopicsNeverMeet) {
  const Participant far(support::own_second_domain());
  expect_strangers(make_writer(topic), make_reader(far.strings("Topic")));
  expect_strangers(make_writer(topic), make_reader(participant.strings("Topic2")));
}

TEST_P(Matching, SamplesWrittenBeforeAReaderExistedAreNotForIt) {
  DDSStringDataWriter* writer = make_writer(topic);
  EXPECT_EQ(write(writer, "early"), DDS_RETCODE_OK);
  DDSStringDataReader* reader = make_reader(topic);
  EXPECT_EQ(write(writer, "late"), DDS_RETCODE_OK);
  EXPECT_EQ(take_values(reader), Strings{"late"});
}

TEST_P(Matching, MatchedStatusesCountComingAndGoingOnBothSides) {
  DDSTopic* readers_topic = other.strings("Topic");
  DDSStringDataWriter* writer = make_writer(topic);
  DDSStringDataReader* first = make_reader(readers_topic);
  DDSStringDataReader* second = make_reader(readers_topic);

  DDS_PublicationMatchedStatus status = matched(writer);
  EXPECT_EQ(status.total_count, 2);
  EXPECT_EQ(status.total_count_change, 2);
  EXPECT_EQ(status.current_count, 2);
  EXPECT_EQ(status.current_count_change, 2);
  EXPECT_EQ(matched(first).current_count, 1);

  DDS_InstanceHandleSeq readers;
  ASSERT_EQ(writer->get_matched_subscriptions(readers), DDS_RETCODE_OK);
  ASSERT_EQ(readers.length(), 2);
  EXPECT_NE(readers[0], readers[1]);
  EXPECT_EQ(status.last_subscription_handle, readers[1]) << "the second reader came last";

  EXPECT_EQ(remove(second), DDS_RETCODE_OK);
  status = matched(writer);
  EXPECT_EQ(status.total_count, 2);
  EXPECT_EQ(status.total_count_change, 0);
  EXPECT_EQ(status.current_count, 1);
  EXPECT_EQ(status.current_count_change, -1);

  EXPECT_EQ(remove(writer), DDS_RETCODE_OK);
  const DDS_SubscriptionMatchedStatus end = matched(first);
  EXPECT_EQ(end.total_count, 1);
  EXPECT_EQ(end.current_count, 0);
  EXPECT_EQ(end.current_count_change, -1);
}

/// Why a reliable reader and a writer of strings do not match.
struct Obstacle {
  const char* name;
  DDS_ReturnCode_t (*register_readers_type)(DDSDomainParticipant*, const char*);
  const char* readers_type_name;
  DDS_DataWriterQos writer_qos;
  DDS_QosPolicyId_t policy;
  const char* reason;  // in the log
};
std::ostream& operator<<(std::ostream& out, const Obstacle& obstacle) { return out << obstacle.name; }
const Obstacle obstacles[] = {
    {"Reliability", DDSStringTypeSupport::register_type, DDSStringTypeSupport::get_type_name(), best_effort_writer(),
     DDS_RELIABILITY_QOS_POLICY_ID, "RELIABILITY"},
    {"TypeName", DDSStringTypeSupport::register_type, "OtherName", reliable_writer(),
     DDS_TYPE_CONSISTENCY_ENFORCEMENT_QOS_POLICY_ID, "different names"},
    {"Representation", DDSOctetsTypeSupport::register_type, DDSStringTypeSupport::get_type_name(), reliable_writer(),
     DDS_TYPE_CONSISTENCY_ENFORCEMENT_QOS_POLICY_ID, "differently"},
};

RUN_OVER_EVERY_CARRIER(Matching);

class IncompatibleEnds : public OverCarrier<Obstacle, bool>, public ::testing::Test {
 public:
  static auto every_case() {
    std::vector<std::tuple<support::Carrier, Obstacle, bool>> cases;
    for (const support::Carrier& carrier : support::carriers()) {
      for (const Obstacle& obstacle : obstacles) {
        // Only within a process are types more than their names.
        if (obstacle.name == std::string("Representation") && !carrier.in_process()) { continue; }
        for (const bool writer_first : {false, true}) { cases.emplace_back(carrier, obstacle, writer_first); }
      }
    }
    return cases;
  }
  static std::string name(const ::testing::TestParamInfo<std::tuple<support::Carrier, Obstacle, bool>>& test) {
    const auto& [carrier, obstacle, writer_first] = test.param;
    return std::string(carrier.name) + obstacle.name + (writer_first ? "WriterFirst" : "ReaderFirst");
  }
};

TEST_P(IncompatibleEnds, RaiseTheirStatusesOnBothSidesAndOneLogLineThatNamesTheReason) {
  const auto& [over, obstacle, writer_first] = GetParam();
  const Participant one, other;
  DDSTopic* writers_topic = one.strings("Topic");
  ASSERT_EQ(obstacle.register_readers_type(other.get(), obstacle.readers_type_name), DDS_RETCODE_OK);
  DDSTopic* readers_topic =
      other->create_topic("Topic", obstacle.readers_type_name, DDS_TOPIC_QOS_DEFAULT, nullptr, DDS_STATUS_MASK_NONE);
  ASSERT_NE(readers_topic, nullptr);
  const auto make_it = [&] { return other->create_datareader(readers_topic, keep_all_reader(), nullptr, 0); };
  const LogLines log;
  DDSDataReader* reader = writer_first ? nullptr : make_it();
  DDSStringDataWriter* writer = make_writer(writers_topic, obstacle.writer_qos);
  if (writer_first) { reader = make_it(); }

  // Each end logs it where it is.
  const int lines = carrier().in_process() || carrier().across_processes() ? 1 : 2;
  AWAIT_EQ(log.count(obstacle.reason), lines);
  settle();
  EXPECT_EQ(static_cast<int>(log.all().size()), lines);
  EXPECT_NE(writer->get_status_changes() & DDS_OFFERED_INCOMPATIBLE_QOS_STATUS, 0u);
  EXPECT_NE(reader->get_status_changes() & DDS_REQUESTED_INCOMPATIBLE_QOS_STATUS, 0u);
  ASSERT_EQ(reader->get_statuscondition()->set_enabled_statuses(DDS_REQUESTED_INCOMPATIBLE_QOS_STATUS), DDS_RETCODE_OK);
  EXPECT_TRUE(reader->get_statuscondition()->get_trigger_value());

  DDS_RequestedIncompatibleQosStatus requested;
  ASSERT_EQ(reader->get_requested_incompatible_qos_status(requested), DDS_RETCODE_OK);
  DDS_OfferedIncompatibleQosStatus offered;
  ASSERT_EQ(writer->get_offered_incompatible_qos_status(offered), DDS_RETCODE_OK);
  for (const auto* status : {&requested, &offered}) {
    EXPECT_EQ(status->total_count, 1);
    EXPECT_EQ(status->total_count_change, 1);
    EXPECT_EQ(status->last_policy_id, obstacle.policy);
    ASSERT_EQ(status->policies.length(), 1);
    EXPECT_EQ(status->policies[0].policy_id, obstacle.policy);
    EXPECT_EQ(status->policies[0].count, 1);
  }
  EXPECT_FALSE(reader->get_statuscondition()->get_trigger_value()) << "reading the status resets it";
  ASSERT_EQ(reader->get_requested_incompatible_qos_status(requested), DDS_RETCODE_OK);
  EXPECT_EQ(requested.total_count, 1);
  EXPECT_EQ(requested.total_count_change, 0);

  expect_strangers(writer, reader);
}
INSTANTIATE_TEST_SUITE_P(Over, IncompatibleEnds, ::testing::ValuesIn(IncompatibleEnds::every_case()),
                         &IncompatibleEnds::name);

}  // namespace
}  // namespace behaviour
