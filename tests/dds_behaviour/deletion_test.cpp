// Who may delete what, and when.

#include <atomic>

#include "behaviour.hpp"
#include "log_lines.hpp"

namespace behaviour {
namespace {

using Deletion = OneTopic;
using Creation = OneTopic;
using Churn = OneTopicOver;

TEST_F(Deletion, OfAParticipantWaitsForItsEntities) {
  DDSDomainParticipant* raw = factory().create_participant(0, DDS_PARTICIPANT_QOS_DEFAULT, nullptr, 0);
  ASSERT_NE(raw, nullptr);
  ASSERT_NE(raw->get_implicit_publisher(), nullptr);
  ASSERT_NE(raw->get_implicit_subscriber(), nullptr);
  DDSPublisher* publisher = raw->create_publisher(DDS_PUBLISHER_QOS_DEFAULT, nullptr, DDS_STATUS_MASK_NONE);
  EXPECT_EQ(factory().delete_participant(raw), DDS_RETCODE_PRECONDITION_NOT_MET);
  EXPECT_EQ(raw->delete_publisher(publisher), DDS_RETCODE_OK);
  ASSERT_EQ(DDSStringTypeSupport::register_type(raw, "T"), DDS_RETCODE_OK);
  DDSTopic* held = raw->create_topic("Held", "T", DDS_TOPIC_QOS_DEFAULT, nullptr, DDS_STATUS_MASK_NONE);
  EXPECT_EQ(factory().delete_participant(raw), DDS_RETCODE_PRECONDITION_NOT_MET);
  EXPECT_EQ(raw->delete_topic(held), DDS_RETCODE_OK);
  EXPECT_EQ(factory().delete_participant(raw), DDS_RETCODE_OK) << "implicit publisher and subscriber do not hold it";
  EXPECT_EQ(factory().delete_participant(raw), DDS_RETCODE_BAD_PARAMETER) << "deleted already";
}

TEST_F(Deletion, OfATopicWaitsForWhatUsesIt) {
  DDSStringDataWriter* writer = make_writer(topic);
  EXPECT_EQ(participant->delete_topic(topic), DDS_RETCODE_PRECONDITION_NOT_MET);
  EXPECT_EQ(remove(writer), DDS_RETCODE_OK);
  DDSContentFilteredTopic* filtered = participant.filtered("Filtered", topic, "value = 'x'");
  EXPECT_EQ(participant->delete_topic(topic), DDS_RETCODE_PRECONDITION_NOT_MET);
  DDSStringDataReader* reader = make_reader(filtered);
  EXPECT_EQ(participant->delete_contentfilteredtopic(filtered), DDS_RETCODE_PRECONDITION_NOT_MET);
  EXPECT_EQ(other->delete_contentfilteredtopic(filtered), DDS_RETCODE_PRECONDITION_NOT_MET);
  EXPECT_EQ(remove(reader), DDS_RETCODE_OK);
  EXPECT_EQ(participant->delete_contentfilteredtopic(filtered), DDS_RETCODE_OK);
  EXPECT_EQ(other->delete_topic(topic), DDS_RETCODE_PRECONDITION_NOT_MET) << "another participant's";
  EXPECT_EQ(participant->delete_topic(topic), DDS_RETCODE_OK);
  EXPECT_EQ(participant->lookup_topicdescription("Topic"), nullptr);
  EXPECT_NE(participant.strings("Topic"), nullptr) << "the name is free again";
}

TEST_F(Deletion, ThatIsRefusedLeavesALogLineThatNamesTheCall) {
  DDSStringDataReader* reader = make_reader(topic);
  DDSReadCondition* condition =
      reader->create_readcondition(DDS_ANY_SAMPLE_STATE, DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE);
  DDSReadCondition* deleted =
      reader->create_readcondition(DDS_ANY_SAMPLE_STATE, DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE);
  EXPECT_EQ(reader->delete_readcondition(deleted), DDS_RETCODE_OK);
  DDSStringDataReader* stranger = make_reader(topic);
  struct Refused {
    const char* call;
    DDS_ReturnCode_t retcode;
    std::function<DDS_ReturnCode_t()> attempt;
  };
  constexpr DDS_ReturnCode_t null = DDS_RETCODE_BAD_PARAMETER, unmet = DDS_RETCODE_PRECONDITION_NOT_MET;
  const Refused refused[] = {
      {"delete_topic", unmet, [&] { return participant->delete_topic(topic); }},
      {"delete_topic", null, [&] { return participant->delete_topic(nullptr); }},
      {"delete_datareader", unmet, [&] { return other->delete_datareader(reader); }},
      {"delete_datareader", unmet, [&] { return participant->delete_datareader(reader); }},  // for its condition
      {"delete_datareader", null, [&] { return participant->delete_datareader(nullptr); }},
      {"delete_datawriter", null, [&] { return participant->delete_datawriter(nullptr); }},
      {"delete_publisher", null, [&] { return participant->delete_publisher(nullptr); }},
      {"delete_subscriber", null, [&] { return participant->delete_subscriber(nullptr); }},
      {"delete_contentfilteredtopic", null, [&] { return participant->delete_contentfilteredtopic(nullptr); }},
      {"delete_participant", null, [&] { return factory().delete_participant(nullptr); }},
      {"DDSDataReader::delete_readcondition", unmet, [&] { return reader->delete_readcondition(deleted); }},
      {"DDSDataReader::delete_readcondition", unmet, [&] { return stranger->delete_readcondition(condition); }},
      {"DDSDataReader::read or take", unmet,
       [&] {
         DDS_StringSeq data;
         DDS_SampleInfoSeq infos;
         return reader->take_w_condition(data, infos, 1, deleted);
       }},
  };
  for (const auto& [name, retcode, attempt] : refused) {
    const LogLines lines;
    EXPECT_EQ(attempt(), retcode) << name;
    EXPECT_EQ(lines.all().size(), 1u) << name;
    EXPECT_EQ(lines.count(std::string(name) + ": "), 1) << name;
  }
  EXPECT_EQ(reader->delete_readcondition(condition), DDS_RETCODE_OK);
  EXPECT_EQ(remove(reader), DDS_RETCODE_OK);
}

TEST_F(Deletion, GoesThroughTheFactoryThatCreated) {
  DDSPublisher* publisher = participant->create_publisher(DDS_PUBLISHER_QOS_DEFAULT, nullptr, DDS_STATUS_MASK_NONE);
  DDSSubscriber* subscriber = participant->create_subscriber(DDS_SUBSCRIBER_QOS_DEFAULT, nullptr, DDS_STATUS_MASK_NONE);
  ASSERT_NE(publisher, nullptr);
  ASSERT_NE(subscriber, nullptr);
  EXPECT_EQ(publisher->get_participant(), participant.get());
  EXPECT_EQ(subscriber->get_participant(), participant.get());
  DDSDataWriter* writer = publisher->create_datawriter(topic, reliable_writer(), nullptr, DDS_STATUS_MASK_NONE);
  DDSDataReader* reader = subscriber->create_datareader(topic, keep_all_reader(), nullptr, DDS_STATUS_MASK_NONE);
  EXPECT_EQ(writer->get_publisher(), publisher);
  EXPECT_EQ(reader->get_subscriber(), subscriber);
  EXPECT_EQ(participant->delete_datawriter(writer), DDS_RETCODE_PRECONDITION_NOT_MET);
  EXPECT_EQ(participant->delete_datareader(reader), DDS_RETCODE_PRECONDITION_NOT_MET);
  EXPECT_EQ(other->delete_datawriter(writer), DDS_RETCODE_PRECONDITION_NOT_MET);
  EXPECT_EQ(participant->delete_publisher(publisher), DDS_RETCODE_PRECONDITION_NOT_MET) << "it holds a writer";
  EXPECT_EQ(participant->delete_subscriber(subscriber), DDS_RETCODE_PRECONDITION_NOT_MET) << "it holds a reader";
  EXPECT_EQ(publisher->delete_datawriter(writer), DDS_RETCODE_OK);
  EXPECT_EQ(subscriber->delete_datareader(reader), DDS_RETCODE_OK);
  EXPECT_EQ(other->delete_publisher(publisher), DDS_RETCODE_PRECONDITION_NOT_MET);
  EXPECT_EQ(other->delete_subscriber(subscriber), DDS_RETCODE_PRECONDITION_NOT_MET);
  EXPECT_EQ(participant->delete_publisher(publisher), DDS_RETCODE_OK);
  EXPECT_EQ(participant->delete_subscriber(subscriber), DDS_RETCODE_OK);
}

TEST_F(Deletion, OfEverythingContainedLeavesAnEmptyParticipant) {
  DDSPublisher* publisher = participant->create_publisher(DDS_PUBLISHER_QOS_DEFAULT, nullptr, DDS_STATUS_MASK_NONE);
  publisher->create_datawriter(topic, reliable_writer(), nullptr, DDS_STATUS_MASK_NONE);
  DDSStringDataReader* reader = make_reader(participant.filtered("Filtered", topic, "value <> 'x'"));
  ASSERT_NE(reader->create_readcondition(DDS_ANY_SAMPLE_STATE, DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE), nullptr);
  EXPECT_EQ(write(make_writer(topic), "kept to the end"), DDS_RETCODE_OK);
  EXPECT_EQ(participant->delete_contained_entities(), DDS_RETCODE_OK);
  EXPECT_EQ(participant->lookup_topicdescription("Topic"), nullptr);
  EXPECT_EQ(participant->lookup_topicdescription("Filtered"), nullptr);
  topic = participant.strings("Topic");
  EXPECT_EQ(write(make_writer(topic), "usable again"), DDS_RETCODE_OK);
}

TEST_P(Churn, OfWritersAndReadersWhileOthersWriteHarmsNobody) {
  const int count = scaled(4000);
  DDSStringDataReader* reader = make_reader(topic);
  DDSTopic* others_topic = other.strings("Topic");
  std::atomic<bool> stop{false};
  std::uint32_t written = 0;
  Thread writing([&] {
    DDSStringDataWriter* writer = make_writer(topic);
    while (!stop) {
      EXPECT_EQ(write(writer, "steady"), DDS_RETCODE_OK);
      ++written;
      // Everything else waits for what this thread has sent before.
      if (!carrier().in_process()) { std::this_thread::sleep_for(std::chrono::microseconds(100)); }
    }
  });
  Thread churning([&] {
    for (int i = 0; i < count; ++i) {
      DDSStringDataReader* brief = make_reader(others_topic, keep_all_reader());
      take_all(brief);
      EXPECT_EQ(remove(brief), DDS_RETCODE_OK);
    }
  });
  std::uint32_t steady = 0, brief = 0;
  const auto take_and_count = [&] {
    for (const Received& sample : take_all(reader)) {
      if (!sample.info.valid_data) { continue; }
      (sample.value == "steady" ? steady : brief) += 1;
      if (sample.value == "steady") { EXPECT_EQ(number(sample.info.sample_identity), steady); }
    }
  };
  for (int i = 0; i < count; ++i) {
    DDSStringDataWriter* writer = make_writer(others_topic);
    EXPECT_EQ(write(writer, "brief"), DDS_RETCODE_OK);
    EXPECT_EQ(remove(writer), DDS_RETCODE_OK);
    take_and_count();
  }
  churning.join();
  stop = true;
  writing.join();
  while (steady < written) { take_and_count(); }
  EXPECT_EQ(brief, static_cast<std::uint32_t>(count));
}

TEST_F(Creation, RefusesWhatItCannotUse) {
  DDSTopic* foreign = other.strings("Topic");
  const LogLines log;
  EXPECT_EQ(participant->create_topic("Topic", topic->get_type_name(), DDS_TOPIC_QOS_DEFAULT, nullptr, 0), nullptr)
      << "the name is taken";
  EXPECT_EQ(participant->create_topic("New", "NoSuchType", DDS_TOPIC_QOS_DEFAULT, nullptr, 0), nullptr);
  EXPECT_EQ(participant->create_topic(nullptr, topic->get_type_name(), DDS_TOPIC_QOS_DEFAULT, nullptr, 0), nullptr);
  EXPECT_EQ(participant->create_topic("New", nullptr, DDS_TOPIC_QOS_DEFAULT, nullptr, 0), nullptr);
  int listener = 0;
  EXPECT_EQ(participant->create_topic("New", topic->get_type_name(), DDS_TOPIC_QOS_DEFAULT, &listener, 0), nullptr);
  EXPECT_EQ(participant->create_datawriter(nullptr, DDS_DATAWRITER_QOS_DEFAULT, nullptr, 0), nullptr);
  EXPECT_EQ(participant->create_datareader(nullptr, DDS_DATAREADER_QOS_DEFAULT, nullptr, 0), nullptr);
  EXPECT_EQ(participant->create_datawriter(foreign, DDS_DATAWRITER_QOS_DEFAULT, nullptr, 0), nullptr);
  EXPECT_EQ(participant->create_datareader(foreign, DDS_DATAREADER_QOS_DEFAULT, nullptr, 0), nullptr);
  EXPECT_EQ(factory().create_participant(0, DDS_PARTICIPANT_QOS_DEFAULT, &listener, 0), nullptr);
  EXPECT_EQ(log.all().size(), 10u);
  EXPECT_EQ(participant->lookup_topicdescription("New"), nullptr);
  EXPECT_EQ(participant->lookup_topicdescription("Topic"), topic);
  EXPECT_EQ(DDSTopic::narrow(topic), topic);
  EXPECT_EQ(DDSTopic::narrow(nullptr), nullptr);
}

TEST(Types, AreRegisteredOnceUnderANameAndDecideWhatTheirEntitiesNarrowTo) {
  const Participant participant;
  EXPECT_EQ(DDSStringTypeSupport::register_type(participant.get(), "T"), DDS_RETCODE_OK);
  EXPECT_EQ(DDSStringTypeSupport::register_type(participant.get(), "T"), DDS_RETCODE_OK);
  EXPECT_EQ(DDSOctetsTypeSupport::register_type(participant.get(), "T"), DDS_RETCODE_PRECONDITION_NOT_MET);
  DDSTopic* strings = participant.strings("Strings");
  DDSDataWriter* writer = make_writer(strings);
  DDSDataReader* reader = make_reader(strings);
  EXPECT_NE(DDSStringDataWriter::narrow(writer), nullptr);
  EXPECT_EQ(DDSOctetsDataWriter::narrow(writer), nullptr);
  EXPECT_EQ(DDSKeyedStringDataWriter::narrow(writer), nullptr);
  EXPECT_EQ(DDSKeyedOctetsDataReader::narrow(reader), nullptr);
  EXPECT_EQ(DDSStringDataReader::narrow(nullptr), nullptr);
}

RUN_OVER_EVERY_CARRIER(Churn);

}  // namespace
}  // namespace behaviour
