// Aggregates as samples: their CDR, hostile octets, and the copy within one process.

#include <stdexcept>

#include <gtest/gtest.h>
#include <dds/dds.hpp>
#include <zemtra/participant.hpp>

#include "codec.hpp"
#include "rich_aggregate.hpp"

namespace {

using codec::decode;
using codec::encode;
using codec::Octets;

struct Mixed {
  std::uint8_t octet;
  std::uint32_t number;
  std::string text;
  std::optional<std::int16_t> maybe;
  std::vector<bool> flags;
  double real;
};

struct Empty {};
struct Named {
  static constexpr const char* dds_type_name = "other::Name";
  int value;
};
// A vector's allocator that throws when a copy is made.
template <class T>
struct FailingAllocator : std::allocator<T> {
  template <class U>
  struct rebind {
    using other = FailingAllocator<U>;
  };
  T* allocate(std::size_t count) {
    if (fails) { throw std::length_error("no more of these"); }
    return std::allocator<T>::allocate(count);
  }
  static inline bool fails = false;
};
struct Fragile {
  std::vector<int, FailingAllocator<int>> values;
};
struct SameName {
  static constexpr const char* dds_type_name = "other::Name";
  long value;
};

const Mixed mixed{7, 0x01020304, std::string("h\0", 2), 5, {true, false}, 1.5};
const Octets mixed_little = {0, 1, 0, 0,                   // header
                             7, 0, 0, 0,                   // octet, padding
                             4, 3, 2, 1,                   // number
                             3, 0, 0, 0, 'h', 0, 0,        // length, text with a NUL, terminator
                             1, 5, 0,                      // there is a value
                             0, 0, 2, 0, 0,   0, 1,    0,  // padding, length, flags
                             0, 0, 0, 0, 0,   0,           // padding
                             0, 0, 0, 0, 0,   0, 0xF8, 0x3F};
const Octets mixed_big = {0, 0, 0, 0, 7, 0, 0, 0, 1, 2, 3, 4, 0, 0, 0,    3,    'h', 0, 0, 1, 0, 5,
                          0, 0, 0, 0, 0, 2, 1, 0, 0, 0, 0, 0, 0, 0, 0x3F, 0xF8, 0,   0, 0, 0, 0, 0};

TEST(Aggregate, IsPlainCdrAndReadInBothByteOrders) {
  EXPECT_EQ(encode(mixed), mixed_little);
  for (const Octets& octets : {mixed_little, mixed_big}) {
    Mixed read{};
    ASSERT_TRUE(decode(octets, read));
    EXPECT_EQ(encode(read), mixed_little);
    EXPECT_EQ(read.text, mixed.text);
    EXPECT_EQ(read.maybe, mixed.maybe);
  }
}

TEST(Aggregate, OfEveryKindOfMemberComesBackAndIsReused) {
  const rich::Everything all = rich::everything();
  rich::Everything read{};
  ASSERT_TRUE(decode(encode(all), read));
  EXPECT_EQ(read, all);
  const rich::Everything none{};
  ASSERT_TRUE(decode(encode(none), read));
  EXPECT_EQ(read, none);
  ASSERT_TRUE(decode(encode(all), read));
  EXPECT_EQ(read, all);
}

TEST(Aggregate, IsRefusedUnlessItIsWhole) { codec::expect_refused_unless_whole(rich::everything()); }

TEST(Aggregate, IsRefusedWhenOctetsAreNoValues) {
  const struct {
    std::size_t position;
    unsigned char octet;
    const char* what;
  } faults[] = {
      {0, 1, "unknown encapsulation"},     {1, 2, "unknown encapsulation"}, {12, 2, "text without terminator"},
      {12, 0, "text of no octets"},        {15, 0x80, "huge text"},         {19, 2, "no bool"},
      {24, 200, "more flags than octets"}, {27, 0xFF, "huge length"},       {28, 2, "no bool"}};
  for (const auto& fault : faults) {
    Octets octets = mixed_little;
    octets[fault.position] = fault.octet;
    Mixed read{};
    EXPECT_FALSE(decode(octets, read)) << fault.what;
    EXPECT_TRUE(decode(mixed_little, read)) << "after " << fault.what;
  }
}

TEST(Aggregate, MayBeEmpty) {
  Empty value;
  EXPECT_EQ(encode(value), (Octets{0, 1, 0, 0}));
  EXPECT_TRUE(decode({0, 0, 0, 0}, value));
}

using InProcess = std::pair<DDSDataWriter*, DDSDataReader*>;

template <class T>
InProcess create_ends(DDSDomainParticipant* participant) {
  const char* const type = zemtra::dds_type_traits<T>::register_type(nullptr, participant);
  DDSTopic* const topic = participant->create_topic("topic", type, DDS_TOPIC_QOS_DEFAULT, nullptr, 0);
  DDS_DataReaderQos keep_all = DDS_DATAREADER_QOS_DEFAULT;
  keep_all.history.kind = DDS_KEEP_ALL_HISTORY_QOS;
  return {participant->create_datawriter(topic, DDS_DATAWRITER_QOS_DEFAULT, nullptr, 0),
          participant->create_datareader(topic, keep_all, nullptr, 0)};
}

TEST(Aggregate, IsCopiedWithinOneProcess) {
  using Traits = zemtra::dds_type_traits<rich::Everything>;
  zemtra::Participant participant;
  const auto [writer, reader] = create_ends<rich::Everything>(participant);
  const rich::Everything sent = rich::everything();
  DDS_WriteParams_t params;
  ASSERT_EQ(writer->write_untyped(Traits::Outgoing(sent).get(), params), DDS_RETCODE_OK);

  void** samples = nullptr;
  int count = 0;
  DDS_SampleInfoSeq infos;
  ASSERT_EQ(reader->read_or_take_untyped(&samples, &count, infos, 1, DDS_ANY_SAMPLE_STATE, DDS_ANY_VIEW_STATE,
                                         DDS_ANY_INSTANCE_STATE, nullptr, true),
            DDS_RETCODE_OK);
  const auto loan = zemtra::details::create_loaned_samples<rich::Everything>(samples, count, infos, reader);
  ASSERT_EQ(loan.size(), 1U);
  EXPECT_EQ(loan[0].data(), sent);
  EXPECT_EQ(Traits::to_value(loan[0].data(), loan[0].info()), sent);
  DDS_SampleInfo without_data;
  without_data.valid_data = false;
  EXPECT_EQ(Traits::present(sent, without_data), rich::Everything{});
}

TEST(Aggregate, ThatCannotBeCopiedIsNotWritten) {
  zemtra::Participant participant;
  const auto [writer, reader] = create_ends<Fragile>(participant);
  const Fragile value{{1}};
  DDS_WriteParams_t params;
  FailingAllocator<int>::fails = true;
  EXPECT_NE(writer->write_untyped(&value, params), DDS_RETCODE_OK);
  FailingAllocator<int>::fails = false;
  EXPECT_EQ(writer->write_untyped(&value, params), DDS_RETCODE_OK);
}

TEST(Aggregate, IsRegisteredUnderItsCppNameUnlessItHasItsOwn) {
  zemtra::Participant participant;
  EXPECT_STREQ(zemtra::dds_type_traits<rich::Point>::register_type(nullptr, participant), "rich::Point");
  EXPECT_STREQ(zemtra::dds_type_traits<Named>::register_type(nullptr, participant), "other::Name");
  EXPECT_STREQ(zemtra::dds_type_traits<Named>::register_type(nullptr, participant), "other::Name");
  EXPECT_THROW(zemtra::dds_type_traits<SameName>::register_type(nullptr, participant),
               zemtra::PreconditionNotMetException);
  EXPECT_THROW(zemtra::dds_type_traits<Named>::register_type(nullptr, nullptr), zemtra::BadParameterException);
}

}  // namespace
