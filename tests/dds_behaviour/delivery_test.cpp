// What a write carries to the readers, and the identities that it gives.

#include <map>

#include "behaviour.hpp"
#include "log_lines.hpp"

namespace behaviour {
namespace {

using Delivery = OneTopicOver;
/// What is to be refused cannot be handed to another process.
using RefusedWrites = OneTopicOver;

TEST_P(Delivery, PayloadsOfEverySizeArriveWholeAndAligned) {
  DDSTopic* octets = participant.octets("Octets");
  auto* reader = make_reader<DDSOctetsDataReader>(octets);
  auto* writer = make_writer<DDSOctetsDataWriter>(octets);
  for (const int size : {1, 31, 32, 33, 4096, 65537, 4 << 20, 3, 0}) {
    std::vector<DDS_Octet> buffer(static_cast<std::size_t>(size));
    for (std::size_t i = 0; i < buffer.size(); ++i) { buffer[i] = static_cast<DDS_Octet>(i * 7 + i / 256); }
    std::vector<DDS_Octet> lent = buffer;
    EXPECT_EQ(writer->write({size, lent.data()}, DDS_HANDLE_NIL), DDS_RETCODE_OK);
    lent.assign(lent.size(), 0);  // the caller's again on return
    settle();
    DDS_OctetsSeq data;
    DDS_SampleInfoSeq infos;
    ASSERT_EQ(reader->take(data, infos, 1, DDS_ANY_SAMPLE_STATE, DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE),
              DDS_RETCODE_OK);
    ASSERT_EQ(data[0].length, size);
    EXPECT_TRUE(std::equal(buffer.begin(), buffer.end(), data[0].value)) << size;
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(data[0].value) % 32, 0u) << size;
    EXPECT_EQ(reader->return_loan(data, infos), DDS_RETCODE_OK);
  }
}

TEST_P(RefusedWrites, OfWhatCannotBeCarriedOrHonouredDeliverNothing) {
  DDSTopic* octets = participant.octets("Octets");
  DDSStringDataReader* reader = make_reader(topic);
  DDSStringDataWriter* writer = make_writer(topic);
  const LogLines log;
  DDS_WriteParams_t params;
  EXPECT_EQ(writer->write_untyped(nullptr, params), DDS_RETCODE_BAD_PARAMETER);
  EXPECT_EQ(writer->write(nullptr, DDS_HANDLE_NIL), DDS_RETCODE_BAD_PARAMETER);
  auto* octets_writer = make_writer<DDSOctetsDataWriter>(octets);
  DDS_Octet octet = 0;
  EXPECT_EQ(octets_writer->write({-1, &octet}, DDS_HANDLE_NIL), DDS_RETCODE_BAD_PARAMETER);
  EXPECT_EQ(octets_writer->write({1, nullptr}, DDS_HANDLE_NIL), DDS_RETCODE_BAD_PARAMETER);
  EXPECT_EQ(writer->write("x", 12345), DDS_RETCODE_BAD_PARAMETER) << "a handle that is no instance of the writer";
  ASSERT_TRUE(params.cookie.value.ensure_length(3, 3));
  EXPECT_EQ(writer->write_w_params("x", params), DDS_RETCODE_UNSUPPORTED);
  DDS_WriteParams_t own_identity;
  own_identity.identity = {guid_of(writer), {0, 42}};
  EXPECT_EQ(writer->write_w_params("x", own_identity), DDS_RETCODE_UNSUPPORTED);
  EXPECT_EQ(log.all().size(), 7u);
  EXPECT_EQ(octets_writer->write({0, nullptr}, DDS_HANDLE_NIL), DDS_RETCODE_OK);

  EXPECT_EQ(write(writer, ""), DDS_RETCODE_OK);
  const std::vector<Received> received = take_all(reader);
  ASSERT_EQ(received.size(), 1u);
  EXPECT_EQ(number(received[0].info.sample_identity), 1u) << "a refused write takes no number";
}

TEST_P(Delivery, AnAutomaticIdentityIsLeftInTheParametersAndIsTheOneThatReadersSee) {
  DDSStringDataReader* reader = make_reader(topic);
  DDSStringDataWriter* writers[] = {make_writer(topic), make_writer(topic)};
  const DDS_GUID_t guids[] = {guid_of(writers[0]), guid_of(writers[1])};
  EXPECT_FALSE(DDS_GUID_equals(&guids[0], &guids[1]));
  for (const DDS_GUID_t& guid : guids) {
    EXPECT_FALSE(DDS_GUID_equals(&guid, &DDS_GUID_AUTO));
    EXPECT_FALSE(DDS_GUID_equals(&guid, &DDS_GUID_UNKNOWN));
  }
  for (std::uint32_t i = 1; i <= 3; ++i) {
    for (const int w : {0, 1}) {
      DDS_WriteParams_t params;
      ASSERT_EQ(writers[w]->write_w_params("x", params), DDS_RETCODE_OK);
      EXPECT_TRUE(DDS_GUID_equals(&params.identity.writer_guid, &guids[w]));
      EXPECT_EQ(number(params.identity), i);
      const std::vector<Received> received = take_all(reader);
      ASSERT_EQ(received.size(), 1u);
      EXPECT_TRUE(DDS_GUID_equals(&received[0].info.sample_identity.writer_guid, &guids[w]));
      EXPECT_EQ(number(received[0].info.sample_identity), i);
      DDS_PublicationBuiltinTopicData writer;
      EXPECT_EQ(reader->get_matched_publication_data(writer, received[0].info.publication_handle), DDS_RETCODE_OK);
      EXPECT_TRUE(DDS_GUID_equals(&writer.key, &guids[w]));
    }
  }
}

TEST_P(Delivery, TheRelatedIdentityAndTheSourceTimeTravelWithTheSample) {
  DDSStringDataReader* reader = make_reader(topic);
  DDSStringDataWriter* writer = make_writer(topic);
  DDS_WriteParams_t params;
  params.related_sample_identity.writer_guid.value[0] = 0xab;
  params.related_sample_identity.sequence_number = {3, 0xfffffffe};
  params.source_timestamp = {1234, 567};
  ASSERT_EQ(writer->write_w_params("related", params), DDS_RETCODE_OK);
  DDS_WriteParams_t no_time;
  no_time.source_timestamp = {1234, 1000000000};
  ASSERT_EQ(writer->write_w_params("of no time", no_time), DDS_RETCODE_BAD_PARAMETER);
  DDS_Time_t before, after;
  ASSERT_EQ(participant->get_current_time(before), DDS_RETCODE_OK);
  ASSERT_EQ(write(writer, "plain"), DDS_RETCODE_OK);
  settle();
  ASSERT_EQ(participant->get_current_time(after), DDS_RETCODE_OK);

  const std::vector<Received> received = take_all(reader);
  ASSERT_EQ(received.size(), 2u);
  const DDS_SampleInfo& related = received[0].info;
  EXPECT_TRUE(
      DDS_GUID_equals(&related.related_sample_identity.writer_guid, &params.related_sample_identity.writer_guid));
  EXPECT_EQ(related.related_sample_identity.sequence_number, params.related_sample_identity.sequence_number);
  EXPECT_EQ(related.source_timestamp, (DDS_Time_t{1234, 567}));
  const DDS_SampleInfo& plain = received[1].info;
  EXPECT_TRUE(DDS_GUID_equals(&plain.related_sample_identity.writer_guid, &DDS_GUID_UNKNOWN));
  EXPECT_EQ(plain.related_sample_identity.sequence_number, DDS::SEQUENCE_NUMBER_UNKNOWN);
  for (const DDS_Time_t& time : {plain.source_timestamp, plain.reception_timestamp}) {
    EXPECT_GE((time - before).sec, 0);
    EXPECT_GE((after - time).sec, 0);
  }
}

TEST_P(Delivery, EightThreadsOnOneWriterGetTheNumbersInWhichReadersReceiveTheirSamples) {
  constexpr int threads = 8;
  const int each = scaled(4000);
  DDSTopic* others_topic = other.strings("Topic");
  DDSStringDataReader* readers[] = {make_reader(topic), make_reader(others_topic), make_reader(others_topic)};
  DDSStringDataWriter* writer = make_writer(topic);
  std::vector<std::map<std::uint32_t, std::string>> assigned(threads);  // one a thread
  {
    std::vector<Thread> writing;
    for (std::size_t t = 0; t < threads; ++t) {
      writing.emplace_back([&, t] {
        for (int i = 0; i < each; ++i) {
          const std::string value = std::to_string(t) + ":" + std::to_string(i);
          DDS_WriteParams_t params;
          EXPECT_EQ(writer->write_w_params(value.c_str(), params), DDS_RETCODE_OK);
          EXPECT_TRUE(assigned[t].emplace(params.identity.sequence_number.low, value).second);
        }
      });
    }
  }
  std::map<std::uint32_t, std::string> all;
  for (const auto& of_thread : assigned) { all.insert(of_thread.begin(), of_thread.end()); }
  EXPECT_EQ(all.size(), static_cast<std::size_t>(threads * each)) << "numbers are unique";
  for (DDSStringDataReader* reader : readers) {
    std::uint32_t expected = 0;
    for (;;) {
      const std::vector<Received> received = take_all(reader);
      if (received.empty()) { break; }
      for (const Received& sample : received) {
        ASSERT_EQ(number(sample.info.sample_identity), ++expected);
        ASSERT_EQ(sample.value, all[expected]);
      }
    }
    EXPECT_EQ(expected, static_cast<std::uint32_t>(threads * each));
  }
}

RUN_OVER_EVERY_CARRIER(Delivery);
INSTANTIATE_TEST_SUITE_P(Over, RefusedWrites, ::testing::ValuesIn(support::carriers_of_one_process()),
                         support::carrier_name);

}  // namespace
}  // namespace behaviour
