// Random operations on a keyed topic, against a model of the reader that is simple enough to be right.

#include <memory>
#include <random>

#include "reader_model.hpp"

namespace behaviour {
namespace {

class RandomOperations : public ::testing::TestWithParam<std::tuple<unsigned int, bool>> {
 protected:
  struct Condition {
    DDSReadCondition* condition;
    ReaderModel::Query query;
  };
  struct Lent {
    DDS_KeyedStringSeq data;
    DDS_SampleInfoSeq infos;
    std::vector<Received> received;
  };

  RandomOperations() {
    EXPECT_EQ(reader->create_index("Index"), DDS_RETCODE_OK);
    for (DDSKeyedStringDataWriter*& writer : writers) { writer = make_writer<DDSKeyedStringDataWriter>(topic); }
  }
  ~RandomOperations() override {
    while (!lent.empty()) { give_back(0); }
  }

  static DDS_DataReaderQos reader_qos() {
    DDS_DataReaderQos qos = keep_all_reader();
    if (!std::get<1>(GetParam())) {
      DDSPropertyQosPolicyHelper::add_property(
          qos.property, "dds.data_reader.history.generate_not_alive_no_writers_sample", "0", false);
    }
    return qos;
  }
  int pick(int below) { return static_cast<int>(random() % static_cast<unsigned int>(below)); }
  std::string pick_key() { return std::string(1, static_cast<char>('a' + pick(4))); }
  Selection pick_selection() {
    constexpr DDS_InstanceStateMask instance_states[] = {1, 2, 4, 6, 3, DDS_ANY_INSTANCE_STATE, DDS_ANY_INSTANCE_STATE};
    constexpr DDS_SampleStateMask two_states[] = {1, 2, 3, 0xffff, 0xffff};
    return {two_states[pick(5)], two_states[pick(5)], instance_states[pick(7)]};
  }

  /// One of three keys, some of which have been discarded; each is given up for the next in the end.
  std::uint32_t pick_related() { return oldest_key + static_cast<std::uint32_t>(pick(3)); }
  static DDS_WriteParams_t answering(std::uint32_t related) {
    DDS_WriteParams_t params;
    if (related != 0) { params.related_sample_identity.sequence_number = {0, related}; }
    return params;
  }
  void discard_one() {
    const std::uint32_t related = pick_related();
    ASSERT_EQ(reader->discard_index_key("Index", key_of(related)), DDS_RETCODE_OK);
    model.discard(related);
    ++oldest_key;
  }
  void write_one() {
    const int writer = pick(3);
    std::string key = pick_key(), value = std::to_string(step);
    const std::uint32_t related = pick_related();
    DDS_WriteParams_t params = answering(related);
    ASSERT_EQ(writers[writer]->write_w_params(keyed(key, value), params), DDS_RETCODE_OK);
    model.write(writer, key, value, related);
  }
  void dispose_or_unregister_one(bool disposes) {
    const int writer = pick(3);
    std::string key = pick_key(), none;
    const DDS_KeyedString instance = keyed(key, none);
    const std::uint32_t related = pick(2) == 0 ? pick_related() : 0;
    DDS_WriteParams_t params = answering(related);
    ASSERT_EQ(disposes ? writers[writer]->dispose_untyped(&instance, params)
                       : writers[writer]->unregister_untyped(&instance, params),
              DDS_RETCODE_OK);
    disposes ? model.dispose(writer, key, related) : model.unregister(writer, key, related);
  }
  void replace_writer() {
    const int writer = pick(3);
    ASSERT_EQ(remove(writers[writer]), DDS_RETCODE_OK);
    model.delete_writer(writer);
    writers[writer] = make_writer<DDSKeyedStringDataWriter>(topic);
  }
  void make_condition() {
    if (conditions.size() > 8) { return; }
    Condition made = {nullptr, {pick_selection(), pick(4) == 0 ? 0 : pick_related()}};
    const Selection& masks = made.query.selection;
    if (made.query.related == 0) {
      made.condition = reader->create_readcondition(masks.sample_states, masks.view_states, masks.instance_states);
    } else {
      made.condition = reader->create_index_condition(masks.sample_states, masks.view_states, masks.instance_states,
                                                      "Index", key_of(made.query.related));
    }
    ASSERT_NE(made.condition, nullptr);
    conditions.push_back(made);
  }
  void delete_condition() {
    if (conditions.empty()) { return; }
    const auto chosen = conditions.begin() + pick(static_cast<int>(conditions.size()));
    ASSERT_EQ(reader->delete_readcondition(chosen->condition), DDS_RETCODE_OK);
    conditions.erase(chosen);
  }
  void access(bool take) {
    const int max_samples = pick(2) == 0 ? DDS_LENGTH_UNLIMITED : 1 + pick(6);
    Condition by = {nullptr, {pick_selection(), 0}};
    if (!conditions.empty() && pick(2) == 0) {
      by = conditions[static_cast<std::size_t>(pick(static_cast<int>(conditions.size())))];
    }
    model.expect(collect(reader, take, max_samples, by.query.selection, by.condition), by.query, max_samples, take);
  }
  /// Loans, to be compared again much later.
  void lend() {
    auto loan = std::make_unique<Lent>();
    const ReaderModel::Query all;
    const DDS_ReturnCode_t retcode =
        reader->read(loan->data, loan->infos, 5, DDS_ANY_SAMPLE_STATE, DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE);
    ASSERT_EQ(retcode, model.count(all) > 0 ? DDS_RETCODE_OK : DDS_RETCODE_NO_DATA);
    for (int i = 0; i < loan->data.length(); ++i) {
      loan->received.push_back(copy_sample(loan->data[i], loan->infos[i]));
    }
    ASSERT_NO_FATAL_FAILURE(model.expect(loan->received, all, 5, false));
    if (retcode == DDS_RETCODE_OK) { lent.push_back(std::move(loan)); }
    if (lent.size() > 6) { give_back(static_cast<std::size_t>(pick(static_cast<int>(lent.size())))); }
  }
  void give_back(std::size_t which) {
    Lent& loan = *lent[which];
    for (int i = 0; i < loan.data.length(); ++i) {
      const Received now = copy_sample(loan.data[i], loan.infos[i]), then = loan.received[static_cast<std::size_t>(i)];
      EXPECT_EQ(std::tie(now.key, now.value, now.info.sample_state, now.info.view_state),
                std::tie(then.key, then.value, then.info.sample_state, then.info.view_state));
    }
    EXPECT_EQ(reader->return_loan(loan.data, loan.infos), DDS_RETCODE_OK);
    lent.erase(lent.begin() + static_cast<std::ptrdiff_t>(which));
  }

