// Sample, view and instance states, generation counts and ranks, against tables worked out by hand.

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
/// The table of each instance, keyed by the handle; samples of one instance must be consecutive.
std::map<DDS_InstanceHandle_t, Rows> by_instance(const std::vector<Received>& received) {
  std::map<DDS_InstanceHandle_t, Rows> tables;
  DDS_InstanceHandle_t current = DDS_HANDLE_NIL;
  for (const Received& sample : received) {
    if (sample.info.instance_handle != current) {
      current = sample.info.instance_handle;
      EXPECT_EQ(tables.count(current), 0u) << "samples of one instance are consecutive";
    }
    tables[current].push_back(row_of(sample));
  }
  return tables;
}
Rows rows(const std::vector<Received>& received) {
  Rows result;
  for (const Received& sample : received) { result.push_back(row_of(sample)); }
  return result;
}

class States : public ::testing::Test {
 protected:
  DDSKeyedStringDataWriter* writer() { return make_writer<DDSKeyedStringDataWriter>(topic); }
  DDSKeyedStringDataReader* reader_with_property(const char* value) {
    DDS_DataReaderQos qos = keep_all_reader();
    EXPECT_EQ(DDSPropertyQosPolicyHelper::add_property(
                  qos.property, "dds.data_reader.history.generate_not_alive_no_writers_sample", value, false),
              DDS_RETCODE_OK);
    return make_reader<DDSKeyedStringDataReader>(topic, qos);
  }
  DDS_InstanceHandle_t handle(std::string key) {
    std::string none;
    return reader->lookup_instance(keyed(key, none));
  }

  Participant participant;
  DDSTopic* topic = participant.keyed_strings("Topic");
  DDSKeyedStringDataReader* reader = make_reader<DDSKeyedStringDataReader>(topic);
};

TEST_F(States, KeysKeepInstancesApart) {
  DDSKeyedStringDataWriter* one = writer();
  for (const char* key : {"a", "b", "", "a", "b"}) { EXPECT_EQ(write(one, key, key), DDS_RETCODE_OK); }
  EXPECT_EQ(handle("unknown"), DDS_HANDLE_NIL);
  EXPECT_NE(handle("a"), handle("b"));
  const std::vector<Received> received = take_all(reader);
  const auto tables = by_instance(received);
  ASSERT_EQ(tables.size(), 3u);
  EXPECT_EQ(tables.at(handle("a")),
            (Rows{{"a", fresh, new_view, alive, 0, 0, 1, 0, 0}, {"a", fresh, new_view, alive, 0, 0, 0, 0, 0}}));
  EXPECT_EQ(tables.at(handle("b")).size(), 2u);
  EXPECT_EQ(tables.at(handle("")), (Rows{{"", fresh, new_view, alive, 0, 0, 0, 0, 0}}));
  for (const Received& sample : received) {
    EXPECT_EQ(sample.key, sample.value);
    EXPECT_EQ(sample.info.instance_handle, handle(sample.key));
  }
}

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

TEST_F(States, ReadingMarksSamplesReadAndTheirInstanceNoLongerNew) {
  DDSKeyedStringDataWriter* one = writer();
  EXPECT_EQ(write(one, "a", "1"), DDS_RETCODE_OK);
  EXPECT_EQ(rows(read_all(reader)), (Rows{{"1", fresh, new_view, alive, 0, 0, 0, 0, 0}}));
  EXPECT_EQ(write(one, "a", "2"), DDS_RETCODE_OK);
  EXPECT_EQ(rows(read_all(reader)),
            (Rows{{"1", seen, old_view, alive, 0, 0, 1, 0, 0}, {"2", fresh, old_view, alive, 0, 0, 0, 0, 0}}));
  EXPECT_EQ(write(one, "a", "3"), DDS_RETCODE_OK);
  EXPECT_EQ(rows(collect(reader, false, DDS_LENGTH_UNLIMITED, {DDS_NOT_READ_SAMPLE_STATE})),
            (Rows{{"3", fresh, old_view, alive, 0, 0, 0, 0, 0}}));
  EXPECT_EQ(rows(collect(reader, true, 2, {DDS_READ_SAMPLE_STATE})),
            (Rows{{"1", seen, old_view, alive, 0, 0, 1, 0, 0}, {"2", seen, old_view, alive, 0, 0, 0, 0, 0}}));
  EXPECT_EQ(rows(take_all(reader)), (Rows{{"3", seen, old_view, alive, 0, 0, 0, 0, 0}}));
  EXPECT_EQ(rows(take_all(reader)), Rows{});
}

