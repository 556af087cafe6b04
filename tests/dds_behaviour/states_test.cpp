// Sample, view and instance states, generation counts and ranks, against tables worked out by hand, where the model of
// a reader does not go.

#include <map>
#include <ostream>

#include "behaviour.hpp"
#include "log_lines.hpp"

namespace behaviour {
namespace {

constexpr DDS_SampleStateMask fresh = DDS_NOT_READ_SAMPLE_STATE, seen = DDS_READ_SAMPLE_STATE;
constexpr DDS_ViewStateMask new_view = DDS_NEW_VIEW_STATE, old_view = DDS_NOT_NEW_VIEW_STATE;
constexpr DDS_InstanceStateMask alive = DDS_ALIVE_INSTANCE_STATE, disposed = DDS_NOT_ALIVE_DISPOSED_INSTANCE_STATE,
                                no_writers = DDS_NOT_ALIVE_NO_WRITERS_INSTANCE_STATE;

/// A line of a table: what a read shows of one sample; a value of "-" stands for a sample without valid data.
struct Row {
  std::string value;
  DDS_SampleStateMask sample_state;
  DDS_ViewStateMask view_state;
  DDS_InstanceStateMask instance_state;
  int disposed_generations;
  int no_writers_generations;
  int sample_rank;
  int generation_rank;
  int absolute_generation_rank;

  auto fields() const {
    return std::tie(value, sample_state, view_state, instance_state, disposed_generations, no_writers_generations,
                    sample_rank, generation_rank, absolute_generation_rank);
  }
};
bool operator==(const Row& a, const Row& b) { return a.fields() == b.fields(); }
std::ostream& operator<<(std::ostream& out, const Row& row) {
  return out << '{' << row.value << ' ' << row.sample_state << ' ' << row.view_state << ' ' << row.instance_state
             << " generations " << row.disposed_generations << ' ' << row.no_writers_generations << " ranks "
             << row.sample_rank << ' ' << row.generation_rank << ' ' << row.absolute_generation_rank << '}';
}
using Rows = std::vector<Row>;

Row row_of(const Received& sample) {
  const DDS_SampleInfo& info = sample.info;
  return {info.valid_data ? sample.value : "-",
          info.sample_state,
          info.view_state,
          info.instance_state,
          info.disposed_generation_count,
          info.no_writers_generation_count,
          info.sample_rank,
          info.generation_rank,
          info.absolute_generation_rank};
}
Rows rows(const std::vector<Received>& received) {
  Rows result;
  for (const Received& sample : received) { result.push_back(row_of(sample)); }
  return result;
}

class States : public ::testing::Test {
 protected:
  DDSKeyedStringDataWriter* writer() { return make_writer<DDSKeyedStringDataWriter>(topic); }

