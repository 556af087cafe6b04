#pragma once

#include <cstdint>
#include <dds/identity.hpp>
#include <dds/time.hpp>
#include <string>

namespace support {

constexpr DDS_Duration_t milliseconds(int count) {
  return {count / 1000, static_cast<std::uint32_t>(count % 1000) * 1000000u};
}

/// The 32 digits by which filter expressions and the names of correlation topics show a GUID.
inline std::string hexadecimal(const DDS_GUID_t& guid) {
  std::string text;
  for (const DDS_Octet octet : guid.value) {
    text += "0123456789abcdef"[octet >> 4];
    text += "0123456789abcdef"[octet & 15];
  }
  return text;
}

}  // namespace support
