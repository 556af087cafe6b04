#pragma once

#include <cstdint>

namespace bench {

// The first eight octets of a payload are its tag, which tells whether an answer is that to the request.

std::uint64_t tag_of(const unsigned char* octets);

/// The tag that ends who answers.
constexpr std::uint64_t stop_tag = UINT64_MAX;

/// Ends the process when an end of a round trip sees another tag than it must, since a figure for wrong answers means
/// nothing.
void check_tag(std::uint64_t tag, std::uint64_t expected);

/// Says on the standard error why the benchmark cannot go on, and ends the process at once, whatever its threads do.
[[noreturn]] void fail(const char* reason);

}  // namespace bench
