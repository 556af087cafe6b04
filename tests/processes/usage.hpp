#pragma once

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "processes.hpp"

namespace processes {

/// What a process uses, while others come and go beside it.
class Usage {
 public:
  /// What it uses now is what it may use.
  explicit Usage(const Child& child) : child_(child), descriptors_(child.descriptors()), threads_(child.threads()) {}

  /// Waits until it uses as many file descriptors and threads as in the beginning, exactly.
  void await_initial() const {
    until("as many descriptors and threads as in the beginning",
          [&] { return child_.descriptors() == descriptors_ && child_.threads() == threads_; });
  }
  void add(int heap_octets) {
    heap_.push_back(heap_octets);
    resident_.push_back(child_.resident_kib());
  }
  /// That the memory of the last quarter of the time is that of the second one. The least of each counts: what is in
  /// use for a moment only adds to it. Says nothing about a few cycles, nor under sanitizers, which have a heap of
  /// their own.
  void expect_no_growth() const {
    if (heap_.size() < 100 || support::slowdown() > 1) { return; }
    // The engine keeps up to 1.5 KiB for every participant that has been there, and fills its receive buffer of 1 MiB
    // from one end to the other before it takes a new one.
    const int kept = static_cast<int>(heap_.size()) / 2 * 2048;
    EXPECT_LE(least(heap_, 3), least(heap_, 1) + 64 * 1024 + kept);
    EXPECT_LE(least(resident_, 3), least(resident_, 1) + 1536 + kept / 1024);
    std::printf("%zu cycles; heap: %d, then %d octets; resident: %d, then %d KiB\n", heap_.size(), least(heap_, 1),
                least(heap_, 3), least(resident_, 1), least(resident_, 3));
  }

 private:
  static int least(const std::vector<int>& values, std::size_t quarter) {
    const auto at = [&](std::size_t i) { return values.begin() + static_cast<std::ptrdiff_t>(values.size() * i / 4); };
    return *std::min_element(at(quarter), at(quarter + 1));
  }

  const Child& child_;
  const int descriptors_, threads_;
  std::vector<int> heap_, resident_;
};

}  // namespace processes
