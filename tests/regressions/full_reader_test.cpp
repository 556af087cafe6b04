#include <chrono>
#include <future>

#include "regressions/topics.hpp"

namespace regressions {
namespace {

class FullReader : public TopicsOverCarrier {
 protected:
  /// A reader for one instance, which leaves no sample behind when it has no writer any more.
  DDSKeyedStringDataReader* create_reader_of_one_instance() {
    DDS_DataReaderQos qos = reliable_reader_qos();
    qos.resource_limits.max_instances = 1;
    DDSPropertyQosPolicyHelper::add_property(
        qos.property, "dds.data_reader.history.generate_not_alive_no_writers_sample", "0", false);
    return make_reader<DDSKeyedStringDataReader>(keyed_strings, qos);
  }
  /// Writes and takes a sample of the first instance, which its writer keeps alive.
  static void fill(DDSKeyedStringDataWriter* first, DDSKeyedStringDataReader* reader) {
    ASSERT_EQ(write(first, "first", "value"), DDS_RETCODE_OK);
    ASSERT_EQ(take_all(reader).size(), 1u);
  }
  /// Begins to write a second instance, for which there is no room.
  static std::future<DDS_ReturnCode_t> write_second(DDSKeyedStringDataWriter* second) {
    auto written = std::async(std::launch::async, [=] { return write(second, "second", "value"); });
    EXPECT_EQ(written.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    return written;
  }
};

TEST_P(FullReader, AWriterThatWaitsForAnInstanceGoesOnWhenOneIsUnregisteredOrItsWriterDeleted) {
  for (const bool unregisters : {true, false}) {
    DDSKeyedStringDataReader* reader = create_reader_of_one_instance();
    auto* first = make_writer<DDSKeyedStringDataWriter>(keyed_strings);
    auto* second = make_writer<DDSKeyedStringDataWriter>(keyed_strings);
    ASSERT_NO_FATAL_FAILURE(fill(first, reader));
    std::future<DDS_ReturnCode_t> written = write_second(second);
    EXPECT_EQ(unregisters ? unregister(first, "first") : remove(first), DDS_RETCODE_OK);
    EXPECT_EQ(written.get(), DDS_RETCODE_OK);
    EXPECT_EQ(remove(reader), DDS_RETCODE_OK);
  }
}

TEST_P(FullReader, ASampleWithoutValidDataTakesNoRoomFromAKeepLastHistory) {
  DDS_DataReaderQos qos;
  qos.reliability.kind = DDS_RELIABLE_RELIABILITY_QOS;
  qos.resource_limits.max_samples = 1;
  qos.resource_limits.max_samples_per_instance = 1;
  auto* reader = make_reader<DDSKeyedStringDataReader>(keyed_strings, qos);
  auto* writer = make_writer<DDSKeyedStringDataWriter>(keyed_strings);
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
