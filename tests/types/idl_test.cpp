// Types that are generated from IDL: their CDR, hostile octets, and their keys.

#include <dds/dds.hpp>
#include <zemtra/participant.hpp>

#include "codec.hpp"
#include "rich_item.hpp"

namespace {

using codec::decode;
using codec::encode;
using codec::Octets;
using inventory::Item;

TEST(IdlType, OfEveryKindOfMemberComesBack) {
  const Item item = rich_item();
  const Octets octets = encode(item);
  Item read;
  for (int i = 0; i < 2; ++i) {
    ASSERT_TRUE(decode(octets, read)) << "into an item that is " << (i == 0 ? "new" : "reused");
    EXPECT_TRUE(read == item);
    EXPECT_EQ(encode(read), octets);
  }
}

TEST(IdlType, IsRefusedUnlessItIsWhole) { codec::expect_refused_unless_whole(rich_item()); }

TEST(IdlType, IsReadInBothByteOrders) {
  geometry::Point point;
  EXPECT_TRUE(decode({0, 0, 0, 0, 1, 2, 9, 9, 9, 9, 9, 9, 0x3F, 0xF8, 0, 0, 0, 0, 0, 0}, point));
  EXPECT_EQ(point.x(), 0x0102);
  EXPECT_EQ(point.y(), 1.5);
  EXPECT_EQ(encode(point), (Octets{0, 1, 0, 0, 2, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xF8, 0x3F}));
}

TEST(IdlType, RefusesWhatItsStringsCannotHold) {
  geometry::Named named;
  EXPECT_TRUE(decode({0, 1, 0, 0, 2, 0, 0, 0, 'a', 0}, named));
  EXPECT_EQ(named.name(), "a");
  EXPECT_FALSE(decode({0, 1, 0, 0, 0, 0, 0, 0}, named)) << "no terminator";
  EXPECT_FALSE(decode({0, 1, 0, 0, 2, 0, 0, 0, 'a', 'b'}, named)) << "no terminator";
  EXPECT_FALSE(decode({0, 1, 0, 0, 2, 0, 0, 0, 0, 0}, named)) << "a NUL inside";
  Item item;
  EXPECT_NO_THROW(item.part(std::string(32, 'x')));
  EXPECT_THROW(item.part(std::string(33, 'x')), std::length_error);
}

std::string key_of(const Item& item, std::size_t capacity) {
  std::string key(capacity, '?');
  const std::size_t size =
      zemtra::details::plugin_of<Item>().key(&item, reinterpret_cast<unsigned char*>(key.data()), capacity);
  if (size > capacity) { return key_of(item, size); }
  key.resize(size);
  return key;
}

TEST(IdlType, HasAKeyOfItsKeyMembers) {
  EXPECT_EQ(zemtra::details::plugin_of<geometry::Point>().key, nullptr);
  EXPECT_EQ(zemtra::details::plugin_of<inventory::Choice>().key, nullptr) << "a union";
  const Item item = rich_item();
  Item same_key;
  same_key.id(item.id());
  same_key.part(item.part());
  Item other = item;
  other.part("other");
  for (const std::size_t capacity : {0U, 5U, 100U}) {
    EXPECT_EQ(key_of(item, capacity), key_of(same_key, 100));
    EXPECT_NE(key_of(item, capacity), key_of(other, 100));
  }
}

TEST(IdlType, IsCarriedWithinOneProcessByInstance) {
  zemtra::Participant participant;
  const char* const type = zemtra::dds_type_traits<Item>::register_type(nullptr, participant);
  EXPECT_STREQ(type, "inventory::Item");
  DDSTopic* const topic = participant->create_topic("items", type, DDS_TOPIC_QOS_DEFAULT, nullptr, 0);
  DDSDataReader* const reader = participant->create_datareader(topic, DDS_DATAREADER_QOS_DEFAULT, nullptr, 0);
  DDSDataWriter* const writer = participant->create_datawriter(topic, DDS_DATAWRITER_QOS_DEFAULT, nullptr, 0);
  // The reader keeps the newest sample of each instance.
  Item item = rich_item();
  for (const int id : {1, 2, 1}) {
    item.id(id);
    item.number32(item.number32() + 1);
    DDS_WriteParams_t params;
    ASSERT_EQ(writer->write_untyped(&item, params), DDS_RETCODE_OK);
  }
  void** samples = nullptr;
  int count = 0;
  DDS_SampleInfoSeq infos;
  ASSERT_EQ(reader->read_or_take_untyped(&samples, &count, infos, 10, DDS_ANY_SAMPLE_STATE, DDS_ANY_VIEW_STATE,
                                         DDS_ANY_INSTANCE_STATE, nullptr, true),
            DDS_RETCODE_OK);
  const auto loan = zemtra::details::create_loaned_samples<Item>(samples, count, infos, reader);
  ASSERT_EQ(loan.size(), 2U);
  EXPECT_TRUE(loan[0].data() == item || loan[1].data() == item);
}

}  // namespace
