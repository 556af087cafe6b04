#include <chrono>
#include <future>

#include "regressions/participant.hpp"

namespace regressions {
namespace {

class FullReader : public Participant {
 protected:
  static DDS_KeyedString keyed(const char* key) {
    DDS_KeyedString sample;
    sample.key = const_cast<char*>(key);
    sample.value = const_cast<char*>("value");
    return sample;
  }
  static DDS_DataWriterQos patient_writer_qos() {
    DDS_DataWriterQos qos;
    qos.reliability.max_blocking_time = DDS_DURATION_INFINITE;
    qos.writer_data_lifecycle.autodispose_unregistered_instances = false;
    return qos;
  }
  /// A reader for one instance, which leaves no sample behind when it has no writer any more.
  DDSKeyedStringDataReader* create_reader_of_one_instance() {
    DDS_DataReaderQos qos = reliable_reader_qos();
    qos.resource_limits.max_instances = 1;
    DDSPropertyQosPolicyHelper::add_property(
        qos.property, "dds.data_reader.history.generate_not_alive_no_writers_sample", "0", false);
    return DDSKeyedStringDataReader::narrow(create_reader(keyed_strings, qos));
  }
  /// Writes and takes a sample of the first instance, which its writer keeps alive.
  static void fill(DDSKeyedStringDataWriter* first, DDSKeyedStringDataReader* reader) {
    ASSERT_EQ(first->write(keyed("first"), DDS_HANDLE_NIL), DDS_RETCODE_OK);
    DDS_KeyedStringSeq samples;
    DDS_SampleInfoSeq infos;
    ASSERT_EQ(reader->take(samples, infos, 1, DDS_ANY_SAMPLE_STATE, DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE),
              DDS_RETCODE_OK);
    ASSERT_EQ(reader->return_loan(samples, infos), DDS_RETCODE_OK);
  }
  /// Begins to write a second instance, for which there is no room.
  static std::future<DDS_ReturnCode_t> write_second(DDSKeyedStringDataWriter* second) {
    auto written = std::async(std::launch::async, [=] { return second->write(keyed("second"), DDS_HANDLE_NIL); });
    EXPECT_EQ(written.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    return written;
  }
};

TEST_F(FullReader, AWriterThatWaitsForAnInstanceGoesOnWhenOneIsUnregisteredOrItsWriterDeleted) {
  for (const bool unregisters : {true, false}) {
    DDSKeyedStringDataReader* reader = create_reader_of_one_instance();
    auto* first = DDSKeyedStringDataWriter::narrow(create_writer(keyed_strings, patient_writer_qos()));
    auto* second = DDSKeyedStringDataWriter::narrow(create_writer(keyed_strings, patient_writer_qos()));
    ASSERT_NO_FATAL_FAILURE(fill(first, reader));
    std::future<DDS_ReturnCode_t> written = write_second(second);
    EXPECT_EQ(unregisters ? first->unregister_instance(keyed("first"), DDS_HANDLE_NIL)
                          : participant->delete_datawriter(first),
              DDS_RETCODE_OK);
    EXPECT_EQ(written.get(), DDS_RETCODE_OK);
    EXPECT_EQ(participant->delete_datareader(reader), DDS_RETCODE_OK);
  }
}

TEST_F(FullReader, ASampleWithoutValidDataTakesNoRoomFromAKeepLastHistory) {
  DDS_DataReaderQos qos;
  qos.reliability.kind = DDS_RELIABLE_RELIABILITY_QOS;
  qos.resource_limits.max_samples = 1;
  qos.resource_limits.max_samples_per_instance = 1;
  auto* reader = DDSKeyedStringDataReader::narrow(create_reader(keyed_strings, qos));
  auto* writer = DDSKeyedStringDataWriter::narrow(create_writer(keyed_strings));
  ASSERT_EQ(writer->dispose(keyed("key"), DDS_HANDLE_NIL), DDS_RETCODE_OK);
  ASSERT_EQ(writer->write(keyed("key"), DDS_HANDLE_NIL), DDS_RETCODE_OK);
  EXPECT_EQ(writer->write(keyed("key"), DDS_HANDLE_NIL), DDS_RETCODE_OK);

  DDS_KeyedStringSeq samples;
  DDS_SampleInfoSeq infos;
  ASSERT_EQ(reader->take(samples, infos, DDS_LENGTH_UNLIMITED, DDS_ANY_SAMPLE_STATE, DDS_ANY_VIEW_STATE,
                         DDS_ANY_INSTANCE_STATE),
            DDS_RETCODE_OK);
  ASSERT_EQ(infos.length(), 2);
  EXPECT_FALSE(infos[0].valid_data);
  EXPECT_TRUE(infos[1].valid_data);
  EXPECT_EQ(reader->return_loan(samples, infos), DDS_RETCODE_OK);
}

}  // namespace
}  // namespace regressions
