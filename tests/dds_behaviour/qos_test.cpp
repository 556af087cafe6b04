// QoS: profiles, defaults, topic-name patterns, and what is refused.

#include "behaviour.hpp"
#include "log_lines.hpp"

namespace behaviour {
namespace {

/// Recognised again by its history depth.
DDS_DataWriterQos writer_marked(DDS_Long mark) {
  DDS_DataWriterQos qos;
  qos.history.depth = mark;
  return qos;
}
DDS_DataReaderQos reader_marked(DDS_Long mark) {
  DDS_DataReaderQos qos;
  qos.history.depth = mark;
  return qos;
}

class Profiles : public ::testing::Test {
 protected:
  ~Profiles() override { factory().clear_profiles(); }
  static void set(const char* pattern, DDS_Long mark) {
    EXPECT_EQ(factory().set_profile_datawriter_qos("Library", "Profile", pattern, writer_marked(mark)), DDS_RETCODE_OK);
    EXPECT_EQ(factory().set_profile_datareader_qos("Library", "Profile", pattern, reader_marked(mark)), DDS_RETCODE_OK);
  }
  /// The mark of both kinds of QoS for a topic name.
  static DDS_Long mark(const char* topic_name) {
    DDS_DataWriterQos writer;
    DDS_DataReaderQos reader;
    EXPECT_EQ(factory().get_datawriter_qos_from_profile(writer, "Library", "Profile", topic_name), DDS_RETCODE_OK);
    EXPECT_EQ(factory().get_datareader_qos_from_profile(reader, "Library", "Profile", topic_name), DDS_RETCODE_OK);
    EXPECT_EQ(writer.history.depth, reader.history.depth);
    return writer.history.depth;
  }
};

TEST_F(Profiles, GiveTheFirstPatternThatMatchesOtherwiseTheGeneralSettingOtherwiseTheDefault) {
  set("Calc*", 10);
  set("CalcReply", 11);
  set("?x*y", 12);
  EXPECT_EQ(mark("Other"), 1) << "no general setting yet: the layer's default";
  set(nullptr, 13);
  EXPECT_EQ(mark("Calc"), 10);
  EXPECT_EQ(mark("CalcReply"), 10) << "the first in the order of setting";
  EXPECT_EQ(mark("axy"), 12);
  EXPECT_EQ(mark("axyy--y"), 12);
  EXPECT_EQ(mark("xy"), 13);
  EXPECT_EQ(mark("axyz"), 13);
  EXPECT_EQ(mark("calc"), 13);
  EXPECT_EQ(mark(""), 13);
}

TEST_F(Profiles, MatchHostilePatternsWithoutHanging) {
  std::string pattern;
  for (int i = 0; i < 30; ++i) { pattern += "a*"; }
  set(pattern.c_str(), 10);
  EXPECT_EQ(mark((std::string(200, 'a') + "b").c_str()), 10);
  set((pattern + "c").c_str(), 11);
  EXPECT_EQ(mark(std::string(200, 'b').c_str()), 1);
  EXPECT_EQ(mark((std::string(200, 'a')).c_str()), 10);
}

TEST_F(Profiles, ThatAreUnknownAreNamedInTheLog) {
  set(nullptr, 10);
  DDS_DataWriterQos writer;
  DDS_DataReaderQos reader;
  const LogLines log;
  EXPECT_EQ(factory().get_datawriter_qos_from_profile(writer, "NoLibrary", "Profile", "T"), DDS_RETCODE_BAD_PARAMETER);
  EXPECT_EQ(factory().get_datareader_qos_from_profile(reader, "NoLibrary", "Profile", "T"), DDS_RETCODE_BAD_PARAMETER);
  EXPECT_EQ(log.count("NoLibrary"), 2);
  EXPECT_EQ(factory().get_datawriter_qos_from_profile(writer, "Library", "NoProfile", "T"), DDS_RETCODE_BAD_PARAMETER);
  EXPECT_EQ(factory().get_datareader_qos_from_profile(reader, "Library", "NoProfile", "T"), DDS_RETCODE_BAD_PARAMETER);
  EXPECT_EQ(log.count("NoProfile"), 2);
  EXPECT_EQ(log.all().size(), 4u);
  EXPECT_EQ(factory().get_datawriter_qos_from_profile(writer, "Library", "", "T"), DDS_RETCODE_BAD_PARAMETER);
  factory().clear_profiles();
  EXPECT_EQ(factory().get_datawriter_qos_from_profile(writer, "Library", "Profile", "T"), DDS_RETCODE_BAD_PARAMETER);
}

TEST_F(Profiles, NeedALibraryAndAProfile) {
  const LogLines log;
  EXPECT_EQ(factory().set_profile_datawriter_qos(nullptr, "P", nullptr, writer_marked(1)), DDS_RETCODE_BAD_PARAMETER);
  EXPECT_EQ(factory().set_profile_datawriter_qos("", "P", nullptr, writer_marked(1)), DDS_RETCODE_BAD_PARAMETER);
  EXPECT_EQ(factory().set_profile_datareader_qos("L", nullptr, nullptr, reader_marked(1)), DDS_RETCODE_BAD_PARAMETER);
}

TEST(Defaults, OfAParticipantHoldForTheTopicNamesTheyAreSetFor) {
  const Participant participant, untouched;
  ASSERT_EQ(participant->set_default_datawriter_qos(writer_marked(10)), DDS_RETCODE_OK);
  ASSERT_EQ(participant->set_default_datareader_qos(reader_marked(20)), DDS_RETCODE_OK);
  ASSERT_EQ(participant->set_default_datawriter_qos(writer_marked(11), "*Reply"), DDS_RETCODE_OK);
  ASSERT_EQ(participant->set_default_datareader_qos(reader_marked(21), "*Reply"), DDS_RETCODE_OK);
  ASSERT_EQ(participant->set_default_datawriter_qos(writer_marked(12), "CalcReply"), DDS_RETCODE_OK);

  DDS_DataWriterQos writer_qos;
  DDS_DataReaderQos reader_qos;
  EXPECT_EQ(participant->get_default_datawriter_qos(writer_qos), DDS_RETCODE_OK);
  EXPECT_EQ(writer_qos.history.depth, 10);
  EXPECT_EQ(participant->get_default_datareader_qos(reader_qos), DDS_RETCODE_OK);
  EXPECT_EQ(reader_qos.history.depth, 20);
  EXPECT_EQ(participant->get_default_datawriter_qos(writer_qos, "CalcReply"), DDS_RETCODE_OK);
  EXPECT_EQ(writer_qos.history.depth, 11);
  EXPECT_EQ(participant->get_default_datareader_qos(reader_qos, "CalcReply"), DDS_RETCODE_OK);
  EXPECT_EQ(reader_qos.history.depth, 21);
  EXPECT_EQ(participant->get_default_datareader_qos(reader_qos, "CalcRequest"), DDS_RETCODE_OK);
  EXPECT_EQ(reader_qos.history.depth, 20);
  EXPECT_EQ(untouched->get_default_datawriter_qos(writer_qos, "CalcReply"), DDS_RETCODE_OK);
  EXPECT_EQ(writer_qos.history.depth, 1);

  // The default token stands for what the topic's name selects, also through a content-filtered topic.
  DDSTopic* reply = participant.strings("CalcReply");
  DDSTopic* request = participant.strings("CalcRequest");
  const auto depth = [](auto* entity, auto qos) {
    EXPECT_EQ(entity->get_qos(qos), DDS_RETCODE_OK);
    return qos.history.depth;
  };
  EXPECT_EQ(depth(make_writer(reply, DDS_DATAWRITER_QOS_DEFAULT), DDS_DataWriterQos()), 11);
  EXPECT_EQ(depth(make_writer(request, DDS_DATAWRITER_QOS_DEFAULT), DDS_DataWriterQos()), 10);
  EXPECT_EQ(depth(make_reader(reply, DDS_DATAREADER_QOS_DEFAULT), DDS_DataReaderQos()), 21);
  EXPECT_EQ(depth(make_reader(request, DDS_DATAREADER_QOS_DEFAULT), DDS_DataReaderQos()), 20);
  DDSContentFilteredTopic* filtered = participant.filtered("Filter", reply, "value = 'x'");
  EXPECT_EQ(depth(make_reader(filtered, DDS_DATAREADER_QOS_DEFAULT), DDS_DataReaderQos()), 21);
  EXPECT_EQ(depth(make_writer(request, writer_marked(5)), DDS_DataWriterQos()), 5) << "explicit QoS wins";
}

TEST(Defaults, OfTopicsAreTheParticipantsAtTheTimeOfCreation) {
  const Participant participant;
  DDS_TopicQos qos;
  qos.history.depth = 9;
  ASSERT_EQ(participant->set_default_topic_qos(qos), DDS_RETCODE_OK);
  DDSTopic* topic = participant.strings("Topic");
  DDS_TopicQos got;
  EXPECT_EQ(participant->get_default_topic_qos(got), DDS_RETCODE_OK);
  EXPECT_EQ(got.history.depth, 9);
  got = DDS_TopicQos();
  EXPECT_EQ(topic->get_qos(got), DDS_RETCODE_OK);
  EXPECT_EQ(got.history.depth, 9);
}

TEST(EntityQos, IsGivenBackAsItWasAskedFor) {
  const Participant participant;
  DDSTopic* topic = participant.strings("Topic");
  DDS_DataReaderQos asked = keep_all_reader(77);
  asked.subscription_name.role_name = DDS_String_dup("Role");
  ASSERT_EQ(DDSPropertyQosPolicyHelper::add_property(asked.property, "own.name", "own value", false), DDS_RETCODE_OK);
  DDSStringDataReader* reader = make_reader(topic, asked);
  DDS_DataReaderQos got;
  ASSERT_EQ(reader->get_qos(got), DDS_RETCODE_OK);
  EXPECT_EQ(got.resource_limits.max_samples, 77);
  EXPECT_EQ(got.history.kind, DDS_KEEP_ALL_HISTORY_QOS);
  EXPECT_STREQ(got.subscription_name.role_name, "Role");
  const DDS_Property_t* property = DDSPropertyQosPolicyHelper::lookup_property(got.property, "own.name");
  ASSERT_NE(property, nullptr);
  EXPECT_STREQ(property->value, "own value");
}

/// A policy away from its default, in every QoS that has it.
struct Refusal {
  const char* policy;
  std::function<void(DDS_TopicQos&)> topic;
  std::function<void(DDS_DataWriterQos&)> writer;
  std::function<void(DDS_DataReaderQos&)> reader;
};
template <class Qos>
Qos spoiled(const std::function<void(Qos&)>& spoil) {
  Qos qos;
  spoil(qos);
  return qos;
}

const Refusal refusals[] = {
    {"durability", [](auto& qos) { qos.durability.kind = DDS_TRANSIENT_LOCAL_DURABILITY_QOS; },
     [](auto& qos) { qos.durability.kind = DDS_PERSISTENT_DURABILITY_QOS; },
     [](auto& qos) { qos.durability.kind = DDS_TRANSIENT_DURABILITY_QOS; }},
    {"ownership", [](auto& qos) { qos.ownership.kind = DDS_EXCLUSIVE_OWNERSHIP_QOS; },
     [](auto& qos) { qos.ownership.kind = DDS_EXCLUSIVE_OWNERSHIP_QOS; },
     [](auto& qos) { qos.ownership.kind = DDS_EXCLUSIVE_OWNERSHIP_QOS; }},
    {"deadline",
     [](auto& qos) {
       qos.deadline.period = {1, 0};
     },
     [](auto& qos) {
       qos.deadline.period = {1, 0};
     },
     [](auto& qos) { qos.deadline.period = DDS_DURATION_ZERO; }},
    {"lifespan",
     [](auto& qos) {
       qos.lifespan.duration = {1, 0};
     },
     [](auto& qos) {
       qos.lifespan.duration = {1, 0};
     },
     nullptr},
};

TEST(RefusedPolicies, MakeNoEntityAndOneLogLineThatNamesThem) {
  const Participant participant;
  DDSTopic* topic = participant.strings("Topic");
  for (const Refusal& refusal : refusals) {
    const LogLines log;
    EXPECT_EQ(participant->create_topic("Refused", topic->get_type_name(), spoiled(refusal.topic), nullptr,
                                        DDS_STATUS_MASK_NONE),
              nullptr);
    EXPECT_EQ(participant->create_datawriter(topic, spoiled(refusal.writer), nullptr, DDS_STATUS_MASK_NONE), nullptr);
    if (refusal.reader) {
      EXPECT_EQ(participant->create_datareader(topic, spoiled(refusal.reader), nullptr, DDS_STATUS_MASK_NONE), nullptr);
    }
    EXPECT_EQ(log.count(refusal.policy), refusal.reader ? 3 : 2) << refusal.policy;
    EXPECT_EQ(log.all().size(), refusal.reader ? 3u : 2u) << refusal.policy;
  }
  EXPECT_EQ(participant->lookup_topicdescription("Refused"), nullptr);
}

TEST(RefusedPolicies, AreNotStoredAsDefaultsOrInProfilesEither) {
  const Participant participant;
  for (const Refusal& refusal : refusals) {
    const LogLines log;
    EXPECT_EQ(participant->set_default_topic_qos(spoiled(refusal.topic)), DDS_RETCODE_UNSUPPORTED);
    EXPECT_EQ(participant->set_default_datawriter_qos(spoiled(refusal.writer)), DDS_RETCODE_UNSUPPORTED);
    EXPECT_EQ(participant->set_default_datawriter_qos(spoiled(refusal.writer), "*"), DDS_RETCODE_UNSUPPORTED);
    EXPECT_EQ(factory().set_profile_datawriter_qos("L", "P", nullptr, spoiled(refusal.writer)),
              DDS_RETCODE_UNSUPPORTED);
    if (refusal.reader) {
      EXPECT_EQ(participant->set_default_datareader_qos(spoiled(refusal.reader)), DDS_RETCODE_UNSUPPORTED);
      EXPECT_EQ(participant->set_default_datareader_qos(spoiled(refusal.reader), "*"), DDS_RETCODE_UNSUPPORTED);
      EXPECT_EQ(factory().set_profile_datareader_qos("L", "P", nullptr, spoiled(refusal.reader)),
                DDS_RETCODE_UNSUPPORTED);
    }
    EXPECT_EQ(log.count(refusal.policy), refusal.reader ? 7 : 4) << refusal.policy;
  }
  DDS_DataWriterQos qos;
  EXPECT_EQ(participant->get_default_datawriter_qos(qos, "T"), DDS_RETCODE_OK);
  EXPECT_EQ(qos.durability.kind, DDS_VOLATILE_DURABILITY_QOS);
  factory().clear_profiles();
}

TEST(RefusedPolicies, OfPublishersSubscribersAndParticipantsAreNamedToo) {
  const Participant participant;
  DDS_PublisherQos publisher;
  publisher.presentation.ordered_access = true;
  DDS_SubscriberQos subscriber;
  subscriber.presentation.access_scope = DDS_TOPIC_PRESENTATION_QOS;
  DDS_PublisherQos partitioned_publisher;
  ASSERT_TRUE(partitioned_publisher.partition.name.ensure_length(1, 1));
  partitioned_publisher.partition.name[0] = DDS_String_dup("A");
  DDS_SubscriberQos partitioned_subscriber;
  partitioned_subscriber.partition = partitioned_publisher.partition;
  const LogLines log;
  EXPECT_EQ(participant->create_publisher(publisher, nullptr, DDS_STATUS_MASK_NONE), nullptr);
  EXPECT_EQ(participant->create_subscriber(subscriber, nullptr, DDS_STATUS_MASK_NONE), nullptr);
  EXPECT_EQ(log.count("presentation"), 2);
  EXPECT_EQ(participant->create_publisher(partitioned_publisher, nullptr, DDS_STATUS_MASK_NONE), nullptr);
  EXPECT_EQ(participant->create_subscriber(partitioned_subscriber, nullptr, DDS_STATUS_MASK_NONE), nullptr);
  EXPECT_EQ(log.count("partition"), 2);

  DDS_DomainParticipantQos qos;
  ASSERT_EQ(DDSPropertyQosPolicyHelper::add_property(qos.property, "dds.transport", "pigeon", false), DDS_RETCODE_OK);
  EXPECT_EQ(factory().create_participant(0, qos, nullptr, DDS_STATUS_MASK_NONE), nullptr);
  EXPECT_EQ(log.count("dds.transport"), 1);
  EXPECT_EQ(log.all().size(), 5u);
}

}  // namespace
}  // namespace behaviour
