#include "types/cdr.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "allocations.hpp"
#include "own_sample.hpp"

namespace {

using Octets = std::vector<unsigned char>;

/// Encodes lengths and octets by the rules of CDR, independently of the code under test.
class Encoding {
 public:
  explicit Encoding(bool little_endian) : octets_{0, static_cast<unsigned char>(little_endian), 0, 0} {}

  Encoding& length(std::uint32_t number) {
    octets_.resize((octets_.size() + 3) / 4 * 4);
    for (int i = 0; i < 4; ++i) {
      const int shift = octets_[1] == 1 ? 8 * i : 24 - 8 * i;
      octets_.push_back(static_cast<unsigned char>(number >> shift));
    }
    return *this;
  }
  Encoding& raw(const std::string& text) {
    octets_.insert(octets_.end(), text.begin(), text.end());
    return *this;
  }
  Encoding& string(const std::string& text) {
    return length(static_cast<std::uint32_t>(text.size()) + 1).raw(text + '\0');
  }
  Encoding& sequence(const std::string& text) { return length(static_cast<std::uint32_t>(text.size())).raw(text); }
  const Octets& octets() const { return octets_; }

 private:
  Octets octets_;
};

/// From a heap block of exactly that size, so that a sanitizer sees every look beyond it.
bool deserialize(const DDS_TypePlugin& plugin, OwnSample& sample, const Octets& octets) {
  const std::unique_ptr<unsigned char[]> block(new unsigned char[octets.size()]);
  if (!octets.empty()) { std::memcpy(block.get(), octets.data(), octets.size()); }
  return plugin.deserialize(sample.memory(), block.get(), octets.size());
}

bool is_accepted(const DDS_TypePlugin& plugin, const Octets& octets) {
  OwnSample sample(plugin);
  return deserialize(plugin, sample, octets);
}

Octets serialize(const DDS_TypePlugin& plugin, const void* sample) {
  Octets octets(plugin.serialized_size(sample));
  EXPECT_TRUE(plugin.serialize(sample, octets.data(), octets.size()));
  return octets;
}

struct Valid {
  const DDS_TypePlugin& plugin;
  Octets little_endian;
  Octets big_endian;
};

template <class Fill>
Valid valid(const DDS_TypePlugin& plugin, Fill fill) {
  return {plugin, fill(Encoding(true)).octets(), fill(Encoding(false)).octets()};
}

/// Encodings of every type, with and without padding between members.
std::vector<Valid> valid_encodings() {
  const std::string zeros("\0\1\0", 3);
  return {
      valid(dds::string_plugin, [](Encoding e) { return e.string("hello"); }),
      valid(dds::string_plugin, [](Encoding e) { return e.string(""); }),
      valid(dds::keyed_string_plugin, [](Encoding e) { return e.string("key").string("value"); }),
      valid(dds::keyed_string_plugin, [](Encoding e) { return e.string("longer").string("v"); }),
      valid(dds::octets_plugin, [&](Encoding e) { return e.sequence(zeros); }),
      valid(dds::octets_plugin, [](Encoding e) { return e.sequence(""); }),
      valid(dds::keyed_octets_plugin, [&](Encoding e) { return e.string("k").sequence(zeros + "four"); }),
  };
}

TEST(Cdr, IsWrittenLittleEndianWithItsHeaderAndPadding) {
  DDS_KeyedString data{const_cast<char*>("ab"), const_cast<char*>("c")};
  EXPECT_EQ(serialize(dds::keyed_string_plugin, &data),
            (Octets{0, 1, 0, 0, 3, 0, 0, 0, 'a', 'b', 0, 0, 2, 0, 0, 0, 'c', 0}));
  DDS_Octet value[2] = {0, 9};
  DDS_Octets octets{2, value};
  EXPECT_EQ(serialize(dds::octets_plugin, &octets), (Octets{0, 1, 0, 0, 2, 0, 0, 0, 0, 9}));
}

TEST(Cdr, IsReadInBothEndiannessesAndWrittenBackTheSameUnlessTheBufferIsTooSmall) {
  for (const Valid& encoding : valid_encodings()) {
    for (const Octets* octets : {&encoding.little_endian, &encoding.big_endian}) {
      OwnSample sample(encoding.plugin);
      ASSERT_TRUE(deserialize(encoding.plugin, sample, *octets));
      EXPECT_EQ(serialize(encoding.plugin, sample.memory()), encoding.little_endian);
      for (std::size_t capacity = 0; capacity < octets->size(); ++capacity) {
        const std::unique_ptr<unsigned char[]> block(new unsigned char[capacity]);
        EXPECT_FALSE(encoding.plugin.serialize(sample.memory(), block.get(), capacity));
      }
    }
  }
}

TEST(Cdr, OfDataThatCannotBeWrittenIsRefused) {
  unsigned char buffer[100];
  const char* text = nullptr;
  EXPECT_FALSE(dds::string_plugin.serialize(&text, buffer, sizeof buffer));
  EXPECT_LE(dds::string_plugin.serialized_size(&text), sizeof buffer);
  const DDS_Octets negative{-1, buffer};
  EXPECT_FALSE(dds::octets_plugin.serialize(&negative, buffer, sizeof buffer));
  EXPECT_LE(dds::octets_plugin.serialized_size(&negative), sizeof buffer);
  const DDS_Octets null{1, nullptr};
  EXPECT_FALSE(dds::octets_plugin.serialize(&null, buffer, sizeof buffer));
}

TEST(HostileCdr, IsRefusedWhereverItIsCutOffOrGoesOnAfterPaddingOrInAForeignEncapsulation) {
  for (const Valid& encoding : valid_encodings()) {
    for (const Octets& octets : {encoding.little_endian, encoding.big_endian}) {
      for (std::size_t length = 0; length < octets.size(); ++length) {
        EXPECT_FALSE(is_accepted(encoding.plugin, Octets(octets.begin(), octets.begin() + static_cast<int>(length))));
      }
      Octets longer = octets;
      for (int extra = 1; extra <= 8; ++extra) {
        longer.push_back(0);
        EXPECT_EQ(is_accepted(encoding.plugin, longer), extra < 4);
      }
      for (const auto& [position, value] : {std::pair(0u, 1), {0u, 255}, {1u, 2}, {1u, 3}, {1u, 7}, {1u, 255}}) {
        Octets foreign = octets;
        foreign[position] = static_cast<unsigned char>(value);
        EXPECT_FALSE(is_accepted(encoding.plugin, foreign));
      }
    }
  }
}

TEST(HostileCdr, WithLengthsThatLieIsRefused) {
  for (const std::uint32_t lie : {0u, 5u, 7u, 8u, 0x100u, 0x7fffffffu, 0x80000000u, 0xfffffffbu, 0xffffffffu}) {
    EXPECT_FALSE(is_accepted(dds::string_plugin, Encoding(true).length(lie).raw(std::string("hello\0", 6)).octets()));
    EXPECT_FALSE(is_accepted(dds::keyed_string_plugin,
                             Encoding(false).string("key").length(lie).raw(std::string("hello\0", 6)).octets()));
    EXPECT_FALSE(is_accepted(dds::keyed_octets_plugin, Encoding(true).length(lie).raw("hello").sequence("x").octets()));
    if (lie > 6) { EXPECT_FALSE(is_accepted(dds::octets_plugin, Encoding(true).length(lie).raw("octets").octets())); }
  }
}

TEST(HostileCdr, WithStringsThatAreNoneIsRefused) {
  const std::string embedded("he\0lo", 5);
  EXPECT_FALSE(is_accepted(dds::string_plugin, Encoding(true).string(embedded).octets()));
  EXPECT_FALSE(is_accepted(dds::string_plugin, Encoding(true).sequence("hello").octets())) << "no terminator";
  EXPECT_FALSE(is_accepted(dds::keyed_string_plugin, Encoding(true).string(embedded).string("value").octets()));
  EXPECT_FALSE(is_accepted(dds::keyed_string_plugin, Encoding(true).string("key").string(embedded).octets()));
}

TEST(HostileCdr, LeavesTheSampleAsItWasAndUsable) {
  OwnSample sample(dds::keyed_string_plugin);
  ASSERT_TRUE(deserialize(dds::keyed_string_plugin, sample, Encoding(true).string("key").string("value").octets()));
  EXPECT_FALSE(deserialize(dds::keyed_string_plugin, sample, Encoding(true).string("other").sequence("bad").octets()));
  EXPECT_STREQ(sample.as<DDS_KeyedString>().key, "key");
  EXPECT_STREQ(sample.as<DDS_KeyedString>().value, "value");
}

TEST(HostileCdr, AllocatesNothingForALengthThatIsNotThere) {
  for (const DDS_TypePlugin* plugin : {&dds::string_plugin, &dds::octets_plugin}) {
    OwnSample sample(*plugin);
    const Octets octets = Encoding(true).length(0x10000000).raw("short").octets();
    const int before = allocation_count();
    EXPECT_FALSE(plugin->deserialize(sample.memory(), octets.data(), octets.size()));
    EXPECT_EQ(allocation_count(), before);
  }
}

TEST(HostileCdr, OfRandomChangesYieldsRefusalsOrWholeSamples) {
  std::mt19937 random(4711);
  int accepted = 0;
  for (const Valid& encoding : valid_encodings()) {
    for (int round = 0; round < 4000; ++round) {
      Octets octets = round % 2 == 0 ? encoding.little_endian : encoding.big_endian;
      for (int change = 0; change < 3; ++change) {
        const std::size_t position = random() % octets.size();
        const unsigned char values[] = {0, 1, 4, 0x7f, 0xff, static_cast<unsigned char>(random())};
        octets[position] = values[random() % sizeof values];
      }
      OwnSample sample(encoding.plugin);
      if (!deserialize(encoding.plugin, sample, octets)) { continue; }
      ++accepted;
      const Octets written = serialize(encoding.plugin, sample.memory());
      EXPECT_LE(written.size(), octets.size());
      EXPECT_TRUE(is_accepted(encoding.plugin, written));
    }
  }
  EXPECT_GT(accepted, 0) << "some changes touch only characters";
}

}  // namespace
