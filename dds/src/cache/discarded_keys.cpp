#include "cache/discarded_keys.hpp"

#include <algorithm>

namespace dds {

// Nearly always the last interval is the one that matters.
std::size_t Intervals::next_after(std::uint64_t number) const {
  if (intervals_.empty() || intervals_.back().first <= number) { return intervals_.size(); }
  const auto next = std::upper_bound(intervals_.begin(), intervals_.end(), number,
                                     [](std::uint64_t n, const Interval& interval) { return n < interval.first; });
  return static_cast<std::size_t>(next - intervals_.begin());
}

bool Intervals::contains(std::uint64_t number) const {
  const std::size_t next = next_after(number);
  return next != 0 && number <= intervals_[next - 1].last;
}

void Intervals::add(std::uint64_t number) {
  const std::size_t next = next_after(number);
  if (next != 0 && number <= intervals_[next - 1].last) { return; }
  const bool after_previous = next != 0 && number - intervals_[next - 1].last == 1;
  const bool before_next = next != intervals_.size() && intervals_[next].first - number == 1;
  const auto position = intervals_.begin() + static_cast<std::ptrdiff_t>(next);
  if (after_previous && before_next) {
    intervals_[next - 1].last = intervals_[next].last;
    intervals_.erase(position);
  } else if (after_previous) {
    intervals_[next - 1].last = number;
  } else if (before_next) {
    intervals_[next].first = number;
  } else {
    intervals_.insert(position, {number, number});
  }
}

DiscardedKeys::Blocks::const_iterator DiscardedKeys::find(std::uint64_t number) const {
  if (blocks_.empty() || blocks_.back().number < number) { return blocks_.end(); }
  if (blocks_.back().number == number) { return blocks_.end() - 1; }
  return std::lower_bound(blocks_.begin(), blocks_.end(), number,
                          [](const Block& block, std::uint64_t n) { return block.number < n; });
}

bool DiscardedKeys::is_covered(std::uint64_t key) const {
  const auto block = find(block_of(key));
  if (block == blocks_.end() || block->number != block_of(key)) { return full_blocks_.contains(block_of(key)); }
  const std::size_t place = place_of(key);
  return ((*block->bits)[place / 64] >> (place % 64) & 1u) != 0;
}

DiscardedKeys::Block& DiscardedKeys::find_or_add(std::uint64_t number) {
  const auto position = blocks_.begin() + (find(number) - blocks_.cbegin());
  if (position != blocks_.end() && position->number == number) { return *position; }
  if (spare_ == nullptr) { spare_ = std::make_unique<Bits>(); }
  const auto added = blocks_.insert(position, Block{number, 0, nullptr});
  added->bits = std::move(spare_);
  return *added;
}

void DiscardedKeys::add(std::uint64_t key) {
  if (is_covered(key)) { return; }
  Block& block = find_or_add(block_of(key));
  if (block.count + 1 == block_size) {
    full_blocks_.add(block.number);
    spare_ = std::move(block.bits);
    spare_->fill(0);
    blocks_.erase(blocks_.begin() + (&block - blocks_.data()));
    return;
  }
  const std::size_t place = place_of(key);
  (*block.bits)[place / 64] |= std::uint64_t{1} << (place % 64);
  ++block.count;
}

}  // namespace dds
