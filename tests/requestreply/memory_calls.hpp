#pragma once

#include <string>

namespace requestreply_test {

/// While it lives, notes the calls with which samples copy and release, and lets one of their allocations fail. For one
/// thread; while a second one lives, the first one does nothing.
class MemoryCalls {
 public:
  /// The allocation that fails, counted from 1; 0 for none.
  explicit MemoryCalls(int failing = 0);
  ~MemoryCalls();
  MemoryCalls(const MemoryCalls&) = delete;
  MemoryCalls& operator=(const MemoryCalls&) = delete;

  /// The calls so far, each with a blank behind it.
  const std::string& trace() const { return trace_; }
  /// How many strings and buffers were made and not released.
  int held() const { return held_; }
  /// Whether it has come to the allocation that fails.
  bool failed() const { return allocations_ >= failing_; }

  void note(const char* call) { trace_ += std::string(call) + " "; }
  bool fails_now() { return ++allocations_ == failing_; }
  void count(bool made, bool released) { held_ += (made ? 1 : 0) - (released ? 1 : 0); }

 private:
  MemoryCalls* const outer_;
  const int failing_;
  int allocations_ = 0;
  int held_ = 0;
  std::string trace_;
};

}  // namespace requestreply_test
