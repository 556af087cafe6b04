#pragma once

namespace behaviour {

/// Makes one heap allocation of this thread fail: the `nth` from now on, counted from 1, whichever function it goes
/// through. One at a time on a thread.
class FailingAllocation {
 public:
  explicit FailingAllocation(int nth);
  ~FailingAllocation();
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;

  /// Whether it has come to that.
  bool happened() const;
};

/// How many allocations this thread has made or tried.
long allocation_count();

}  // namespace behaviour