  void operate() {
    const int choice = pick(100);
    if (choice < 35) { return write_one(); }
    if (choice < 51) { return dispose_or_unregister_one(choice < 43); }
    if (choice < 54) { return replace_writer(); }
    if (choice < 60) { return make_condition(); }
    if (choice < 65) { return delete_condition(); }
    if (choice < 70) { return lend(); }
    if (choice < 72) { return discard_one(); }
    access(choice < 85);
  }
  void compare() {
    for (const Condition& each : conditions) {
      ASSERT_EQ(each.condition->get_trigger_value(), model.count(each.query) > 0);
    }
    DDS_LongLong discarded = -1;
    ASSERT_EQ(reader->get_discarded_sample_count(discarded), DDS_RETCODE_OK);
    ASSERT_EQ(discarded, model.discarded_count);
    for (std::string key : {"a", "b", "c", "d"}) {
      std::string none;
      ASSERT_EQ(reader->lookup_instance(keyed(key, none)) != DDS_HANDLE_NIL, model.knows(key)) << key;
    }
  }

  std::mt19937 random{std::get<0>(GetParam())};
  int step = 0;
  std::uint32_t oldest_key = 1;
  ReaderModel model{std::get<1>(GetParam())};
  Participant participant;
  DDSTopic* topic = participant.keyed_strings("Topic");
  DDSKeyedStringDataReader* reader = make_reader<DDSKeyedStringDataReader>(topic, reader_qos());
  DDSKeyedStringDataWriter* writers[3];
  std::vector<Condition> conditions;
  std::vector<std::unique_ptr<Lent>> lent;
};

TEST_P(RandomOperations, LeaveTheReaderAsTheModelSays) {
  const int steps = scaled(20000);
  for (step = 0; step < steps; ++step) {
    ASSERT_NO_FATAL_FAILURE(operate()) << "in step " << step;
    ASSERT_NO_FATAL_FAILURE(compare()) << "after step " << step;
  }
}
INSTANTIATE_TEST_SUITE_P(FromSeveralSeeds, RandomOperations,
                         ::testing::Combine(::testing::Values(1u, 2u, 3u, 4u, 5u), ::testing::Bool()));

}  // namespace
}  // namespace behaviour
