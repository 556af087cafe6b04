#pragma once

#include <cstdint>
#include <iterator>
#include <map>
#include <string>

/// What can be counted in a text. The counts of the paragraphs of a text add up to the counts of the text.
///
/// A word is a run of letters; every octet above ASCII counts as a letter, so that words of UTF-8 texts stay whole.
struct Statistics {
  std::uint64_t lines = 0;  ///< that hold more than white space
  std::uint64_t words = 0;
  std::uint64_t letters = 0;                            ///< octets of words
  std::map<std::uint64_t, std::uint64_t> word_lengths;  ///< how many words have that many octets
  std::map<std::string, std::uint64_t> frequencies;     ///< how often each word occurs, in lower case
};

bool operator==(const Statistics& a, const Statistics& b);

Statistics count(const std::string& text);

// A request, a piece of text, is answered by several replies: one for each kind of statistics, each a line of text that
// begins with the name of its kind. The requester knows how many to wait for.

enum class Kind { totals, word_lengths, frequencies };
constexpr Kind all_kinds[] = {Kind::totals, Kind::word_lengths, Kind::frequencies};
constexpr int replies_per_request = std::size(all_kinds);

/// The part of `statistics` that a reply of that kind carries.
std::string to_reply(const Statistics& statistics, Kind kind);

/// Adds what a reply carries to `sum`. Throws `std::runtime_error` for a text that is no such reply.
void add_reply(Statistics& sum, const std::string& reply);

/// Adds one to the other.
void add(Statistics& sum, const Statistics& part);
