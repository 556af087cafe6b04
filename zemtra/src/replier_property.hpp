#pragma once

#include <string>

#include <dds/identity.hpp>

namespace zemtra {
namespace details {

/// The property in which a replier's reader names the same replier's writer, by `property_value` of its GUID.
constexpr const char* kReplyWriterProperty = "zemtra.reply_writer_guid";

/// The property of a writer that its replier's reader names: there is no need to guess whose it is.
constexpr const char* kNamedWriterProperty = "zemtra.named_reply_writer";

/// 32 hexadecimal digits.
inline std::string property_value(const DDS_GUID_t& guid) {
  constexpr char digits[] = "0123456789abcdef";
  std::string text;
  text.reserve(2 * sizeof(guid.value));
  for (const DDS_Octet octet : guid.value) {
    text += digits[octet >> 4];
    text += digits[octet & 0xf];
  }
  return text;
}

}  // namespace details
}  // namespace zemtra
