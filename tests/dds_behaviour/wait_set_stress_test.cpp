// Hand-overs between threads: one that is missed between the evaluation of the conditions and the sleep hangs.

#include <memory>
#include <random>

#include "behaviour.hpp"

namespace behaviour {
namespace {

using WaitSetStress = OneTopic;
using HandOvers = OneTopicOver;

void wait_for_one(DDSWaitSet& waitset, DDSConditionSeq& active) {
  ASSERT_EQ(waitset.wait(active, DDS_DURATION_INFINITE), DDS_RETCODE_OK);
  ASSERT_EQ(active.length(), 1);
}

TEST_F(WaitSetStress, GuardConditionsPingPong) {
  const int count = scaled(200000);
  DDSGuardCondition ping, pong;
  const auto play = [&](DDSGuardCondition& mine, DDSGuardCondition& yours, bool serve) {
    DDSWaitSet waitset;
    DDSConditionSeq active;
    ASSERT_EQ(waitset.attach_condition(&mine), DDS_RETCODE_OK);
    if (serve) { yours.set_trigger_value(true); }
    for (int i = 0; i < count; ++i) {
      ASSERT_NO_FATAL_FAILURE(wait_for_one(waitset, active));
      mine.set_trigger_value(false);
      if (!serve || i + 1 < count) { yours.set_trigger_value(true); }
    }
  };
  Thread second([&] { play(ping, pong, false); });
  play(pong, ping, true);
}

TEST_P(HandOvers, SamplesPingPong) {
  const int count = scaled(100000);
  DDSTopic* topics[] = {participant.strings("Ping"), participant.strings("Pong")};
  DDSStringDataReader* readers[] = {make_reader(topics[0]), make_reader(topics[1])};
  const auto play = [&](int mine, bool serve) {
    DDSStringDataWriter* writer = make_writer(topics[1 - mine]);
    const AsItComes as_it_comes;
    DDSReadCondition* condition =
        readers[mine]->create_readcondition(DDS_NOT_READ_SAMPLE_STATE, DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE);
    DDSWaitSet waitset;
    DDSConditionSeq active;
    ASSERT_EQ(waitset.attach_condition(condition), DDS_RETCODE_OK);
    if (serve) { ASSERT_EQ(write(writer, "0"), DDS_RETCODE_OK); }
    for (int i = 0; i < count; ++i) {
      ASSERT_NO_FATAL_FAILURE(wait_for_one(waitset, active));
      ASSERT_EQ(take_values(readers[mine]), Strings{std::to_string(i)});
      const int next = serve ? i + 1 : i;
      if (next < count) { ASSERT_EQ(write(writer, std::to_string(next)), DDS_RETCODE_OK); }
    }
    EXPECT_EQ(readers[mine]->delete_readcondition(condition), DDS_RETCODE_OK);
  };
  Thread second([&] { play(0, false); });
  play(1, true);
}

// As a requester does: a condition and a wait set for every sample, made at whatever moment of its arrival.
TEST_P(HandOvers, ConditionsThatComeAndGoMissNothing) {
  const int count = scaled(40000);
  DDSStringDataReader* reader = make_reader(topic, keep_all_reader(2));
  ASSERT_EQ(reader->create_index("Index"), DDS_RETCODE_OK);
  Thread writing([&] {
    DDSStringDataWriter* writer = make_writer(topic);
    for (int i = 1; i <= count; ++i) { EXPECT_EQ(answer(writer, static_cast<std::uint32_t>(i), "x"), DDS_RETCODE_OK); }
  });
  const AsItComes as_it_comes;
  DDSConditionSeq active;
  for (int i = 1; i <= count; ++i) {
    DDSReadCondition* condition =
        reader->create_index_condition(DDS_ANY_SAMPLE_STATE, DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE, "Index",
                                       key_of(static_cast<std::uint32_t>(i)));
    ASSERT_NE(condition, nullptr);
    DDSWaitSet waitset;
    ASSERT_EQ(waitset.attach_condition(condition), DDS_RETCODE_OK);
    ASSERT_NO_FATAL_FAILURE(wait_for_one(waitset, active));
    ASSERT_EQ(collect(reader, true, 1, {}, condition).size(), 1u);
    ASSERT_EQ(reader->delete_readcondition(condition), DDS_RETCODE_OK);
  }
}

TEST_F(WaitSetStress, AttachingDetachingAndDeletingDisturbNoWaitingThread) {
  const int count = scaled(30000);
  DDSStringDataReader* reader = make_reader(topic);
  DDSWaitSet waitset;
  DDSGuardCondition stop;
  ASSERT_EQ(waitset.attach_condition(&stop), DDS_RETCODE_OK);
  Thread waiting([&] {
    DDSConditionSeq active;
    while (!stop.get_trigger_value()) {
      EXPECT_EQ(waitset.wait(active, DDS_DURATION_INFINITE), DDS_RETCODE_OK);
      EXPECT_GE(active.length(), 1);
    }
  });
  const auto churn = [&](unsigned int seed) {
    std::mt19937 random(seed);
    DDSStringDataWriter* writer = make_writer(topic);
    DDSGuardCondition kept;
    for (int i = 0; i < count; ++i) {
      auto guard = std::make_unique<DDSGuardCondition>();
      DDSReadCondition* unread =
          reader->create_readcondition(DDS_NOT_READ_SAMPLE_STATE, DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE);
      EXPECT_EQ(waitset.attach_condition(guard.get()), DDS_RETCODE_OK);
      EXPECT_EQ(waitset.attach_condition(unread), DDS_RETCODE_OK);
      EXPECT_EQ(waitset.attach_condition(&kept), DDS_RETCODE_OK);
      switch (random() % 4) {
        case 0:
          guard->set_trigger_value(true);
          break;
        case 1:
          kept.set_trigger_value(i % 2 == 0);
          break;
        case 2:
          EXPECT_EQ(write(writer, "x"), DDS_RETCODE_OK);
          break;
        default:
          take_all(reader);
      }
      EXPECT_EQ(waitset.detach_condition(&kept), DDS_RETCODE_OK);
      EXPECT_EQ(reader->delete_readcondition(unread), DDS_RETCODE_OK);
    }
  };
  Thread second([&] { churn(1); });
  churn(2);
  second.join();
  stop.set_trigger_value(true);
}

RUN_OVER_EVERY_CARRIER(HandOvers);

}  // namespace
}  // namespace behaviour
