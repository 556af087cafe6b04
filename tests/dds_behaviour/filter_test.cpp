// Content filters, from the expression to what a reader gets.

#include "behaviour.hpp"
#include "log_lines.hpp"

namespace behaviour {
namespace {

using FilteredTopics = OneTopic;

class Filters : public OneTopicOver {
 protected:
  DDSStringDataWriter* writer = make_writer(topic);
};

TEST_P(Filters, KeepTheirExpressionAndParametersForWhomeverAsksAndUseThem) {
  DDSContentFilteredTopic* filtered = participant.filtered("Filtered", topic, "value = %0", {"'b'"});
  ASSERT_NE(filtered, nullptr);
  EXPECT_STREQ(filtered->get_name(), "Filtered");
  EXPECT_STREQ(filtered->get_type_name(), topic->get_type_name());
  EXPECT_STREQ(filtered->get_filter_expression(), "value = %0");
  EXPECT_EQ(filtered->get_related_topic(), topic);
  EXPECT_EQ(filtered->get_participant(), participant.get());
  DDS_StringSeq parameters;
  ASSERT_EQ(filtered->get_expression_parameters(parameters), DDS_RETCODE_OK);
  ASSERT_EQ(parameters.length(), 1);
  EXPECT_STREQ(parameters[0], "'b'");
  EXPECT_EQ(participant->lookup_topicdescription("Filtered"), filtered);
  EXPECT_EQ(DDSContentFilteredTopic::narrow(filtered), filtered);
  EXPECT_EQ(DDSTopic::narrow(filtered), nullptr);
  EXPECT_EQ(DDSContentFilteredTopic::narrow(topic), nullptr);
  DDSStringDataReader* reader = make_reader(filtered);
  for (const char* value : {"a", "b", "c"}) { EXPECT_EQ(write(writer, value), DDS_RETCODE_OK); }
  EXPECT_EQ(take_values(reader), Strings{"b"});
}

TEST_P(Filters, SeeTheIdentityOfASample) {
  DDSStringDataWriter* second = make_writer(topic);
  const std::string guid = "&hex(" + hexadecimal(guid_of(second)) + ")";
  DDSStringDataReader* reader = make_reader(participant.filtered(
      "Filtered", topic, "@sample_identity.sequence_number >= 2 AND @sample_identity.writer_guid.value = " + guid));
  for (int i = 1; i <= 3; ++i) {
    EXPECT_EQ(write(writer, "w" + std::to_string(i)), DDS_RETCODE_OK);
    EXPECT_EQ(write(second, "o" + std::to_string(i)), DDS_RETCODE_OK);
  }
  EXPECT_EQ(take_values(reader), (Strings{"o2", "o3"}));
}

TEST_P(Filters, OnRelatedWritersGiveEachOfManyReadersExactlyItsOwn) {
  const int count = carrier().in_process() ? 300 : 20;
  std::vector<DDS_GUID_t> guids;
  std::vector<DDSStringDataReader*> readers;
  const auto filter = [&](int i) {
    return "@related_sample_identity.writer_guid.value = &hex(" + hexadecimal(guids[static_cast<std::size_t>(i)]) + ")";
  };
  for (int i = 0; i < count; ++i) {
    DDS_GUID_t guid;
    for (int octet = 0; octet < 16; ++octet) { guid.value[octet] = static_cast<DDS_Octet>((i + 1) >> octet % 9); }
    guids.push_back(guid);
    readers.push_back(make_reader(participant.filtered(("F" + std::to_string(i)).c_str(), topic, filter(i))));
  }
  const auto send = [&](int i) {
    DDS_WriteParams_t params;
    params.related_sample_identity.writer_guid = guids[static_cast<std::size_t>(i)];
    params.related_sample_identity.sequence_number = {0, 1};
    EXPECT_EQ(writer->write_w_params(std::to_string(i).c_str(), params), DDS_RETCODE_OK);
  };
  // Further readers with the same filter, with the same one among others, and with none; one reader goes meanwhile.
  DDSStringDataReader* twin = make_reader(participant.filtered("Twin", topic, filter(5)));
  DDSStringDataReader* either = make_reader(participant.filtered("Either", topic, filter(5) + " OR " + filter(6)));
  DDSStringDataReader* all = make_reader(topic);
  for (int i = 0; i < count; ++i) { send(i); }
  EXPECT_EQ(remove(readers[7]), DDS_RETCODE_OK);
  for (const int i : {5, 7, 9}) { send(i); }
  EXPECT_EQ(write(writer, "answers nothing"), DDS_RETCODE_OK);

  for (int i = 0; i < count; ++i) {
    if (i == 7) { continue; }
    const std::string own = std::to_string(i);
    EXPECT_EQ(take_values(readers[static_cast<std::size_t>(i)]), i == 5 || i == 9 ? (Strings{own, own}) : Strings{own});
  }
  EXPECT_EQ(take_values(twin), (Strings{"5", "5"}));
  EXPECT_EQ(take_values(either), (Strings{"5", "6", "5"}));
  EXPECT_EQ(take_values(all).size(), static_cast<std::size_t>(count + 4));
}

TEST_P(Filters, LetTheEndOfAnInstanceReachExactlyTheReadersThatHoldIt) {
  DDSTopic* keyed_topic = participant.keyed_strings("Keyed");
  auto* holder =
      make_reader<DDSKeyedStringDataReader>(participant.filtered("Holder", keyed_topic, "key = 'a' AND value = '1'"));
  auto* stranger = make_reader<DDSKeyedStringDataReader>(participant.filtered("Stranger", keyed_topic, "value = '2'"));
  auto* keyed_writer = make_writer<DDSKeyedStringDataWriter>(keyed_topic);
  for (const char* key : {"a", "b"}) {
    EXPECT_EQ(write(keyed_writer, key, "1"), DDS_RETCODE_OK);
    EXPECT_EQ(dispose(keyed_writer, key), DDS_RETCODE_OK);
  }
  const std::vector<Received> held = take_all(holder);
  ASSERT_EQ(held.size(), 2u);
  EXPECT_FALSE(held[1].info.valid_data);
  EXPECT_EQ(held[1].info.instance_state, DDS_NOT_ALIVE_DISPOSED_INSTANCE_STATE);
  EXPECT_TRUE(take_all(stranger).empty());
}

TEST_P(Filters, KeepWhatTheyTurnAwayFromTakingRoom) {
  DDSStringDataReader* reader = make_reader(participant.filtered("F", topic, "value = 'mine'"), keep_all_reader(1));
  for (int i = 0; i < 10; ++i) { EXPECT_EQ(write(writer, "not mine"), DDS_RETCODE_OK); }
  EXPECT_EQ(write(writer, "mine"), DDS_RETCODE_OK);
  EXPECT_EQ(write(writer, "not mine"), DDS_RETCODE_OK) << "the reader is full but this is not for it";
  EXPECT_EQ(take_values(reader), Strings{"mine"});
}

TEST_F(FilteredTopics, NeedAFittingExpressionANameOfTheirOwnAndATopicOfTheirParticipant) {
  DDSTopic* octets = participant.octets("Octets");
  EXPECT_NE(participant.filtered("Number", octets, "@sample_identity.sequence_number > 1"), nullptr);
  const LogLines log;
  EXPECT_EQ(participant.filtered("Bad", topic, "value = = 'x'"), nullptr);
  EXPECT_EQ(log.count("character 9:"), 1);
  EXPECT_EQ(participant.filtered("Bad", octets, "value = 'a'"), nullptr) << "octets are no text";
  EXPECT_EQ(participant->lookup_topicdescription("Bad"), nullptr);
  EXPECT_EQ(participant.filtered("Topic", topic, "value = 'a'"), nullptr) << "the name of a topic";
  EXPECT_NE(participant.filtered("Filtered", topic, "value = 'a'"), nullptr);
  EXPECT_EQ(participant.filtered("Filtered", topic, "value = 'a'"), nullptr) << "the name of a filtered topic";
  EXPECT_EQ(other.filtered("Filtered", topic, "value = 'a'"), nullptr) << "another participant's topic";
  EXPECT_EQ(participant.filtered("Null", nullptr, "value = 'a'"), nullptr);
  EXPECT_EQ(participant->create_topic("Filtered", topic->get_type_name(), DDS_TOPIC_QOS_DEFAULT, nullptr,
                                      DDS_STATUS_MASK_NONE),
            nullptr);
  const DDS_StringSeq none;
  EXPECT_EQ(participant->create_contentfilteredtopic("NoExpression", topic, nullptr, none), nullptr);
  EXPECT_EQ(participant->create_contentfilteredtopic(nullptr, topic, "value = 'a'", none), nullptr);
  EXPECT_EQ(log.all().size(), 9u);
}

RUN_OVER_EVERY_CARRIER(Filters);

}  // namespace
}  // namespace behaviour
