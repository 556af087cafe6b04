#include <atomic>
#include <thread>

#include "regressions/participant.hpp"

namespace regressions {
namespace {

class Deletion : public Participant {};

/// Deletes the other reader when it is called first.
struct DeletingListener : DDSDataReaderListener {
  void on_data_available(DDSDataReader* told) override {
    ++calls;
    DDSDataReader*& other = told == readers[0] ? readers[1] : readers[0];
    if (other == nullptr) { return; }
    outcome = participant->delete_datareader(other);
    other = nullptr;
  }
  DDSDomainParticipant* participant = nullptr;
  DDSDataReader* readers[2] = {};
  DDS_ReturnCode_t outcome = DDS_RETCODE_ERROR;
  int calls = 0;
};

TEST_F(Deletion, AListenerMayDeleteAReaderThatTheSameWriteIsGoingToTellNext) {
  DeletingListener listener;
  listener.participant = participant;
  for (DDSDataReader*& reader : listener.readers) { reader = create_reader(strings, reliable_reader_qos(), &listener); }
  auto* writer = DDSStringDataWriter::narrow(create_writer(strings));
  const char* sample = "told once";
  EXPECT_EQ(writer->write(sample, DDS_HANDLE_NIL), DDS_RETCODE_OK);
  EXPECT_EQ(listener.outcome, DDS_RETCODE_OK);
  EXPECT_EQ(listener.calls, 1);
}

/// Takes the listener away from the other reader when it is called first.
struct SilencingListener : DDSDataReaderListener {
  void on_data_available(DDSDataReader* told) override {
    ++calls;
    DDSDataReader* other = told == readers[0] ? readers[1] : readers[0];
    other->set_listener(nullptr, DDS_STATUS_MASK_NONE);
    changes_of_other = other->get_status_changes();
  }
  DDSDataReader* readers[2] = {};
  DDS_StatusMask changes_of_other = 0;
  int calls = 0;
};

TEST_F(Deletion, AStatusThatAListenerWasToBeToldStaysChangedWhenTheListenerIsTakenAwayBefore) {
  SilencingListener listener;
  for (DDSDataReader*& reader : listener.readers) { reader = create_reader(strings, reliable_reader_qos(), &listener); }
  auto* writer = DDSStringDataWriter::narrow(create_writer(strings));
  const char* sample = "told once";
  EXPECT_EQ(writer->write(sample, DDS_HANDLE_NIL), DDS_RETCODE_OK);
  EXPECT_EQ(listener.calls, 1);
  EXPECT_NE(listener.changes_of_other & DDS_DATA_AVAILABLE_STATUS, 0u);
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
