#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <dds/identity.hpp>

namespace dds {

/// False unless the text is exactly 32 hexadecimal digits, of either case.
bool parse_guid(std::string_view digits, DDS_GUID_t& guid) noexcept;

/// A decimal number, with or without sign; false when it does not fit.
bool parse_integer(std::string_view text, std::int64_t& number) noexcept;

/// What stands between the quotes of a string literal, with each doubled quote made one. Throws `std::bad_alloc`.
std::string unquote(std::string_view quoted);

}  // namespace dds
