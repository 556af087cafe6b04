#include <chrono>
#include <future>

#include "dds_behaviour/behaviour.hpp"

namespace regressions {
namespace {

using namespace behaviour;

using FullReader = OneTopicOver;

TEST_P(FullReader, AWriterThatWaitsForAnInstanceGoesOnWhenOneIsUnregisteredOrItsWriterDeleted) {
  topic = participant.keyed_strings("Keyed");
  DDS_DataReaderQos qos = keep_all_reader();
  qos.resource_limits.max_instances = 1;
  // Nothing is left behind of an instance without writers.
  DDSPropertyQosPolicyHelper::add_property(qos.property, "dds.data_reader.history.generate_not_alive_no_writers_sample",
                                           "0", false);
  for (const bool unregisters : {true, false}) {
    auto* reader = make_reader<DDSKeyedStringDataReader>(topic, qos);
    auto* first = make_writer<DDSKeyedStringDataWriter>(topic);
    auto* second = make_writer<DDSKeyedStringDataWriter>(topic);
    ASSERT_EQ(write(first, "first", "value"), DDS_RETCODE_OK);
    ASSERT_EQ(take_all(reader).size(), 1u);
    auto written = std::async(std::launch::async, [=] { return write(second, "second", "value"); });
    EXPECT_EQ(written.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    EXPECT_EQ(unregisters ? unregister(first, "first") : remove(first), DDS_RETCODE_OK);
    EXPECT_EQ(written.get(), DDS_RETCODE_OK);
    EXPECT_EQ(remove(reader), DDS_RETCODE_OK);
  }
}

TEST_P(FullReader, ASampleWithoutValidDataTakesNoRoomFromAKeepLastHistory) {
  topic = participant.keyed_strings("Keyed");
  DDS_DataReaderQos qos;
  qos.reliability.kind = DDS_RELIABLE_RELIABILITY_QOS;
  qos.resource_limits.max_samples = 1;
  qos.resource_limits.max_samples_per_instance = 1;
  auto* reader = make_reader<DDSKeyedStringDataReader>(topic, qos);
  auto* writer = make_writer<DDSKeyedStringDataWriter>(topic);
  ASSERT_EQ(dispose(writer, "key"), DDS_RETCODE_OK);
  ASSERT_EQ(write(writer, "key", "1"), DDS_RETCODE_OK);
  EXPECT_EQ(write(writer, "key", "2"), DDS_RETCODE_OK);

  const std::vector<Received> received = take_all(reader);
  ASSERT_EQ(received.size(), 2u);
  EXPECT_FALSE(received[0].info.valid_data);
  EXPECT_EQ(received[1].value, "2");
}

RUN_OVER_EVERY_CARRIER(FullReader);

}  // namespace
}  // namespace regressions
