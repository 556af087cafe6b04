// Content filters, from the expression to what a reader gets.

#include <set>

#include "behaviour.hpp"
#include "log_lines.hpp"

namespace behaviour {
namespace {

class Filters : public ::testing::Test {
 protected:
  /// What of `written` passes a filter over the topic.
  Strings pass(const std::string& expression, const std::vector<std::string>& parameters, const Strings& written) {
    DDSContentFilteredTopic* filtered = participant.filtered("Filtered", topic, expression, parameters);
    if (filtered == nullptr) { return {"no filter for " + expression}; }
    DDSStringDataReader* reader = make_reader(filtered);
    for (const std::string& value : written) { EXPECT_EQ(write(writer, value), DDS_RETCODE_OK); }
    const Strings passed = take_values(reader);
    EXPECT_EQ(remove(reader), DDS_RETCODE_OK);
    EXPECT_EQ(participant->delete_contentfilteredtopic(filtered), DDS_RETCODE_OK);
    return passed;
  }

  Participant participant;
  DDSTopic* topic = participant.strings("Topic");
  DDSStringDataWriter* writer = make_writer(topic);
};

TEST_F(Filters, CompareTheValueOctetByOctet) {
  const Strings written = {"", "a", "ab", "b", "B", "\xc3\xa4", "it's"};
  const std::vector<std::pair<const char*, Strings>> cases = {
      {"value = 'a'", {"a"}},
      {"value='a'", {"a"}},
      {"  value  =  'a'  ", {"a"}},
      {"value = ''", {""}},
      {"value <> 'a'", {"", "ab", "b", "B", "\xc3\xa4", "it's"}},
      {"value != 'a'", {"", "ab", "b", "B", "\xc3\xa4", "it's"}},
      {"value < 'ab'", {"", "a", "B"}},
      {"value <= 'ab'", {"", "a", "ab", "B"}},
      {"value > 'ab'", {"b", "\xc3\xa4", "it's"}},
      {"value >= 'b'", {"b", "\xc3\xa4", "it's"}},
      {"value = '\xc3\xa4'", {"\xc3\xa4"}},
  };
  for (const auto& [expression, passed] : cases) { EXPECT_EQ(pass(expression, {}, written), passed) << expression; }
}

TEST_F(Filters, CombineComparisonsWithTheUsualPrecedence) {
  const Strings written = {"a", "b", "c", "d"};
  const std::vector<std::pair<const char*, Strings>> cases = {
      {"value = 'a' OR value = 'b' AND value = 'c'", {"a"}},
      {"(value = 'a' OR value = 'b') AND value <> 'b'", {"a"}},
      {"NOT value = 'a' AND value <> 'b'", {"c", "d"}},
      {"NOT (value = 'a' OR value = 'b')", {"c", "d"}},
      {"NOT NOT value = 'a'", {"a"}},
      {"value >= 'b' and not value = 'c' or value = 'a'", {"a", "b", "d"}},
      {"value = 'a' OR value = 'b' OR value = 'c'", {"a", "b", "c"}},
      {"((((value = 'd'))))", {"d"}},
  };
  for (const auto& [expression, passed] : cases) { EXPECT_EQ(pass(expression, {}, written), passed) << expression; }
}

TEST_F(Filters, TakeParametersByNumber) {
  const Strings written = {"a", "b", "c"};
  EXPECT_EQ(pass("value = %0", {"'b'"}, written), Strings{"b"});
  EXPECT_EQ(pass("value = %1 OR value = %0", {"'c'", "'a'"}, written), (Strings{"a", "c"}));
  EXPECT_EQ(pass("@sample_identity.sequence_number > %0 AND value = %1", {"0", "'a'"}, written), Strings{"a"});
}

TEST_F(Filters, KeepTheirExpressionAndParametersForWhomeverAsks) {
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
}

TEST_F(Filters, SeeTheIdentityOfASample) {
  DDSStringDataWriter* other = make_writer(topic);
  const std::string guid = "&hex(" + hexadecimal(guid_of(other)) + ")";
  const auto reader_of = [&](const char* name, const std::string& expression) {
    return make_reader(participant.filtered(name, topic, expression));
  };
  DDSStringDataReader* of_other = reader_of("1", "@sample_identity.writer_guid.value = " + guid);
  DDSStringDataReader* of_rest = reader_of("2", "@sample_identity.writer_guid.value <> " + guid);
  DDSStringDataReader* third_on = reader_of("3", "@sample_identity.sequence_number >= 3");
  DDSStringDataReader* second_of_other =
      reader_of("4", "@sample_identity.sequence_number = 2 AND @sample_identity.writer_guid.value = " + guid);
  for (int i = 1; i <= 3; ++i) {
    EXPECT_EQ(write(writer, "w" + std::to_string(i)), DDS_RETCODE_OK);
    EXPECT_EQ(write(other, "o" + std::to_string(i)), DDS_RETCODE_OK);
  }
  EXPECT_EQ(take_values(of_other), (Strings{"o1", "o2", "o3"}));
  EXPECT_EQ(take_values(of_rest), (Strings{"w1", "w2", "w3"}));
  EXPECT_EQ(take_values(third_on), (Strings{"w3", "o3"}));
  EXPECT_EQ(take_values(second_of_other), Strings{"o2"});
}

TEST_F(Filters, SeeTheRelatedSequenceNumberInAllItsBits) {
  const std::vector<std::pair<DDS_SequenceNumber_t, const char*>> numbers = {{{0, 1}, "1"},
                                                                             {{0, 0xffffffffu}, "4294967295"},
                                                                             {{1, 0}, "4294967296"},
                                                                             {{0x7fffffff, 1}, "9223372032559808513"}};
  for (const auto& [number, text] : numbers) {
    DDSContentFilteredTopic* filtered =
        participant.filtered(text, topic, std::string("@related_sample_identity.sequence_number = ") + text);
    ASSERT_NE(filtered, nullptr) << text;
    DDSStringDataReader* reader = make_reader(filtered);
    for (const auto& each : numbers) {
      DDS_WriteParams_t params;
      params.related_sample_identity.sequence_number = each.first;
      EXPECT_EQ(writer->write_w_params(each.second, params), DDS_RETCODE_OK);
    }
    EXPECT_EQ(take_values(reader), Strings{text});
    EXPECT_EQ(remove(reader), DDS_RETCODE_OK);
  }
}

TEST_F(Filters, OnRelatedWritersGiveEachOfManyReadersExactlyItsOwn) {
  const int count = 300;
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

TEST_F(Filters, SeeKeyAndValueOfKeyedStrings) {
  DDSTopic* keyed_topic = participant.keyed_strings("Keyed");
  auto* reader =
      make_reader<DDSKeyedStringDataReader>(participant.filtered("F", keyed_topic, "key = 'a' AND value > '1'"));
  auto* keyed_writer = make_writer<DDSKeyedStringDataWriter>(keyed_topic);
  for (const char* key : {"a", "b"}) {
    for (const char* value : {"1", "2", "3"}) { EXPECT_EQ(write(keyed_writer, key, value), DDS_RETCODE_OK); }
  }
  const std::vector<Received> received = take_all(reader);
  EXPECT_EQ(values(received), (Strings{"2", "3"}));
  for (const Received& sample : received) { EXPECT_EQ(sample.key, "a"); }
}

TEST_F(Filters, LetTheEndOfAnInstanceReachExactlyTheReadersThatHoldIt) {
  DDSTopic* keyed_topic = participant.keyed_strings("Keyed");
  auto* holder = make_reader<DDSKeyedStringDataReader>(participant.filtered("Holder", keyed_topic, "value = '1'"));
  auto* stranger = make_reader<DDSKeyedStringDataReader>(participant.filtered("Stranger", keyed_topic, "value = '2'"));
  auto* keyed_writer = make_writer<DDSKeyedStringDataWriter>(keyed_topic);
  EXPECT_EQ(write(keyed_writer, "a", "1"), DDS_RETCODE_OK);
  EXPECT_EQ(dispose(keyed_writer, "a"), DDS_RETCODE_OK);
  const std::vector<Received> held = take_all(holder);
  ASSERT_EQ(held.size(), 2u);
  EXPECT_FALSE(held[1].info.valid_data);
  EXPECT_EQ(held[1].info.instance_state, DDS_NOT_ALIVE_DISPOSED_INSTANCE_STATE);
  EXPECT_TRUE(take_all(stranger).empty());
}

TEST_F(Filters, KeepWhatTheyTurnAwayFromTakingRoom) {
  DDSStringDataReader* reader = make_reader(participant.filtered("F", topic, "value = 'mine'"), keep_all_reader(1));
  for (int i = 0; i < 10; ++i) { EXPECT_EQ(write(writer, "not mine"), DDS_RETCODE_OK); }
  EXPECT_EQ(write(writer, "mine"), DDS_RETCODE_OK);
  EXPECT_EQ(write(writer, "not mine"), DDS_RETCODE_OK) << "the reader is full but this is not for it";
  EXPECT_EQ(take_values(reader), Strings{"mine"});
}

TEST_F(Filters, WithABadExpressionAreNullAndTheLogLinePointsAtTheCharacter) {
  // With the character at fault, counted from 1.
  const std::vector<std::pair<std::string, std::size_t>> cases = {
      {"", 1},
      {"value = = 'x'", 9},
      {"value ~ 'x'", 7},
      {"value = 'x", 9},
      {"value = 'x' AND", 16},
      {"value = 'x' value", 13},
      {"(value = 'x'", 13},
      {"value = 'x')", 12},
      {"unknown = 'x'", 1},
      {"@unknown.field = 1", 1},
      {"value = 5", 9},
      {"@sample_identity.sequence_number = 'x'", 36},
      {"@sample_identity.sequence_number = 99999999999999999999", 36},
      {"@sample_identity.writer_guid.value = &hex(00)", 38},
      {"@sample_identity.writer_guid.value = &hex(0102030405060708090a0b0c0d0e0fzz)", 38},
      {"value = %0", 9},
      {"value = %99999999999999999999", 9},
      {"NOT", 4},
  };
  for (const auto& [expression, position] : cases) {
    const LogLines log;
    EXPECT_EQ(participant.filtered("Bad", topic, expression), nullptr) << expression;
    ASSERT_EQ(log.all().size(), 1u) << expression;
    EXPECT_EQ(log.count("character " + std::to_string(position) + ":"), 1) << expression << "\n" << log.all()[0];
    EXPECT_EQ(participant->lookup_topicdescription("Bad"), nullptr);
  }
}

TEST_F(Filters, OrderNoGuids) {
  const std::string guid = " &hex(" + std::string(32, '0') + ")";
  EXPECT_NE(participant.filtered("Equal", topic, "@sample_identity.writer_guid.value =" + guid), nullptr);
  const LogLines log;
  EXPECT_EQ(participant.filtered("Less", topic, "@sample_identity.writer_guid.value <" + guid), nullptr);
  EXPECT_EQ(log.all().size(), 1u);
}

TEST_F(Filters, AreBoundedInDepthAndLength) {
  const LogLines log;
  const std::size_t deep = 100000;
  EXPECT_EQ(participant.filtered("Deep", topic, std::string(deep, '(') + "value = 'x'" + std::string(deep, ')')),
            nullptr);
  std::string negated;
  for (std::size_t i = 0; i < deep; ++i) { negated += "NOT "; }
  EXPECT_EQ(participant.filtered("Negated", topic, negated + "value = 'x'"), nullptr);
  std::string wide = "value = 'x'";
  for (std::size_t i = 0; i < deep; ++i) { wide += " OR value = 'x'"; }
  EXPECT_EQ(participant.filtered("Wide", topic, wide), nullptr);
  EXPECT_EQ(log.all().size(), 3u);
}

TEST_F(Filters, OnMembersNeedATypeThatHasThem) {
  DDSTopic* octets = participant.octets("Octets");
  const LogLines log;
  EXPECT_EQ(participant.filtered("Key", topic, "key = 'a'"), nullptr) << "a string has no key";
  EXPECT_EQ(participant.filtered("Value", octets, "value = 'a'"), nullptr) << "octets are no text";
  EXPECT_EQ(log.all().size(), 2u);
  EXPECT_NE(participant.filtered("Number", octets, "@sample_identity.sequence_number > 1"), nullptr);
}

TEST_F(Filters, NeedANameOfTheirOwnAndATopicOfTheirParticipant) {
  const Participant other;
  const LogLines log;
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
  EXPECT_EQ(log.all().size(), 7u);
}

}  // namespace
}  // namespace behaviour