  Participant participant;
  DDSTopic* topic = participant.keyed_strings("Topic");
  DDSKeyedStringDataReader* reader = make_reader<DDSKeyedStringDataReader>(topic);
};

TEST_F(States, KeyedOctetsKeepInstancesApart) {
  DDSTopic* octets = participant.topic<DDSKeyedOctetsTypeSupport>("Octets");
  auto* octets_reader = make_reader<DDSKeyedOctetsDataReader>(octets);
  auto* octets_writer = make_writer<DDSKeyedOctetsDataWriter>(octets);
  std::string a = "a", b = "b";
  DDS_Octet octet = 1;
  for (std::string* key : {&a, &b, &a}) {
    EXPECT_EQ(octets_writer->write({key->data(), 1, &octet}, DDS_HANDLE_NIL), DDS_RETCODE_OK);
  }
  DDS_KeyedOctetsSeq data;
  DDS_SampleInfoSeq infos;
  ASSERT_EQ(octets_reader->take(data, infos, DDS_LENGTH_UNLIMITED, DDS_ANY_SAMPLE_STATE, DDS_ANY_VIEW_STATE,
                                DDS_ANY_INSTANCE_STATE),
            DDS_RETCODE_OK);
  ASSERT_EQ(data.length(), 3);
  std::map<std::string, int> counts;
  for (int i = 0; i < 3; ++i) {
    ++counts[data[i].key];
    EXPECT_EQ(infos[i].instance_handle, octets_reader->lookup_instance(data[i]));
  }
  EXPECT_EQ(counts, (std::map<std::string, int>{{"a", 2}, {"b", 1}}));
  EXPECT_EQ(octets_reader->return_loan(data, infos), DDS_RETCODE_OK);
}

TEST_F(States, ADisposedInstanceIsRebornAsANewGeneration) {
  DDSKeyedStringDataWriter* one = writer();
  EXPECT_EQ(write(one, "a", "1"), DDS_RETCODE_OK);
  EXPECT_EQ(write(one, "a", "2"), DDS_RETCODE_OK);
  EXPECT_EQ(dispose(one, "a"), DDS_RETCODE_OK);
  EXPECT_EQ(rows(read_all(reader)), (Rows{{"1", fresh, new_view, disposed, 0, 0, 2, 0, 0},
                                          {"2", fresh, new_view, disposed, 0, 0, 1, 0, 0},
                                          {"-", fresh, new_view, disposed, 0, 0, 0, 0, 0}}));
  EXPECT_EQ(write(one, "a", "3"), DDS_RETCODE_OK);
  EXPECT_EQ(dispose(one, "a"), DDS_RETCODE_OK);
  EXPECT_EQ(write(one, "a", "4"), DDS_RETCODE_OK);
  // The first two samples end the collection: the newest of it is of generation 0, the newest held of generation 2.
  EXPECT_EQ(rows(collect(reader, false, 2)),
            (Rows{{"1", seen, new_view, alive, 0, 0, 1, 0, 2}, {"2", seen, new_view, alive, 0, 0, 0, 0, 2}}));
  EXPECT_EQ(rows(read_all(reader)), (Rows{{"1", seen, old_view, alive, 0, 0, 5, 2, 2},
                                          {"2", seen, old_view, alive, 0, 0, 4, 2, 2},
                                          {"-", seen, old_view, alive, 0, 0, 3, 2, 2},
                                          {"3", fresh, old_view, alive, 1, 0, 2, 1, 1},
                                          {"-", fresh, old_view, alive, 1, 0, 1, 1, 1},
                                          {"4", fresh, old_view, alive, 2, 0, 0, 0, 0}}));
}

TEST_F(States, ThePropertyDecidesWhetherAVanishedWriterLeavesASampleWithoutDataAlsoForATypeWithoutKey) {
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
  EXPECT_EQ(rows(take_all(silent)), (Rows{{"1", seen, old_view, no_writers, 0, 0, 0, 0, 0}}));
  EXPECT_EQ(rows(take_all(telling)), (Rows{{"1", seen, old_view, no_writers, 0, 0, 1, 0, 0},
                                           {"-", fresh, old_view, no_writers, 0, 0, 0, 0, 0}}));
}

TEST_F(States, UnregisteringDisposesTooWhereTheWriterLifecycleSaysSo) {
  DDS_DataWriterQos qos = reliable_writer();
  qos.writer_data_lifecycle.autodispose_unregistered_instances = true;
  auto* one = make_writer<DDSKeyedStringDataWriter>(topic, qos);
  EXPECT_EQ(write(one, "a", "1"), DDS_RETCODE_OK);
  EXPECT_EQ(unregister(one, "a"), DDS_RETCODE_OK);
  EXPECT_EQ(rows(take_all(reader)),
            (Rows{{"1", fresh, new_view, disposed, 0, 0, 1, 0, 0}, {"-", fresh, new_view, disposed, 0, 0, 0, 0, 0}}));
}

TEST_F(States, AWriterChecksThatTheHandleIsTheInstanceOfTheData) {
  DDSKeyedStringDataWriter* one = writer();
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

TEST_F(States, ATypeWithoutKeyHasNothingToDisposeOrUnregister) {
  DDSTopic* plain = participant.strings("Plain");
  DDSStringDataReader* plain_reader = make_reader(plain);
  DDSStringDataWriter* plain_writer = make_writer(plain);
  EXPECT_EQ(write(plain_writer, "1"), DDS_RETCODE_OK);
  EXPECT_EQ(plain_writer->dispose("1", DDS_HANDLE_NIL), DDS_RETCODE_OK);
  EXPECT_EQ(plain_writer->unregister_instance("1", DDS_HANDLE_NIL), DDS_RETCODE_OK);
  EXPECT_EQ(plain_writer->register_instance("1"), DDS_HANDLE_NIL);
  EXPECT_EQ(rows(take_all(plain_reader)), (Rows{{"1", fresh, new_view, alive, 0, 0, 0, 0, 0}}));
}

}  // namespace
}  // namespace behaviour
