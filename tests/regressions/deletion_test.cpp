#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <thread>
#include <utility>

#include "regressions/participant.hpp"

namespace regressions {
namespace {

class Deletion : public Participant {};

/// Once, lets something happen to the other reader, which the same write is going to tell next.
struct MeddlingListener : DDSDataReaderListener {
  void on_data_available(DDSDataReader* told) override {
    if (++calls == 1) { meddle(told == readers[0] ? readers[1] : readers[0]); }
  }
  std::function<void(DDSDataReader*&)> meddle;
  DDSDataReader* readers[2] = {};
  int calls = 0;
};

TEST_F(Deletion, AListenerMayDeleteOrSilenceAReaderThatTheSameWriteIsGoingToTellNext) {
  auto* writer = DDSStringDataWriter::narrow(create_writer(strings));
  for (const bool deletes : {true, false}) {
    MeddlingListener listener;
    bool meddled = false;
    listener.meddle = [&](DDSDataReader*& other) {
      if (deletes) {
        meddled = participant->delete_datareader(std::exchange(other, nullptr)) == DDS_RETCODE_OK;
      } else {
        other->set_listener(nullptr, DDS_STATUS_MASK_NONE);
        meddled = (other->get_status_changes() & DDS_DATA_AVAILABLE_STATUS) != 0;  // it stays changed
      }
    };
    for (DDSDataReader*& reader : listener.readers) {
      reader = create_reader(strings, reliable_reader_qos(), &listener);
    }
    const char* sample = "told once";
    EXPECT_EQ(writer->write(sample, DDS_HANDLE_NIL), DDS_RETCODE_OK);
    EXPECT_TRUE(meddled);
    EXPECT_EQ(listener.calls, 1);
    for (DDSDataReader* reader : listener.readers) {
      if (reader != nullptr) { EXPECT_EQ(participant->delete_datareader(reader), DDS_RETCODE_OK); }
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
    lent.set_value();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    if (returns) { reader->return_loan(samples, infos); }
    kept.swap(samples);
    kept_infos.swap(infos);
  }
  std::promise<void> lent;
  bool returns = true;
  DDS_StringSeq kept;
  DDS_SampleInfoSeq kept_infos;
};

TEST_F(Deletion, AReaderWhoseListenerIsAboutToReturnItsLoanIsDeletedWhenTheListenerHasReturned) {
  LendingListener listener;
  DDSDataReader* reader = create_reader(strings, reliable_reader_qos(), &listener);
  auto* writer = DDSStringDataWriter::narrow(create_writer(strings));
  const char* sample = "lent";
  std::thread writing([&] { EXPECT_EQ(writer->write(sample, DDS_HANDLE_NIL), DDS_RETCODE_OK); });
  listener.lent.get_future().wait();
  EXPECT_EQ(participant->delete_datareader(reader), DDS_RETCODE_OK);
  writing.join();
}

TEST_F(Deletion, AReaderThatCannotBeDeletedForALoanGoesOnTellingItsListener) {
  LendingListener listener;
  listener.returns = false;
  auto* reader = DDSStringDataReader::narrow(create_reader(strings, reliable_reader_qos(), &listener));
  auto* writer = DDSStringDataWriter::narrow(create_writer(strings));
  const char* sample = "lent";
  EXPECT_EQ(writer->write(sample, DDS_HANDLE_NIL), DDS_RETCODE_OK);
  EXPECT_EQ(participant->delete_datareader(reader), DDS_RETCODE_PRECONDITION_NOT_MET);
  EXPECT_EQ(reader->return_loan(listener.kept, listener.kept_infos), DDS_RETCODE_OK);

  listener.lent = std::promise<void>();
  listener.returns = true;
  EXPECT_EQ(writer->write(sample, DDS_HANDLE_NIL), DDS_RETCODE_OK);
  EXPECT_EQ(listener.lent.get_future().wait_for(std::chrono::seconds(0)), std::future_status::ready);
}

// Seen by the sanitizers: a thread destroyed its message with the pool that the other had just ended.
TEST_F(Deletion, ThreadsMayReturnTheLastLoansOfADeletedWriterAtTheSameTime) {
  constexpr int rounds = 200;
  for (int round = 0; round < rounds; ++round) {
    auto* writer = DDSStringDataWriter::narrow(create_writer(strings));
    DDSDataReader* readers[2] = {create_reader(strings, reliable_reader_qos()),
                                 create_reader(strings, reliable_reader_qos())};
    DDS_StringSeq samples[2];
    DDS_SampleInfoSeq infos[2];
    for (int i = 0; i < 2; ++i) {
      const char* sample = "lent";
      ASSERT_EQ(writer->write(sample, DDS_HANDLE_NIL), DDS_RETCODE_OK);
      for (int k = 0; k < 2; ++k) {  // each message is lent by one reader alone
        auto* reader = DDSStringDataReader::narrow(readers[k]);
        DDS_StringSeq taken;
        DDS_SampleInfoSeq taken_infos;
        ASSERT_EQ(reader->take(k == i ? samples[k] : taken, k == i ? infos[k] : taken_infos, 1, DDS_ANY_SAMPLE_STATE,
                               DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE),
                  DDS_RETCODE_OK);
        if (k != i) { ASSERT_EQ(reader->return_loan(taken, taken_infos), DDS_RETCODE_OK); }
      }
    }
    ASSERT_EQ(participant->delete_datawriter(writer), DDS_RETCODE_OK);
    std::atomic<int> ready{0};
    const auto give_back = [&](int i) {
      ++ready;
      while (ready != 2) {}
      EXPECT_EQ(DDSStringDataReader::narrow(readers[i])->return_loan(samples[i], infos[i]), DDS_RETCODE_OK);
    };
    std::thread other([&] { give_back(1); });
    give_back(0);
    other.join();
    for (DDSDataReader* reader : readers) { ASSERT_EQ(participant->delete_datareader(reader), DDS_RETCODE_OK); }
  }
}

}  // namespace
}  // namespace regressions
