#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace dds {

/// A set of numbers that only grows, held as the intervals of neighbours.
class Intervals {
 public:
  bool contains(std::uint64_t number) const;
  /// Adds a number, if it is not there. Throws `std::bad_alloc`, having changed nothing.
  void add(std::uint64_t number);
  std::size_t size() const { return intervals_.size(); }

 private:
  struct Interval {
    std::uint64_t first;
    std::uint64_t last;  // belongs to it
  };

  /// The index of the first interval that begins after the number.
  std::size_t next_after(std::uint64_t number) const;

  std::vector<Interval> intervals_;  // ascending, with at least one number between them
};

/// A set of index keys that only grows. Numbers that were counted are given up in the end, nearly all, in any order: a
/// block of consecutive keys is a bit for each while some are missing, and part of an interval once none is. So what
/// is remembered is never more than a bit a key, and for runs of keys next to nothing.
class DiscardedKeys {
 public:
  static constexpr std::size_t block_size = 4096;

  bool contains(std::uint64_t key) const { return !(blocks_.empty() && full_blocks_.size() == 0) && is_covered(key); }
  /// Adds a key, if it is not there. Throws `std::bad_alloc`, having changed nothing.
  void add(std::uint64_t key);
  /// Blocks with gaps, and runs of blocks without.
  std::size_t part_count() const { return blocks_.size() + full_blocks_.size(); }

 private:
  using Bits = std::array<std::uint64_t, block_size / 64>;
  struct Block {
    std::uint64_t number;
    std::size_t count;  // of bits that are set, fewer than all
    std::unique_ptr<Bits> bits;
  };
  using Blocks = std::vector<Block>;

  // The first number that a writer counts is 1; so that it begins a block, key 0 ends the last one.
  static std::uint64_t block_of(std::uint64_t key) { return (key - 1) / block_size; }
  static std::size_t place_of(std::uint64_t key) { return static_cast<std::size_t>((key - 1) % block_size); }

  bool is_covered(std::uint64_t key) const;
  /// The first block whose number is not smaller; nearly always the last block is the one that is looked for.
  Blocks::const_iterator find(std::uint64_t number) const;
  Block& find_or_add(std::uint64_t number);

  Blocks blocks_;  // with gaps, ascending
  Intervals full_blocks_;
  std::unique_ptr<Bits> spare_;  // of a block that has become full, for the next one
};

}  // namespace dds
