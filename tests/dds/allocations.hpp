#pragma once

#include <gtest/gtest.h>

// Counts the heap allocations of the calling thread and makes them fail on demand.

/// The number of allocations that this thread has made or tried.
int allocation_count();

/// While it lives, the allocation with the given number (from 0) and all later ones of this thread fail.
class FailingAllocations {
 public:
  explicit FailingAllocations(int first_failing);
  ~FailingAllocations();
  FailingAllocations(const FailingAllocations&) = delete;
  FailingAllocations& operator=(const FailingAllocations&) = delete;
};

/// While it lives, allocations of this thread succeed and are not counted, as those of a test's own machinery should.
class UnwatchedAllocations {
 public:
  UnwatchedAllocations();
  ~UnwatchedAllocations();
  UnwatchedAllocations(const UnwatchedAllocations&) = delete;
  UnwatchedAllocations& operator=(const UnwatchedAllocations&) = delete;

 private:
  const int count_;
  const int first_failing_;
};

/// Runs `operation` with its first allocation failing, then with its second, and so on until it succeeds. After each
/// failure `verify` looks at what is left. The operation must fail at least once.
template <class Operation, class Verify>
void fail_each_allocation(Operation operation, Verify verify) {
  int failures = 0;
  while (true) {
    ASSERT_LT(failures, 1000) << "the operation never succeeds";
    bool succeeded = false;
    {
      const FailingAllocations failing(failures);
      succeeded = operation();
    }
    if (succeeded) { break; }
    verify();
    ++failures;
  }
  EXPECT_GT(failures, 0) << "the operation allocates nothing";
}
