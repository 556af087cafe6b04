#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace dds {

/// A set of index keys that only grows. Keys that follow one another take the place of one, so that numbers given up in
/// nearly the order in which they were counted cost next to nothing, however many there are.
class DiscardedKeys {
 public:
  bool contains(std::uint64_t key) const { return !intervals_.empty() && is_covered(key); }
  /// Adds a key, if it is not there. Throws `std::bad_alloc`, having changed nothing.
  void add(std::uint64_t key);
  std::size_t interval_count() const { return intervals_.size(); }

 private:
  struct Interval {
    std::uint64_t first;
    std::uint64_t last;  // belongs to it
  };

  bool is_covered(std::uint64_t key) const;
  /// The index of the first interval that begins after the key.
  std::size_t next_after(std::uint64_t key) const;

  std::vector<Interval> intervals_;  // ascending, with at least one key between them
};

}  // namespace dds
