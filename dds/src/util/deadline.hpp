#pragma once

#include <cstdint>
#include <ctime>
#include <dds/time.hpp>

namespace dds {

inline std::int64_t clock_nanoseconds(clockid_t clock) {
  timespec now{};
  clock_gettime(clock, &now);
  return static_cast<std::int64_t>(now.tv_sec) * 1000000000 + now.tv_nsec;
}

/// The machine's real-time clock.
inline DDS_Time_t current_time() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  return {static_cast<std::int32_t>(now.tv_sec), static_cast<std::uint32_t>(now.tv_nsec)};
}

/// The end of a wait on the monotonic clock. The clock is read when the end is first asked for, so that a wait that
/// does not block never reads it.
class Deadline {
 public:
  explicit Deadline(const DDS_Duration_t& timeout) : timeout_(timeout), infinite_(timeout == DDS_DURATION_INFINITE) {}

  bool infinite() const { return infinite_; }
  /// Zero and negative waits have passed before they began.
  bool immediate() const { return !infinite_ && to_nanoseconds(timeout_.sec, timeout_.nanosec) <= 0; }
  /// Starts the clock if it does not run yet.
  std::int64_t end() {
    if (end_ == 0) { end_ = clock_nanoseconds(CLOCK_MONOTONIC) + to_nanoseconds(timeout_.sec, timeout_.nanosec); }
    return end_;
  }
  bool passed() { return !infinite_ && (immediate() || clock_nanoseconds(CLOCK_MONOTONIC) >= end()); }

 private:
  DDS_Duration_t timeout_;
  bool infinite_;
  std::int64_t end_ = 0;
};

}  // namespace dds
