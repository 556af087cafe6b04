#include <atomic>
#include <chrono>
#include <functional>
#include <thread>
#include <utility>

#include "dds_behaviour/behaviour.hpp"

namespace regressions {
namespace {

using namespace behaviour;

using Deletion = OneTopicOver;
using DeletionWithinAWrite = OneTopic;

/// Once, lets something happen to the other reader, which the same write is going to tell next.
struct MeddlingListener : DDSDataReaderListener {
  void on_data_available(DDSDataReader* told) override {
    if (++calls == 1) { meddle(told == readers[0] ? readers[1] : readers[0]); }
  }
  std::function<void(DDSDataReader*&)> meddle;
  DDSDataReader* readers[2] = {};
  int calls = 0;
};

TEST_F(DeletionWithinAWrite, AListenerMayDeleteOrSilenceAReaderThatTheSameWriteIsGoingToTellNext) {
  auto* writer = make_writer(topic);
  for (const bool deletes : {true, false}) {
    MeddlingListener listener;
    bool meddled = false;
    listener.meddle = [&](DDSDataReader*& next) {
      if (deletes) {
        meddled = remove(std::exchange(next, nullptr)) == DDS_RETCODE_OK;
      } else {
        next->set_listener(nullptr, DDS_STATUS_MASK_NONE);
        meddled = (next->get_status_changes() & DDS_DATA_AVAILABLE_STATUS) != 0;  // it stays changed
      }
    };
    for (DDSDataReader*& reader : listener.readers) { reader = make_reader(topic, keep_all_reader(), &listener); }
    EXPECT_EQ(write(writer, "told once"), DDS_RETCODE_OK);
    EXPECT_TRUE(meddled);
    EXPECT_EQ(listener.calls, 1);
    for (DDSDataReader* reader : listener.readers) {
      if (reader != nullptr) { EXPECT_EQ(remove(reader), DDS_RETCODE_OK); }
    }
  }
}

/// Holds a loan while it is called, for as long as a deletion from another thread needs to begin.
struct LendingListener : DDSDataReaderListener {
  void on_data_available(DDSDataReader* told) override {
    auto* reader = DDSStringDataReader::narrow(told);
    DDS_StringSeq samples;
    DDS_SampleInfoSeq infos;
    reader->take(samples, infos, 1, DDS_ANY_SAMPLE_STATE, DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE);
    ++lent;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    if (returns) { reader->return_loan(samples, infos); }
    kept.swap(samples);
    kept_infos.swap(infos);
    ++done;
  }
  std::atomic<int> lent{0}, done{0};  // calls
  std::atomic<bool> returns{true};
  DDS_StringSeq kept;
  DDS_SampleInfoSeq kept_infos;
};

TEST_P(Deletion, AReaderWhoseListenerIsAboutToReturnItsLoanIsDeletedWhenTheListenerHasReturned) {
  LendingListener listener;
  DDSDataReader* reader = make_reader(topic, keep_all_reader(), &listener);
  auto* writer = make_writer(topic);
  Thread writing([&] { EXPECT_EQ(write(writer, "lent"), DDS_RETCODE_OK); });
  AWAIT_EQ(listener.lent.load(), 1);
  EXPECT_EQ(remove(reader), DDS_RETCODE_OK);
}

TEST_P(Deletion, AReaderThatCannotBeDeletedForALoanGoesOnTellingItsListener) {
  LendingListener listener;
  listener.returns = false;
  DDSStringDataReader* reader = make_reader(topic, keep_all_reader(), &listener);
  auto* writer = make_writer(topic);
  EXPECT_EQ(write(writer, "lent"), DDS_RETCODE_OK);
  AWAIT_EQ(listener.done.load(), 1);
  EXPECT_EQ(remove(reader), DDS_RETCODE_PRECONDITION_NOT_MET);
  EXPECT_EQ(reader->return_loan(listener.kept, listener.kept_infos), DDS_RETCODE_OK);

  listener.returns = true;
  EXPECT_EQ(write(writer, "lent"), DDS_RETCODE_OK);
  AWAIT_EQ(listener.done.load(), 2);
}

// Seen by the sanitizers: a thread destroyed its message with the pool that the other had just ended.
TEST_P(Deletion, ThreadsMayReturnTheLastLoansOfADeletedWriterAtTheSameTime) {
  const int rounds = carrier().in_process() ? 200 : 20;
  for (int round = 0; round < rounds; ++round) {
    auto* writer = make_writer(topic);
    DDSStringDataReader* readers[2] = {make_reader(topic), make_reader(topic)};
    DDS_StringSeq samples[2];
    DDS_SampleInfoSeq infos[2];
    for (int i = 0; i < 2; ++i) {
      ASSERT_EQ(write(writer, "lent"), DDS_RETCODE_OK);
      settle();
      for (int k = 0; k < 2; ++k) {  // each message is lent by one reader alone
        DDSStringDataReader* reader = readers[k];
        DDS_StringSeq taken;
        DDS_SampleInfoSeq taken_infos;
        ASSERT_EQ(reader->take(k == i ? samples[k] : taken, k == i ? infos[k] : taken_infos, 1, DDS_ANY_SAMPLE_STATE,
                               DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE),
                  DDS_RETCODE_OK);
        if (k != i) { ASSERT_EQ(reader->return_loan(taken, taken_infos), DDS_RETCODE_OK); }
      }
    }
    ASSERT_EQ(remove(writer), DDS_RETCODE_OK);
    std::atomic<int> ready{0};
    const auto give_back = [&](int i) {
      ++ready;
      while (ready != 2) {}
      EXPECT_EQ(readers[i]->return_loan(samples[i], infos[i]), DDS_RETCODE_OK);
    };
    Thread second([&] { give_back(1); });
    give_back(0);
    second.join();
    for (DDSDataReader* reader : readers) { ASSERT_EQ(remove(reader), DDS_RETCODE_OK); }
  }
}

RUN_OVER_EVERY_CARRIER(Deletion);

}  // namespace
}  // namespace regressions
