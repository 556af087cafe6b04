#pragma once

#include <algorithm>
#include <memory>
#include <vector>

#include <gtest/gtest.h>
#include <zemtra/type_traits.hpp>

// Samples to and from octets, as a transport would do it.
namespace codec {

using Octets = std::vector<unsigned char>;

template <class T>
Octets encode(const T& value) {
  const DDS_TypePlugin plugin = zemtra::details::plugin_of<T>();
  Octets octets(plugin.serialized_size(&value), 0xAA);
  EXPECT_TRUE(plugin.serialize(&value, octets.data(), octets.size()));
  return octets;
}

template <class T>
bool fits(const T& value, std::size_t capacity) {
  const auto exact = std::make_unique<unsigned char[]>(capacity);  // so that sanitizers see what is written beyond it
  return zemtra::details::plugin_of<T>().serialize(&value, exact.get(), capacity);
}

template <class T>
bool decode(const Octets& octets, T& value) {
  const auto exact = std::make_unique<unsigned char[]>(octets.size());
  std::copy(octets.begin(), octets.end(), exact.get());
  return zemtra::details::plugin_of<T>().deserialize(&value, exact.get(), octets.size());
}

/// Expects a sample to be refused in every buffer that is too small, and when anything but padding follows it.
template <class T>
void expect_refused_unless_whole(const T& value) {
  const Octets whole = encode(value);
  T read{};
  for (std::size_t length = 0; length < whole.size(); ++length) {
    EXPECT_FALSE(decode(Octets(whole.data(), whole.data() + length), read)) << length;
    EXPECT_FALSE(fits(value, length)) << length;
  }
  Octets longer = whole;
  longer.resize(whole.size() + 3);
  EXPECT_TRUE(decode(longer, read)) << "padding";
  longer.resize(whole.size() + 4);
  EXPECT_FALSE(decode(longer, read));
}

}  // namespace codec
