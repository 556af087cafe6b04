#include "filter/literal.hpp"

#include <charconv>

namespace dds {
namespace {

/// -1 for what is no digit.
int hexadecimal_digit(char c) {
  if (c >= '0' && c <= '9') { return c - '0'; }
  if (c >= 'a' && c <= 'f') { return c - 'a' + 10; }
  if (c >= 'A' && c <= 'F') { return c - 'A' + 10; }
  return -1;
}

}  // namespace

bool parse_guid(std::string_view digits, DDS_GUID_t& guid) noexcept {
  if (digits.size() != 2 * sizeof guid.value) { return false; }
  for (std::size_t i = 0; i < sizeof guid.value; ++i) {
    const int high = hexadecimal_digit(digits[2 * i]);
    const int low = hexadecimal_digit(digits[2 * i + 1]);
    if (high < 0 || low < 0) { return false; }
    guid.value[i] = static_cast<DDS_Octet>(high * 16 + low);
  }
  return true;
}

bool parse_integer(std::string_view text, std::int64_t& number) noexcept {
  if (!text.empty() && text.front() == '+') { text.remove_prefix(1); }
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && stop == end;
}

std::string unquote(std::string_view quoted) {
  std::string text;
  text.reserve(quoted.size());
  for (std::size_t i = 0; i < quoted.size(); ++i) {
    text.push_back(quoted[i]);
    if (quoted[i] == '\'') { ++i; }
  }
  return text;
}

}  // namespace dds
