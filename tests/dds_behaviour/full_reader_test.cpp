// What happens when a reader can hold no more: reliable writers wait, best-effort samples are dropped and counted,
// keep-last history makes room for itself.

#include <atomic>

#include "behaviour.hpp"

namespace behaviour {
namespace {

using FullReader = OneTopicOver;
using KeepLast = OneTopicOver;

DDS_SampleRejectedStatus rejected(DDSDataReader* reader) {
  settle();
  DDS_SampleRejectedStatus status;
  EXPECT_EQ(reader->get_sample_rejected_status(status), DDS_RETCODE_OK);
  return status;
}
DDS_SampleLostStatus lost(DDSDataReader* reader) {
  settle();
  DDS_SampleLostStatus status;
  EXPECT_EQ(reader->get_sample_lost_status(status), DDS_RETCODE_OK);
  return status;
}

TEST_P(FullReader, TimesTheWriterOutAndThenNoReaderHasGotTheSample) {
  DDSStringDataReader* before = make_reader(topic);
  DDSStringDataReader* full = make_reader(other.strings("Topic"), keep_all_reader(2));
  DDSStringDataReader* after = make_reader(topic);
  DDSStringDataReader* careless = make_reader(topic, best_effort_reader());
  DDSStringDataWriter* writer = make_writer(topic, reliable_writer(brief(milliseconds(20))));
  EXPECT_EQ(write(writer, "1"), DDS_RETCODE_OK);
  EXPECT_EQ(write(writer, "2"), DDS_RETCODE_OK);
  DDS_WriteParams_t params;
  EXPECT_EQ(writer->write_w_params("lost", params), DDS_RETCODE_TIMEOUT);
  EXPECT_EQ(values(read_all(full)), (Strings{"1", "2"}));
  EXPECT_EQ(write(writer, "lost"), DDS_RETCODE_TIMEOUT) << "reading makes no room";
  EXPECT_EQ(rejected(full).total_count, 0) << "the writer was told instead";

  EXPECT_EQ(values(collect(full, true, 1)), Strings{"1"});
  EXPECT_EQ(writer->write_w_params("3", params), DDS_RETCODE_OK);
  EXPECT_EQ(number(params.identity), 3u) << "a failed write takes no sequence number";
  for (DDSStringDataReader* reader : {before, after, careless}) {
    EXPECT_EQ(take_values(reader), (Strings{"1", "2", "3"}));
  }
  EXPECT_EQ(take_values(full), (Strings{"2", "3"}));
}

TEST_P(FullReader, IsFullForOneInstanceWhileOthersHaveRoomAndHoldsNoMoreInstancesThanItsLimit) {
  topic = participant.keyed_strings("Keyed");
  DDS_DataReaderQos qos = keep_all_reader();
  qos.resource_limits.max_samples_per_instance = 2;
  qos.resource_limits.max_instances = 2;
  auto* reader = make_reader<DDSKeyedStringDataReader>(topic, qos);
  auto* writer = make_writer<DDSKeyedStringDataWriter>(topic, reliable_writer(brief(DDS_DURATION_ZERO)));
  EXPECT_EQ(write(writer, "a", "1"), DDS_RETCODE_OK);
  EXPECT_EQ(write(writer, "a", "2"), DDS_RETCODE_OK);
  EXPECT_EQ(write(writer, "a", "3"), DDS_RETCODE_TIMEOUT);
  EXPECT_EQ(write(writer, "b", "4"), DDS_RETCODE_OK);
  EXPECT_EQ(write(writer, "c", "5"), DDS_RETCODE_TIMEOUT);
  EXPECT_EQ(unregister(writer, "b"), DDS_RETCODE_OK);
  const std::vector<Received> received = take_all(reader);
  EXPECT_EQ(values(received), (Strings{"1", "2", "4", ""}));
  EXPECT_EQ(number(received[2].info.sample_identity), 3u);
  EXPECT_EQ(write(writer, "a", "3"), DDS_RETCODE_OK);
  EXPECT_EQ(write(writer, "c", "5"), DDS_RETCODE_OK) << "an instance without writers and samples makes room";
}

TEST_P(FullReader, LetsTheWriterGoOnWithEveryTake) {
  const int count = scaled(20000);
  DDSStringDataReader* reader = make_reader(topic, keep_all_reader(1));
  DDSStringDataReader* roomy = make_reader(topic, keep_all_reader(7));
  DDSStringDataWriter* writer = make_writer(topic);
  Thread writing([&] {
    for (int i = 0; i < count; ++i) { EXPECT_EQ(write(writer, std::to_string(i)), DDS_RETCODE_OK); }
  });
  Thread taking([&] {
    const AsItComes as_it_comes;
    for (int next = 0; next < count;) {
      for (const Received& sample : take_all(roomy)) { EXPECT_EQ(sample.value, std::to_string(next++)); }
    }
  });
  const AsItComes as_it_comes;
  for (int next = 0; next < count;) {
    for (const Received& sample : take_all(reader)) { EXPECT_EQ(sample.value, std::to_string(next++)); }
  }
}

TEST_P(FullReader, LetsTheWriterGoOnWhenItIsDeleted) {
  DDSStringDataReader* full = make_reader(topic, keep_all_reader(1));
  DDSStringDataReader* reader = make_reader(topic);
  DDSStringDataWriter* writer = make_writer(topic);
  EXPECT_EQ(write(writer, "1"), DDS_RETCODE_OK);
  std::atomic<bool> writing{false};
  Thread blocked([&] {
    writing = true;
    EXPECT_EQ(write(writer, "2"), DDS_RETCODE_OK);
  });
  while (!writing) { std::this_thread::yield(); }
  EXPECT_EQ(remove(full), DDS_RETCODE_OK);
  blocked.join();
  EXPECT_EQ(take_values(reader), (Strings{"1", "2"}));
}

// Readers with little room and several impatient writers: whatever the interleaving, the writes that succeeded are
// exactly what every reader got.
TEST_P(FullReader, GetsExactlyTheSamplesThatAllOtherReadersGet) {
  const int each = scaled(3000);
  const DDS_Duration_t impatient = carrier().in_process() ? DDS_Duration_t{0, 50000} : milliseconds(5);
  const std::vector<DDSStringDataReader*> readers = {make_reader(topic, keep_all_reader(1)),
                                                     make_reader(topic, keep_all_reader(3)), make_reader(topic)};
  std::vector<Strings> accepted(3), got(readers.size());  // one a thread
  std::atomic<int> writing{3};
  {
    std::vector<Thread> threads;
    for (std::size_t w = 0; w < accepted.size(); ++w) {
      DDSStringDataWriter* writer = make_writer(topic, reliable_writer(impatient));
      threads.emplace_back([&, w, writer] {
        for (int i = 0; i < each; ++i) {
          const std::string value = std::to_string(w) + ":" + std::to_string(i);
          const DDS_ReturnCode_t retcode = write(writer, value);
          EXPECT_TRUE(retcode == DDS_RETCODE_OK || retcode == DDS_RETCODE_TIMEOUT) << retcode;
          if (retcode == DDS_RETCODE_OK) { accepted[w].push_back(value); }
        }
        --writing;
      });
    }
    for (std::size_t r = 0; r < readers.size(); ++r) {
      threads.emplace_back([&, r] {
        for (bool last = false; !last;) {
          last = writing == 0;
          Strings some;
          do {  // a look is limited; what was written before is found by further ones
            some = take_values(readers[r]);
            got[r].insert(got[r].end(), some.begin(), some.end());
          } while (!some.empty());
        }
      });
    }
  }
  for (std::size_t w = 0; w < accepted.size(); ++w) {
    EXPECT_FALSE(accepted[w].empty());
    for (const Strings& all : got) {
      Strings of_writer;
      std::copy_if(all.begin(), all.end(), std::back_inserter(of_writer),
                   [&](const std::string& value) { return value[0] == static_cast<char>('0' + w); });
      EXPECT_EQ(of_writer, accepted[w]);
    }
  }
}

TEST_P(KeepLast, ReplacesTheOldestSampleOfTheInstance) {
  topic = participant.keyed_strings("Keyed");
  DDS_DataReaderQos qos = keep_all_reader();
  qos.history = {DDS_KEEP_LAST_HISTORY_QOS, 2};
  auto* reader = make_reader<DDSKeyedStringDataReader>(topic, qos);
  auto* writer = make_writer<DDSKeyedStringDataWriter>(topic, reliable_writer(brief(DDS_DURATION_ZERO)));
  EXPECT_EQ(write(writer, "b", "b0"), DDS_RETCODE_OK);
  for (int i = 0; i < 5; ++i) { EXPECT_EQ(write(writer, "a", "a" + std::to_string(i)), DDS_RETCODE_OK); }
  Strings held = values(read_all(reader));
  std::sort(held.begin(), held.end());
  EXPECT_EQ(held, (Strings{"a3", "a4", "b0"}));
  EXPECT_EQ(write(writer, "a", "a5"), DDS_RETCODE_OK);
  EXPECT_EQ(values(collect(reader, true, DDS_LENGTH_UNLIMITED, {DDS_NOT_READ_SAMPLE_STATE})), Strings{"a5"});
  EXPECT_EQ(rejected(reader).total_count, 0);
}

class BestEffort : public OverCarrier<bool>, public OneTopic {
 protected:
  /// The writer that does not wait: a best-effort one, or a reliable one that the reader asked nothing of.
  DDS_DataWriterQos writer_qos() const { return std::get<1>(GetParam()) ? reliable_writer() : best_effort_writer(); }
};

TEST_P(BestEffort, DropsAndCountsWhatAFullReaderCannotHold) {
  DDSStringDataReader* full = make_reader(topic, best_effort_reader(2));
  DDSStringDataReader* roomy = make_reader(topic, best_effort_reader());
  ASSERT_EQ(full->get_statuscondition()->set_enabled_statuses(DDS_SAMPLE_REJECTED_STATUS), DDS_RETCODE_OK);
  DDSStringDataWriter* writer = make_writer(topic, writer_qos());
  for (int i = 1; i <= 5; ++i) {
    settle();
    EXPECT_EQ(full->get_statuscondition()->get_trigger_value(), i > 3) << i;
    EXPECT_EQ(write(writer, std::to_string(i)), DDS_RETCODE_OK);
  }
  DDS_SampleRejectedStatus status = rejected(full);
  EXPECT_EQ(status.total_count, 3);
  EXPECT_EQ(status.total_count_change, 3);
  EXPECT_EQ(status.last_reason, DDS_REJECTED_BY_SAMPLES_LIMIT);
  EXPECT_EQ(rejected(full).total_count_change, 0);
  EXPECT_FALSE(full->get_statuscondition()->get_trigger_value());
  EXPECT_EQ(take_values(full), (Strings{"1", "2"}));
  EXPECT_EQ(write(writer, "6"), DDS_RETCODE_OK);
  EXPECT_EQ(take_values(full), Strings{"6"});
  EXPECT_EQ(rejected(full).total_count, 3);
  EXPECT_EQ(lost(full).total_count, 3);
  EXPECT_EQ(take_values(roomy).size(), 6u);
  EXPECT_EQ(rejected(roomy).total_count, 0);
  EXPECT_EQ(lost(roomy).total_count, 0);
}

TEST_P(BestEffort, NamesTheLimitAndTheInstanceOfARejectedSample) {
  topic = participant.keyed_strings("Keyed");
  DDS_DataReaderQos qos = best_effort_reader();
  qos.resource_limits.max_instances = 2;
  qos.resource_limits.max_samples_per_instance = 1;
  auto* reader = make_reader<DDSKeyedStringDataReader>(topic, qos);
  auto* writer = make_writer<DDSKeyedStringDataWriter>(topic, writer_qos());
  EXPECT_EQ(write(writer, "a", "1"), DDS_RETCODE_OK);
  EXPECT_EQ(write(writer, "b", "2"), DDS_RETCODE_OK);
  EXPECT_EQ(write(writer, "a", "dropped"), DDS_RETCODE_OK);
  DDS_SampleRejectedStatus status = rejected(reader);
  EXPECT_EQ(status.last_reason, DDS_REJECTED_BY_SAMPLES_PER_INSTANCE_LIMIT);
  std::string a = "a", none;
  EXPECT_EQ(status.last_instance_handle, reader->lookup_instance(keyed(a, none)));
  EXPECT_EQ(write(writer, "c", "dropped"), DDS_RETCODE_OK);
  status = rejected(reader);
  EXPECT_EQ(status.last_reason, DDS_REJECTED_BY_INSTANCES_LIMIT);
  EXPECT_EQ(status.total_count, 2);
  Strings held = values(take_all(reader));
  std::sort(held.begin(), held.end());
  EXPECT_EQ(held, (Strings{"1", "2"}));
}
INSTANTIATE_TEST_SUITE_P(Over, BestEffort,
                         ::testing::Combine(::testing::ValuesIn(support::carriers()), ::testing::Bool()),
                         [](const auto& test) {
                           return std::get<0>(test.param).name +
                                  std::string(std::get<1>(test.param) ? "FromReliable" : "FromBestEffort");
                         });
RUN_OVER_EVERY_CARRIER(FullReader);
RUN_OVER_EVERY_CARRIER(KeepLast);

}  // namespace
}  // namespace behaviour
