#pragma once

#include <chrono>

#include <dds/time.hpp>

namespace zemtra {

/// A length of time, taken from either of the two worlds: `requester.call(request, 100ms)` or a `DDS_Duration_t`.
class Duration {
 public:
  constexpr Duration(const DDS_Duration_t& duration) noexcept  // NOLINT(google-explicit-constructor): see above
      : duration_(duration) {}
  /// What is too long for DDS, from 68 years on, is infinite. Parts of a nanosecond are dropped.
  template <class Rep, class Period>
  constexpr Duration(
      const std::chrono::duration<Rep, Period>& duration) noexcept  // NOLINT(google-explicit-constructor)
      : duration_(convert(duration)) {}

  constexpr operator DDS_Duration_t() const noexcept { return duration_; }  // NOLINT(google-explicit-constructor)

 private:
  template <class Rep, class Period>
  static constexpr DDS_Duration_t convert(const std::chrono::duration<Rep, Period>& duration) {
    constexpr double longest = 0x7fffffff;  // seconds; compared as such because nanoseconds might overflow
    const double seconds = std::chrono::duration<double>(duration).count();
    if (!(seconds < longest)) { return DDS_DURATION_INFINITE; }
    if (seconds < -longest) { return dds::to_duration(-0x7fffffff * std::int64_t{1000000000}); }
    return dds::to_duration(std::chrono::duration_cast<std::chrono::nanoseconds>(duration).count());
  }

  DDS_Duration_t duration_;
};

/// A moment until which something may take.
class Deadline {
 public:
  using Clock = std::chrono::steady_clock;

  Deadline(Clock::time_point at) noexcept : at_(at) {}  // NOLINT(google-explicit-constructor): a moment is a deadline
  /// So much time from now.
  Deadline(const Duration& from_now) noexcept  // NOLINT(google-explicit-constructor): as everybody would write it
      : at_(add(Clock::now(), from_now)) {}
  template <class Rep, class Period>
  Deadline(const std::chrono::duration<Rep, Period>& from_now) noexcept  // NOLINT(google-explicit-constructor)
      : Deadline(Duration(from_now)) {}
  Deadline(const DDS_Duration_t& from_now) noexcept  // NOLINT(google-explicit-constructor)
      : Deadline(Duration(from_now)) {}

  bool passed() const noexcept { return at_ != Clock::time_point::max() && Clock::now() >= at_; }
  /// Zero once the deadline has passed.
  Duration remaining() const noexcept {
    if (at_ == Clock::time_point::max()) { return DDS_DURATION_INFINITE; }
    const Clock::time_point now = Clock::now();
    return now >= at_ ? Clock::duration::zero() : at_ - now;
  }

 private:
  static Clock::time_point add(Clock::time_point now, const DDS_Duration_t& duration) {
    if (duration == DDS_DURATION_INFINITE) { return Clock::time_point::max(); }
    return now + std::chrono::nanoseconds(dds::to_nanoseconds(duration.sec, duration.nanosec));
  }

  Clock::time_point at_;
};

}  // namespace zemtra
