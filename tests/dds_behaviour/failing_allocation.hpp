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

/// Makes one in `every` of the allocations fail that other threads than this make with `new`. One at a time.
class FailingElsewhere {
 public:
  explicit FailingElsewhere(long every);
  ~FailingElsewhere();
  FailingElsewhere(const FailingElsewhere&) = delete;
  FailingElsewhere& operator=(const FailingElsewhere&) = delete;

  /// How many have failed.
  long failures() const;
};

/// How many allocations this thread has made or tried.
long allocation_count();

}  // namespace behaviour
