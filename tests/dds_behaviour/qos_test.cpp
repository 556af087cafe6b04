// QoS: defaults, topic-name patterns, and what is refused.

#include "behaviour.hpp"
#include "log_lines.hpp"

namespace behaviour {
namespace {

using EntityQos = OneTopic;
using RefusedPolicies = OneTopic;

/// Recognised again by its history depth.
template <class Qos>
Qos marked(DDS_Long mark) {
  Qos qos;
  qos.history.depth = mark;
  return qos;
}

TEST(Defaults, OfAParticipantHoldForTheTopicNamesTheyAreSetFor) {
  const Participant participant, untouched;
  ASSERT_EQ(participant->set_default_datawriter_qos(marked<DDS_DataWriterQos>(10)), DDS_RETCODE_OK);
  ASSERT_EQ(participant->set_default_datareader_qos(marked<DDS_DataReaderQos>(20)), DDS_RETCODE_OK);
  ASSERT_EQ(participant->set_default_datawriter_qos(marked<DDS_DataWriterQos>(11), "*Reply"), DDS_RETCODE_OK);
  ASSERT_EQ(participant->set_default_datareader_qos(marked<DDS_DataReaderQos>(21), "*Reply"), DDS_RETCODE_OK);
  ASSERT_EQ(participant->set_default_datawriter_qos(marked<DDS_DataWriterQos>(12), "CalcReply"), DDS_RETCODE_OK);
  ASSERT_EQ(participant->set_default_topic_qos(marked<DDS_TopicQos>(30)), DDS_RETCODE_OK);

  const auto depths = [](const Participant& of, auto... name) {
    DDS_DataWriterQos writer_qos;
    DDS_DataReaderQos reader_qos;
    EXPECT_EQ(of->get_default_datawriter_qos(writer_qos, name...), DDS_RETCODE_OK);
    EXPECT_EQ(of->get_default_datareader_qos(reader_qos, name...), DDS_RETCODE_OK);
    return std::pair(writer_qos.history.depth, reader_qos.history.depth);
  };
  DDS_TopicQos topic_qos;
  EXPECT_EQ(participant->get_default_topic_qos(topic_qos), DDS_RETCODE_OK);
  EXPECT_EQ(topic_qos.history.depth, 30);
  EXPECT_EQ(depths(participant), std::pair(10, 20));
  EXPECT_EQ(depths(participant, "CalcReply"), std::pair(11, 21));
  EXPECT_EQ(depths(participant, "CalcRequest"), std::pair(10, 20));
  EXPECT_EQ(depths(untouched, "CalcReply"), std::pair(1, 1));
  EXPECT_EQ(DDS_DATAWRITER_QOS_DEFAULT.reliability.kind, DDS_RELIABLE_RELIABILITY_QOS);
  EXPECT_EQ(DDS_DATAREADER_QOS_DEFAULT.reliability.kind, DDS_BEST_EFFORT_RELIABILITY_QOS);

  // The default token stands for what the topic's name selects, also through a content-filtered topic.
  DDSTopic* reply = participant.strings("CalcReply");
  DDSTopic* request = participant.strings("CalcRequest");
  const auto depth = [](auto* entity, auto qos) {
    EXPECT_EQ(entity->get_qos(qos), DDS_RETCODE_OK);
    return qos.history.depth;
  };
  EXPECT_EQ(depth(reply, DDS_TopicQos()), 30);
  EXPECT_EQ(depth(make_writer(reply, DDS_DATAWRITER_QOS_DEFAULT), DDS_DataWriterQos()), 11);
  EXPECT_EQ(depth(make_writer(request, DDS_DATAWRITER_QOS_DEFAULT), DDS_DataWriterQos()), 10);
  EXPECT_EQ(depth(make_reader(reply, DDS_DATAREADER_QOS_DEFAULT), DDS_DataReaderQos()), 21);
  EXPECT_EQ(depth(make_reader(request, DDS_DATAREADER_QOS_DEFAULT), DDS_DataReaderQos()), 20);
  DDSContentFilteredTopic* filtered = participant.filtered("Filter", reply, "value = 'x'");
  EXPECT_EQ(depth(make_reader(filtered, DDS_DATAREADER_QOS_DEFAULT), DDS_DataReaderQos()), 21);
  EXPECT_EQ(depth(make_writer(request, marked<DDS_DataWriterQos>(5)), DDS_DataWriterQos()), 5) << "explicit QoS wins";
}

TEST_F(EntityQos, IsGivenBackAsItWasAskedFor) {
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

TEST_F(EntityQos, APropertyWithoutValueIsAsGoodAsNone) {
  DDS_DataReaderQos qos;
  ASSERT_TRUE(qos.property.value.ensure_length(1, 1));
  qos.property.value[0].name = DDS_String_dup("dds.data_reader.history.generate_not_alive_no_writers_sample");
  EXPECT_NE(make_reader(topic, qos), nullptr);
}

TEST_F(RefusedPolicies, MakeNoEntityNoDefaultAndNoProfileAndOneLogLineEachThatNamesThem) {
  DDS_TopicQos topic_qos;
  DDS_DataWriterQos writer;
  DDS_DataReaderQos reader;
  topic_qos.durability.kind = writer.durability.kind = reader.durability.kind = DDS_TRANSIENT_DURABILITY_QOS;
  const LogLines log;
  EXPECT_EQ(participant->create_topic("Refused", topic->get_type_name(), topic_qos, nullptr, 0), nullptr);
  EXPECT_EQ(participant->create_datawriter(topic, writer, nullptr, DDS_STATUS_MASK_NONE), nullptr);
  EXPECT_EQ(participant->create_datareader(topic, reader, nullptr, DDS_STATUS_MASK_NONE), nullptr);
  for (const DDS_ReturnCode_t retcode :
       {participant->set_default_topic_qos(topic_qos), participant->set_default_datawriter_qos(writer),
        participant->set_default_datawriter_qos(writer, "*"), participant->set_default_datareader_qos(reader),
        participant->set_default_datareader_qos(reader, "*"),
        factory().set_profile_datawriter_qos("L", "P", nullptr, writer),
        factory().set_profile_datareader_qos("L", "P", nullptr, reader)}) {
    EXPECT_EQ(retcode, DDS_RETCODE_UNSUPPORTED);
  }
  EXPECT_EQ(log.count("durability"), 10);
  EXPECT_EQ(log.all().size(), 10u);
  EXPECT_EQ(participant->lookup_topicdescription("Refused"), nullptr);
  for (const char* name : {"T", ""}) {
    EXPECT_EQ(participant->get_default_datawriter_qos(writer, name), DDS_RETCODE_OK);
    EXPECT_EQ(writer.durability.kind, DDS_VOLATILE_DURABILITY_QOS);
  }
  EXPECT_EQ(factory().get_datawriter_qos_from_profile(writer, "L", "P", "T"), DDS_RETCODE_BAD_PARAMETER);
}

TEST_F(RefusedPolicies, OfPublishersSubscribersAndParticipantsAreNamedToo) {
  DDS_PublisherQos publisher;
  publisher.presentation.ordered_access = true;
  DDS_SubscriberQos subscriber;
  ASSERT_TRUE(subscriber.partition.name.ensure_length(1, 1));
  DDS_DomainParticipantQos qos;
  ASSERT_EQ(DDSPropertyQosPolicyHelper::add_property(qos.property, "dds.transport", "pigeon", false), DDS_RETCODE_OK);
  const LogLines log;
  EXPECT_EQ(participant->create_publisher(publisher, nullptr, DDS_STATUS_MASK_NONE), nullptr);
  EXPECT_EQ(log.count("presentation"), 1);
  EXPECT_EQ(participant->create_subscriber(subscriber, nullptr, DDS_STATUS_MASK_NONE), nullptr);
  EXPECT_EQ(log.count("partition"), 1);
  EXPECT_EQ(factory().create_participant(0, qos, nullptr, DDS_STATUS_MASK_NONE), nullptr);
  EXPECT_EQ(log.count("dds.transport"), 1);
  EXPECT_EQ(log.all().size(), 3u);
}

}  // namespace
}  // namespace behaviour
