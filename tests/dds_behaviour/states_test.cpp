// States of instances, against tables worked out by hand, where the model of a reader does not go.

#include <map>

#include "behaviour.hpp"
#include "log_lines.hpp"

namespace behaviour {
namespace {

/// What a read shows of each sample: value ("-" without valid data), whether it was read, whether its instance is new,
/// the instance's state, its disposed and no-writers generation, and the three ranks.
Strings rows(const std::vector<Received>& received) {
  const char* const states[] = {"", " alive", " disposed", "", " no-writers"};  // by mask
  Strings result;
  for (const Received& sample : received) {
    const DDS_SampleInfo& info = sample.info;
    result.push_back(info.valid_data ? sample.value : "-");
    result.back() += info.sample_state == DDS_READ_SAMPLE_STATE ? " read" : " unread";
    result.back() += info.view_state == DDS_NEW_VIEW_STATE ? " new" : " old";
    result.back() += states[info.instance_state];
    for (const int number : {info.disposed_generation_count, info.no_writers_generation_count, info.sample_rank,
                             info.generation_rank, info.absolute_generation_rank}) {
      result.back() += " " + std::to_string(number);
    }
  }
  return result;
}

class States : public OverCarrier<>, public ::testing::Test {
 protected:
  Participant participant;
  DDSTopic* topic = participant.keyed_strings("Topic");
  DDSKeyedStringDataReader* reader = make_reader<DDSKeyedStringDataReader>(topic);
};

TEST_P(States, KeyedOctetsKeepInstancesApart) {
  DDSTopic* octets = participant.topic<DDSKeyedOctetsTypeSupport>("Octets");
  auto* octets_reader = make_reader<DDSKeyedOctetsDataReader>(octets);
  auto* octets_writer = make_writer<DDSKeyedOctetsDataWriter>(octets);
  std::string a = "a", b = "b";
  DDS_Octet octet = 1;
  for (std::string* key : {&a, &b, &a}) {
    EXPECT_EQ(octets_writer->write({key->data(), 1, &octet}, DDS_HANDLE_NIL), DDS_RETCODE_OK);
  }
  std::map<std::string, int> counts;
  for (Received& sample : read_all(octets_reader)) {
    ++counts[sample.key];
    EXPECT_EQ(sample.value, "\1");
    EXPECT_EQ(sample.info.instance_handle, octets_reader->lookup_instance({sample.key.data(), 1, &octet}));
  }
  EXPECT_EQ(counts, (std::map<std::string, int>{{"a", 2}, {"b", 1}}));
}

TEST_P(States, ThePropertyDecidesWhetherAVanishedWriterLeavesASampleWithoutDataAlsoForATypeWithoutKey) {
  DDSTopic* plain = participant.strings("Plain");
  DDSStringDataReader* telling = make_reader(plain);
  DDS_DataReaderQos qos = keep_all_reader();
  ASSERT_EQ(DDSPropertyQosPolicyHelper::add_property(
                qos.property, "dds.data_reader.history.generate_not_alive_no_writers_sample", "0", false),
            DDS_RETCODE_OK);
  DDSStringDataReader* silent = make_reader(plain, qos);
  DDSStringDataWriter* plain_writer = make_writer(plain);
  EXPECT_EQ(write(plain_writer, "1"), DDS_RETCODE_OK);
  read_all(silent);
  read_all(telling);
  EXPECT_EQ(remove(plain_writer), DDS_RETCODE_OK);
  EXPECT_FALSE(has_data(silent));
  EXPECT_TRUE(has_data(telling));
  EXPECT_EQ(rows(take_all(silent)), (Strings{"1 read old no-writers 0 0 0 0 0"}));
  EXPECT_EQ(rows(take_all(telling)), (Strings{"1 read old no-writers 0 0 1 0 0", "- unread old no-writers 0 0 0 0 0"}));
}

TEST_P(States, UnregisteringDisposesTooWhereTheWriterLifecycleSaysSo) {
  DDS_DataWriterQos qos = reliable_writer();
  qos.writer_data_lifecycle.autodispose_unregistered_instances = true;
  auto* one = make_writer<DDSKeyedStringDataWriter>(topic, qos);
  EXPECT_EQ(write(one, "a", "1"), DDS_RETCODE_OK);
  EXPECT_EQ(unregister(one, "a"), DDS_RETCODE_OK);
  EXPECT_EQ(rows(take_all(reader)), (Strings{"1 unread new disposed 0 0 1 0 0", "- unread new disposed 0 0 0 0 0"}));
}

TEST_P(States, AWriterChecksThatTheHandleIsTheInstanceOfTheData) {
  auto* one = make_writer<DDSKeyedStringDataWriter>(topic);
  std::string a = "a", b = "b", value = "v";
  const DDS_InstanceHandle_t of_a = one->register_instance(keyed(a, value));
  EXPECT_NE(of_a, DDS_HANDLE_NIL);
  EXPECT_EQ(one->lookup_instance(keyed(a, value)), of_a);
  EXPECT_EQ(one->write(keyed(a, value), of_a), DDS_RETCODE_OK);
  const LogLines log;
  EXPECT_EQ(one->write(keyed(b, value), of_a), DDS_RETCODE_BAD_PARAMETER);
  EXPECT_EQ(one->dispose(keyed(b, value), of_a), DDS_RETCODE_BAD_PARAMETER);
  EXPECT_EQ(one->unregister_instance(keyed(b, value), of_a), DDS_RETCODE_BAD_PARAMETER);
  EXPECT_EQ(take_all(reader).size(), 1u);
}

TEST_P(States, ATypeWithoutKeyHasNothingToDisposeOrUnregister) {
  DDSTopic* plain = participant.strings("Plain");
  DDSStringDataReader* plain_reader = make_reader(plain);
  DDSStringDataWriter* plain_writer = make_writer(plain);
  EXPECT_EQ(write(plain_writer, "1"), DDS_RETCODE_OK);
  EXPECT_EQ(plain_writer->dispose("1", DDS_HANDLE_NIL), DDS_RETCODE_OK);
  EXPECT_EQ(plain_writer->unregister_instance("1", DDS_HANDLE_NIL), DDS_RETCODE_OK);
  EXPECT_EQ(plain_writer->register_instance("1"), DDS_HANDLE_NIL);
  EXPECT_EQ(rows(take_all(plain_reader)), (Strings{"1 unread new alive 0 0 0 0 0"}));
}

RUN_OVER_EVERY_CARRIER(States);

}  // namespace
}  // namespace behaviour
