#include "cache/discarded_keys.hpp"

#include <algorithm>

namespace dds {

// Nearly always the last interval is the one that matters.
std::size_t DiscardedKeys::next_after(std::uint64_t key) const {
  if (intervals_.empty() || intervals_.back().first <= key) { return intervals_.size(); }
  const auto next = std::upper_bound(intervals_.begin(), intervals_.end(), key,
                                     [](std::uint64_t k, const Interval& interval) { return k < interval.first; });
  return static_cast<std::size_t>(next - intervals_.begin());
}

bool DiscardedKeys::is_covered(std::uint64_t key) const {
  const std::size_t next = next_after(key);
  return next != 0 && key <= intervals_[next - 1].last;
}

void DiscardedKeys::add(std::uint64_t key) {
  const std::size_t next = next_after(key);
  if (next != 0 && key <= intervals_[next - 1].last) { return; }
  const bool after_previous = next != 0 && key - intervals_[next - 1].last == 1;
  const bool before_next = next != intervals_.size() && intervals_[next].first - key == 1;
  const auto position = intervals_.begin() + static_cast<std::ptrdiff_t>(next);
  if (after_previous && before_next) {
    intervals_[next - 1].last = intervals_[next].last;
    intervals_.erase(position);
  } else if (after_previous) {
    intervals_[next - 1].last = key;
  } else if (before_next) {
    intervals_[next].first = key;
  } else {
    intervals_.insert(position, {key, key});
  }
}

}  // namespace dds
