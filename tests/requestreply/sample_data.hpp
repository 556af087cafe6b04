#pragma once

#include <dds/builtin_types.hpp>
#include <requestreply/string_data.hpp>
#include <string>
#include <type_traits>

// Data of the built-in types: as texts that can be compared, and made from strings.

namespace requestreply_test {

inline std::string text(const char* string) { return string == nullptr ? "null" : string; }
inline std::string text(const DDS_Octet* octets, DDS_Long length) {
  if (octets == nullptr) { return "null " + std::to_string(length); }
  return std::string(reinterpret_cast<const char*>(octets), static_cast<std::size_t>(length));
}
inline std::string text(const std::string& string) { return string; }
inline std::string text(zemtra::StringData string) { return string; }
inline std::string text(const DDS_Octets& data) { return text(data.value, data.length); }
inline std::string text(const DDS_KeyedString& data) { return text(data.key) + ":" + text(data.value); }
inline std::string text(const DDS_KeyedOctets& data) { return text(data.key) + ":" + text(data.value, data.length); }

inline DDS_Octet* octets(std::string& string) { return reinterpret_cast<DDS_Octet*>(string.data()); }

/// Data that refers to the characters of two strings; `drop` lacks the pointer of that number.
template <class T>
T data_of(std::string& key, std::string& value, int drop) {
  const auto length = static_cast<DDS_Long>(value.size());
  if constexpr (std::is_same_v<T, DDS_Octets>) {
    return {length, drop == 1 ? nullptr : octets(value)};
  } else if constexpr (std::is_same_v<T, DDS_KeyedString>) {
    return {drop == 1 ? nullptr : key.data(), drop == 2 ? nullptr : value.data()};
  } else if constexpr (std::is_same_v<T, DDS_KeyedOctets>) {
    return {drop == 1 ? nullptr : key.data(), length, drop == 2 ? nullptr : octets(value)};
  } else if constexpr (std::is_same_v<T, std::string>) {
    return value;
  } else {
    return drop == 1 ? nullptr : value.data();
  }
}

}  // namespace requestreply_test
