#include "types/builtin_plugins.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "allocations.hpp"
#include "own_sample.hpp"
#include "recorded_log.hpp"

namespace {

using dds::keyed_octets_plugin;
using dds::keyed_string_plugin;
using dds::octets_plugin;
using dds::string_plugin;

/// Application data of the keyed and octet types, without ownership.
DDS_KeyedString keyed_string(const char* key, const char* value) {
  return {const_cast<char*>(key), const_cast<char*>(value)};
}
DDS_KeyedOctets keyed_octets(const char* key, std::vector<DDS_Octet>& value) {
  return {const_cast<char*>(key), static_cast<DDS_Long>(value.size()), value.data()};
}

bool is_aligned(const void* buffer) { return reinterpret_cast<std::uintptr_t>(buffer) % 32 == 0; }

bool copy_string(OwnSample& sample, const char* text) { return string_plugin.copy(sample.memory(), &text); }

TEST(BuiltinPlugins, HaveNamesAndAreToldApartAlsoAsCopies) {
  EXPECT_STREQ(DDSStringTypeSupport::get_type_name(), "DDS::String");
  EXPECT_STREQ(DDSKeyedStringTypeSupport::get_type_name(), "DDS::KeyedString");
  EXPECT_STREQ(DDSOctetsTypeSupport::get_type_name(), "DDS::Octets");
  EXPECT_STREQ(DDSKeyedOctetsTypeSupport::get_type_name(), "DDS::KeyedOctets");
  RecordedLog log;
  EXPECT_EQ(DDSStringTypeSupport::register_type(nullptr, nullptr), DDS_RETCODE_BAD_PARAMETER);
  EXPECT_EQ(log.take_text(), "bad parameter: null participant for type DDS::String");
  const DDS_TypePlugin copy = keyed_string_plugin;
  EXPECT_EQ(dds::builtin_kind(copy), dds::BuiltinKind::keyed_string);
  EXPECT_EQ(dds::builtin_kind(string_plugin), dds::BuiltinKind::string);
  EXPECT_EQ(dds::builtin_kind(octets_plugin), dds::BuiltinKind::octets);
  EXPECT_EQ(dds::builtin_kind(keyed_octets_plugin), dds::BuiltinKind::keyed_octets);
  DDS_TypePlugin other = string_plugin;
  other.serialize = octets_plugin.serialize;
  EXPECT_EQ(dds::builtin_kind(other), dds::BuiltinKind::none);
}

TEST(BuiltinPlugins, CopiesAreWholeAlignedAndAllocateNothingOnceTheSampleWasLargeEnoughAndLittleUntilThen) {
  OwnSample string(string_plugin);
  OwnSample keyed(keyed_octets_plugin);
  std::vector<DDS_Octet> large(100000, 7);
  std::vector<DDS_Octet> small(10);
  const std::string text(70000, 'x');
  const DDS_KeyedOctets large_data = keyed_octets("a longer key than the first thirty-two octets", large);
  const DDS_KeyedOctets small_data = keyed_octets("short key", small);
  ASSERT_TRUE(copy_string(string, text.c_str()));
  ASSERT_TRUE(keyed_octets_plugin.copy(keyed.memory(), &large_data));
  const int before = allocation_count();
  for (int i = 0; i < 10; ++i) {
    ASSERT_TRUE(copy_string(string, i % 2 == 0 ? text.c_str() : "short"));
    ASSERT_TRUE(keyed_octets_plugin.copy(keyed.memory(), i % 2 == 0 ? &small_data : &large_data));
  }
  EXPECT_EQ(allocation_count(), before);
  const auto& keyed_copy = keyed.as<DDS_KeyedOctets>();
  EXPECT_TRUE(is_aligned(keyed_copy.value) && keyed_copy.value != large.data());
  EXPECT_EQ(std::vector<DDS_Octet>(keyed_copy.value, keyed_copy.value + keyed_copy.length), large);
  EXPECT_STREQ(keyed_copy.key, large_data.key);
  OwnSample growing(string_plugin);
  std::string grown;
  grown.reserve(1000000);
  const int at_first = allocation_count();
  const auto copies_grown = [&] {
    if (!copy_string(growing, grown.c_str())) { return false; }
    const char* copy = growing.as<char*>();
    return copy != grown.c_str() && copy == grown && is_aligned(copy);
  };
  for (; grown.size() < 1000; grown += 'x') { ASSERT_TRUE(copies_grown()) << grown.size(); }
  EXPECT_LE(allocation_count() - at_first, 5);
  for (const std::size_t length : {65535u, 65536u, 1000000u, 5u}) {
    grown.assign(length, 'y');
    EXPECT_TRUE(copies_grown()) << length;
  }
}

TEST(BuiltinPlugins, RefuseWhatCannotBeWrittenAndStayUsable) {
  OwnSample string(string_plugin);
  EXPECT_FALSE(copy_string(string, nullptr));
  EXPECT_TRUE(copy_string(string, "text"));
  EXPECT_STREQ(string.as<char*>(), "text");

  OwnSample keyed(keyed_string_plugin);
  for (const DDS_KeyedString& data : {keyed_string(nullptr, "value"), keyed_string("key", nullptr)}) {
    EXPECT_FALSE(keyed_string_plugin.copy(keyed.memory(), &data));
  }
  const DDS_KeyedString without_key = keyed_string(nullptr, "value");
  EXPECT_FALSE(keyed_string_plugin.copy_key(keyed.memory(), &without_key));

  DDS_Octet octet = 1;
  OwnSample octets_sample(octets_plugin);
  OwnSample keyed_sample(keyed_octets_plugin);
  char key[] = "key";
  for (const DDS_Octets& data : {DDS_Octets{-1, &octet}, DDS_Octets{1, nullptr}}) {
    EXPECT_FALSE(octets_plugin.copy(octets_sample.memory(), &data));
    const DDS_KeyedOctets with_key{key, data.length, data.value};
    EXPECT_FALSE(keyed_octets_plugin.copy(keyed_sample.memory(), &with_key));
  }
  const DDS_Octets empty{0, nullptr};
  EXPECT_TRUE(octets_plugin.copy(octets_sample.memory(), &empty));
  const DDS_KeyedOctets unkeyed{nullptr, 0, nullptr};
  EXPECT_FALSE(keyed_octets_plugin.copy(keyed_sample.memory(), &unkeyed));
}

TEST(BuiltinPlugins, ExhaustedMemoryLeavesASampleThatCanBeCopiedToAgain) {
  for (const DDS_TypePlugin* plugin : {&string_plugin, &keyed_string_plugin, &keyed_octets_plugin}) {
    alignas(32) unsigned char memory[128];
    ASSERT_LE(plugin->size, sizeof memory);
    fail_each_allocation([&] { return plugin->construct(memory); }, [] {});
    plugin->destroy(memory);
  }
  const std::string text(1000, 'x');
  const DDS_KeyedString data = keyed_string(text.c_str(), text.c_str());
  OwnSample sample(keyed_string_plugin);
  fail_each_allocation([&] { return keyed_string_plugin.copy(sample.memory(), &data); },
                       [&] {
                         EXPECT_LE(std::strlen(sample.as<DDS_KeyedString>().key), 1000u);
                         EXPECT_STREQ(sample.as<DDS_KeyedString>().value, "");
                       });
  EXPECT_EQ(sample.as<DDS_KeyedString>().value, text);
}

std::vector<unsigned char> key_of(const DDS_TypePlugin& plugin, const void* data) {
  std::vector<unsigned char> key(plugin.key(data, nullptr, 0));
  EXPECT_EQ(plugin.key(data, key.data(), key.size()), key.size());
  return key;
}

TEST(Keys, AreEqualExactlyForEqualKeysAndNotWrittenBeyondTheCapacity) {
  const char* keys[] = {"", "a", "ab", "b", nullptr};
  for (const char* a : keys) {
    for (const char* b : keys) {
      const DDS_KeyedString first = keyed_string(a, "one value");
      const DDS_KeyedString second = keyed_string(b, "another");
      EXPECT_EQ(key_of(keyed_string_plugin, &first) == key_of(keyed_string_plugin, &second), a == b);
    }
  }
  const DDS_KeyedString data = keyed_string("long key", "value");
  unsigned char buffer[4] = {1, 2, 3, 4};
  EXPECT_GT(keyed_string_plugin.key(&data, buffer, sizeof buffer), sizeof buffer);
  EXPECT_EQ(buffer[0], 1);
}

TEST(Keys, AreCopiedAloneAndEmptyTheRest) {
  std::vector<DDS_Octet> value{1, 2};
  OwnSample string(keyed_string_plugin);
  OwnSample octets_sample(keyed_octets_plugin);
  const DDS_KeyedString string_data = keyed_string("key", "value");
  const DDS_KeyedOctets octets_data = keyed_octets("key", value);
  ASSERT_TRUE(keyed_string_plugin.copy(string.memory(), &string_data));
  ASSERT_TRUE(keyed_octets_plugin.copy(octets_sample.memory(), &octets_data));
  const DDS_KeyedString other_string{const_cast<char*>("other"), nullptr};
  const DDS_KeyedOctets other_octets{const_cast<char*>("other"), -5, nullptr};
  ASSERT_TRUE(keyed_string_plugin.copy_key(string.memory(), &other_string));
  ASSERT_TRUE(keyed_octets_plugin.copy_key(octets_sample.memory(), &other_octets));
  EXPECT_STREQ(string.as<DDS_KeyedString>().key, "other");
  EXPECT_STREQ(string.as<DDS_KeyedString>().value, "");
  EXPECT_STREQ(octets_sample.as<DDS_KeyedOctets>().key, "other");
  EXPECT_EQ(octets_sample.as<DDS_KeyedOctets>().length, 0);
}

}  // namespace