TEST_F(States, MasksSelectByViewAndInstanceState) {
  DDSKeyedStringDataWriter* one = writer();
  EXPECT_EQ(write(one, "old", "1"), DDS_RETCODE_OK);
  read_all(reader);
  EXPECT_EQ(write(one, "new", "2"), DDS_RETCODE_OK);
  EXPECT_EQ(write(one, "gone", "3"), DDS_RETCODE_OK);
  EXPECT_EQ(dispose(one, "gone"), DDS_RETCODE_OK);
  const auto select = [&](DDS_ViewStateMask view, DDS_InstanceStateMask instance) {
    return values(collect(reader, false, DDS_LENGTH_UNLIMITED, {DDS_ANY_SAMPLE_STATE, view, instance}));
  };
  EXPECT_EQ(select(old_view, DDS_ANY_INSTANCE_STATE), Strings{"1"});
  EXPECT_EQ(select(new_view, alive), Strings{"2"});
  EXPECT_EQ(select(new_view, DDS_NOT_ALIVE_INSTANCE_STATE), (Strings{"3", ""}));
  EXPECT_EQ(select(new_view, DDS_ANY_INSTANCE_STATE), Strings{}) << "all have been accessed";
  EXPECT_EQ(select(DDS_ANY_VIEW_STATE, disposed), (Strings{"3", ""}));
  EXPECT_EQ(select(DDS_ANY_VIEW_STATE, no_writers), Strings{});
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

TEST_F(States, AnInstanceWithoutWritersIsRebornAsANewGenerationToo) {
  DDSKeyedStringDataWriter* one = writer();
  DDSKeyedStringDataWriter* other = writer();
  EXPECT_EQ(write(one, "a", "1"), DDS_RETCODE_OK);
  EXPECT_EQ(write(other, "a", "2"), DDS_RETCODE_OK);
  EXPECT_EQ(unregister(one, "a"), DDS_RETCODE_OK);
  EXPECT_EQ(rows(read_all(reader)),
            (Rows{{"1", fresh, new_view, alive, 0, 0, 1, 0, 0}, {"2", fresh, new_view, alive, 0, 0, 0, 0, 0}}));
  EXPECT_EQ(unregister(other, "a"), DDS_RETCODE_OK);
  EXPECT_EQ(rows(read_all(reader)), (Rows{{"1", seen, old_view, no_writers, 0, 0, 2, 0, 0},
                                          {"2", seen, old_view, no_writers, 0, 0, 1, 0, 0},
                                          {"-", fresh, old_view, no_writers, 0, 0, 0, 0, 0}}));
  EXPECT_EQ(write(one, "a", "3"), DDS_RETCODE_OK);
  EXPECT_EQ(dispose(one, "a"), DDS_RETCODE_OK);
  EXPECT_EQ(write(other, "a", "4"), DDS_RETCODE_OK);
  EXPECT_EQ(rows(take_all(reader)), (Rows{{"1", seen, new_view, alive, 0, 0, 5, 2, 2},
                                          {"2", seen, new_view, alive, 0, 0, 4, 2, 2},
                                          {"-", seen, new_view, alive, 0, 0, 3, 2, 2},
                                          {"3", fresh, new_view, alive, 0, 1, 2, 1, 1},
                                          {"-", fresh, new_view, alive, 0, 1, 1, 1, 1},
                                          {"4", fresh, new_view, alive, 1, 1, 0, 0, 0}}));
}

TEST_F(States, AVanishedWriterLeavesItsInstancesWithoutWriters) {
  DDSKeyedStringDataWriter* vanishing = writer();
  DDSKeyedStringDataWriter* staying = writer();
  EXPECT_EQ(write(vanishing, "only its own", "1"), DDS_RETCODE_OK);
  EXPECT_EQ(write(vanishing, "shared", "2"), DDS_RETCODE_OK);
  EXPECT_EQ(write(staying, "shared", "3"), DDS_RETCODE_OK);
  EXPECT_EQ(remove(vanishing), DDS_RETCODE_OK);
  const DDS_InstanceHandle_t own = handle("only its own"), shared = handle("shared");
  const auto tables = by_instance(read_all(reader));
  EXPECT_EQ(tables.at(own), (Rows{{"1", fresh, new_view, no_writers, 0, 0, 1, 0, 0},
                                  {"-", fresh, new_view, no_writers, 0, 0, 0, 0, 0}}));
  EXPECT_EQ(tables.at(shared),
            (Rows{{"2", fresh, new_view, alive, 0, 0, 1, 0, 0}, {"3", fresh, new_view, alive, 0, 0, 0, 0, 0}}));
}

TEST_F(States, ThePropertyDecidesWhetherAVanishedWriterLeavesASampleWithoutData) {
  DDSKeyedStringDataReader* silent = reader_with_property("0");
  DDSKeyedStringDataReader* telling = reader_with_property("1");
  DDSKeyedStringDataWriter* one = writer();
  EXPECT_EQ(write(one, "a", "1"), DDS_RETCODE_OK);
  read_all(silent);
  read_all(telling);
  EXPECT_EQ(remove(one), DDS_RETCODE_OK);
  EXPECT_FALSE(has_data(silent));
  EXPECT_TRUE(has_data(telling));
  EXPECT_EQ(rows(take_all(silent)), (Rows{{"1", seen, old_view, no_writers, 0, 0, 0, 0, 0}}));
  EXPECT_EQ(rows(take_all(telling)), (Rows{{"1", seen, old_view, no_writers, 0, 0, 1, 0, 0},
                                           {"-", fresh, old_view, no_writers, 0, 0, 0, 0, 0}}));
}

TEST_F(States, ThePropertyHoldsForATypeWithoutKeyAsWell) {
  DDSTopic* plain = participant.strings("Plain");
  DDSStringDataReader* telling = make_reader(plain);
  DDS_DataReaderQos qos = keep_all_reader();
  ASSERT_EQ(DDSPropertyQosPolicyHelper::add_property(
                qos.property, "dds.data_reader.history.generate_not_alive_no_writers_sample", "0", false),
            DDS_RETCODE_OK);
  DDSStringDataReader* silent = make_reader(plain, qos);
  DDSStringDataWriter* plain_writer = make_writer(plain);
  EXPECT_EQ(write(plain_writer, "1"), DDS_RETCODE_OK);
  EXPECT_EQ(remove(plain_writer), DDS_RETCODE_OK);
  EXPECT_EQ(rows(take_all(silent)), (Rows{{"1", fresh, new_view, no_writers, 0, 0, 0, 0, 0}}));
  EXPECT_EQ(rows(take_all(telling)), (Rows{{"1", fresh, new_view, no_writers, 0, 0, 1, 0, 0},
                                           {"-", fresh, new_view, no_writers, 0, 0, 0, 0, 0}}));
}

TEST_F(States, ADisposedInstanceStaysDisposedWhenItsWritersGo) {
  DDSKeyedStringDataWriter* one = writer();
  EXPECT_EQ(write(one, "a", "1"), DDS_RETCODE_OK);
  EXPECT_EQ(dispose(one, "a"), DDS_RETCODE_OK);
  EXPECT_EQ(remove(one), DDS_RETCODE_OK);
  EXPECT_EQ(rows(take_all(reader)),
            (Rows{{"1", fresh, new_view, disposed, 0, 0, 1, 0, 0}, {"-", fresh, new_view, disposed, 0, 0, 0, 0, 0}}));
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

TEST_F(States, ASampleWithoutDataCarriesTheKeyOfItsInstance) {
  DDSKeyedStringDataWriter* one = writer();
  EXPECT_EQ(write(one, "the key", "1"), DDS_RETCODE_OK);
  EXPECT_EQ(dispose(one, "the key"), DDS_RETCODE_OK);
  const std::vector<Received> received = take_all(reader);
  ASSERT_EQ(received.size(), 2u);
  EXPECT_FALSE(received[1].info.valid_data);
  EXPECT_EQ(received[1].key, "the key");
  EXPECT_EQ(received[1].info.instance_handle, received[0].info.instance_handle);
}

TEST_F(States, AnInstanceWithNeitherWritersNorSamplesIsForgotten) {
  DDSKeyedStringDataWriter* one = writer();
  EXPECT_EQ(write(one, "a", "1"), DDS_RETCODE_OK);
  EXPECT_EQ(unregister(one, "a"), DDS_RETCODE_OK);
  EXPECT_EQ(take_all(reader).size(), 2u);
  EXPECT_EQ(handle("a"), DDS_HANDLE_NIL);
  EXPECT_EQ(write(one, "a", "2"), DDS_RETCODE_OK);
  EXPECT_EQ(rows(take_all(reader)), (Rows{{"2", fresh, new_view, alive, 0, 0, 0, 0, 0}}));
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
