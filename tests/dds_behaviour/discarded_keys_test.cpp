// What a reader does with the samples of an index key that it no longer wants. How that works together with everything
// else is for the model of a reader to say.

#include <atomic>

#include "behaviour.hpp"

namespace behaviour {
namespace {

using DiscardedKeys = OneTopic;
using ArrivalsOfDiscardedKeys = OneTopicOver;

DDS_ReturnCode_t discard(DDSDataReader* reader, std::uint32_t number) {
  return reader->discard_index_key("Index", key_of(number));
}
DDS_LongLong discarded(DDSDataReader* reader) {
  settle();
  DDS_LongLong count = -1;
  EXPECT_EQ(reader->get_discarded_sample_count(count), DDS_RETCODE_OK);
  return count;
}
DDSStringDataReader* make_indexed_reader(DDSTopic* topic, const DDS_DataReaderQos& qos = keep_all_reader()) {
  DDSStringDataReader* reader = make_reader(topic, qos);
  EXPECT_EQ(reader->create_index("Index"), DDS_RETCODE_OK);
  return reader;
}

TEST_F(DiscardedKeys, HaveNoSamplesAndTellNobodyOfAny) {
  DDSStringDataReader* reader = make_indexed_reader(topic);
  DDSStringDataWriter* writer = make_writer(topic);
  for (int i = 0; i < 20; ++i) { EXPECT_EQ(answer(writer, 7, std::to_string(i)), DDS_RETCODE_OK); }
  DDSWaitSet waitset;
  DDSConditionSeq active;
  ASSERT_EQ(waitset.attach_condition(reader->get_statuscondition()), DDS_RETCODE_OK);
  EXPECT_EQ(waitset.wait(active, DDS_DURATION_ZERO), DDS_RETCODE_OK);

  for (const char* name : {"Other", "", static_cast<const char*>(nullptr)}) {
    EXPECT_EQ(reader->discard_index_key(name, key_of(7)), DDS_RETCODE_BAD_PARAMETER);
  }
  EXPECT_EQ(discarded(reader), 0);
  EXPECT_EQ(discard(reader, 7), DDS_RETCODE_OK);
  EXPECT_EQ(discarded(reader), 20);
  EXPECT_EQ(read_all(reader).size(), 0u);
  DDS_SubscriptionMatchedStatus read_it;
  EXPECT_EQ(reader->get_subscription_matched_status(read_it), DDS_RETCODE_OK);
  EXPECT_EQ(waitset.wait(active, DDS_DURATION_ZERO), DDS_RETCODE_TIMEOUT);

  EXPECT_EQ(answer(writer, 7, "late"), DDS_RETCODE_OK);
  EXPECT_EQ(waitset.wait(active, DDS_DURATION_ZERO), DDS_RETCODE_TIMEOUT);
  EXPECT_EQ(discarded(reader), 21);
  EXPECT_EQ(answer(writer, 8, "wanted"), DDS_RETCODE_OK);
  EXPECT_EQ(waitset.wait(active, DDS_DURATION_ZERO), DDS_RETCODE_OK);
  EXPECT_EQ(take_values(reader), Strings{"wanted"});
}

TEST_P(ArrivalsOfDiscardedKeys, TakeNoRoomAndCountAsNeitherLostNorRejected) {
  for (const DDS_DataReaderQos& qos : {keep_all_reader(1), best_effort_reader(1)}) {
    DDSStringDataReader* full = make_indexed_reader(topic, qos);
    DDSStringDataReader* roomy = make_reader(topic);
    DDSStringDataWriter* writer = make_writer(topic, reliable_writer(brief(DDS_DURATION_ZERO)));
    EXPECT_EQ(answer(writer, 1, "1"), DDS_RETCODE_OK);
    EXPECT_EQ(discard(full, 2), DDS_RETCODE_OK);
    EXPECT_EQ(answer(writer, 2, "2"), DDS_RETCODE_OK);
    EXPECT_EQ(discard(full, 1), DDS_RETCODE_OK);
    EXPECT_EQ(answer(writer, 3, "3"), DDS_RETCODE_OK) << "removing made room";
    EXPECT_EQ(take_values(full), Strings{"3"});
    EXPECT_EQ(take_values(roomy), (Strings{"1", "2", "3"}));
    EXPECT_EQ(full->get_status_changes() & (DDS_SAMPLE_LOST_STATUS | DDS_SAMPLE_REJECTED_STATUS), 0u);
    EXPECT_EQ(remove(full), DDS_RETCODE_OK);
  }
}

TEST_P(ArrivalsOfDiscardedKeys, LetAWriterGoOnThatWaitsForRoomForSuchASampleOrInstead) {
  DDSStringDataReader* full = make_indexed_reader(topic, keep_all_reader(1));
  DDSStringDataWriter* writer = make_writer(topic);
  std::uint32_t number = 0;
  for (const std::uint32_t later : {0u, 1u}) {  // discards the sample that is there, or the one that waits
    ASSERT_EQ(answer(writer, ++number, "first"), DDS_RETCODE_OK);
    std::atomic<bool> writing{false};
    Thread blocked([&, waiting = number + 1] {
      writing = true;
      EXPECT_EQ(answer(writer, waiting, "second"), DDS_RETCODE_OK);
    });
    while (!writing) { std::this_thread::yield(); }
    EXPECT_EQ(discard(full, number + later), DDS_RETCODE_OK);
    blocked.join();
    ++number;
    EXPECT_EQ(take_values(full), Strings{later == 0 ? "second" : "first"});
  }
}

// Threads discard keys while others write samples with them to a full reader and to a second one, in two steps: every
// sample is either taken or counted, and the second reader gets all.
TEST_P(ArrivalsOfDiscardedKeys, AreRefusedAtAnyPointOfADelivery) {
  const int each = scaled(20000);
  DDSStringDataReader* reader = make_indexed_reader(topic, keep_all_reader(4));
  DDSStringDataReader* roomy = make_reader(topic);
  std::atomic<std::uint32_t> newest{0};
  std::atomic<int> at_work{4};
  std::size_t taken = 0;
  {
    std::vector<Thread> threads;
    for (int w = 0; w < 2; ++w) {
      threads.emplace_back([&, writer = make_writer(topic)] {
        for (int i = 0; i < each; ++i) { EXPECT_EQ(answer(writer, ++newest, "value"), DDS_RETCODE_OK); }
        --at_work;
      });
    }
    for (const std::uint32_t parity : {0u, 1u}) {
      threads.emplace_back([&, parity] {
        for (std::uint32_t key = parity; key <= static_cast<std::uint32_t>(2 * each); key += 2) {
          while (newest + 1 < key) { std::this_thread::yield(); }
          EXPECT_EQ(discard(reader, key), DDS_RETCODE_OK);
        }
        --at_work;
      });
    }
    for (bool last = false; !last;) {
      last = at_work == 0;
      taken += take_all(reader).size();
    }
  }
  EXPECT_EQ(static_cast<DDS_LongLong>(taken) + discarded(reader), 2 * each);
  DDS_LongLong all = 0;
  for (std::size_t got = 1; got > 0; all += static_cast<DDS_LongLong>(got)) { got = take_all(roomy).size(); }
  EXPECT_EQ(all, 2 * each);
}

RUN_OVER_EVERY_CARRIER(ArrivalsOfDiscardedKeys);

}  // namespace
}  // namespace behaviour
