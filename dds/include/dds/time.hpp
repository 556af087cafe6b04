#pragma once

#include <dds/basic_types.hpp>

/// A point in time since the Unix epoch: seconds, and nanoseconds below one second.
struct DDS_Time_t {
  std::int32_t sec = 0;
  std::uint32_t nanosec = 0;
};

/// A length of time: seconds (negative for a negative duration) and nanoseconds below one second, always added.
struct DDS_Duration_t {
  std::int32_t sec = 0;
  std::uint32_t nanosec = 0;
};

constexpr DDS_Duration_t DDS_DURATION_ZERO{0, 0};
/// A wait without time-out.
constexpr DDS_Duration_t DDS_DURATION_INFINITE{0x7fffffff, 0x7fffffff};
/// Stands for "now" where a source time-stamp may be given.
constexpr DDS_Time_t DDS_TIME_INVALID{-1, 0xffffffff};

constexpr bool operator==(const DDS_Duration_t& a, const DDS_Duration_t& b) {
  return a.sec == b.sec && a.nanosec == b.nanosec;
}
constexpr bool operator!=(const DDS_Duration_t& a, const DDS_Duration_t& b) { return !(a == b); }
constexpr bool operator==(const DDS_Time_t& a, const DDS_Time_t& b) { return a.sec == b.sec && a.nanosec == b.nanosec; }
constexpr bool operator!=(const DDS_Time_t& a, const DDS_Time_t& b) { return !(a == b); }

namespace dds {

constexpr bool is_valid(const DDS_Time_t& time) { return time.nanosec < 1000000000; }

/// Nanoseconds of a finite duration or time; never overflows, since the seconds have 32 bits.
constexpr std::int64_t to_nanoseconds(std::int32_t sec, std::uint32_t nanosec) {
  return std::int64_t{sec} * 1000000000 + nanosec;
}

/// The duration of `nanoseconds`, held at the largest and smallest finite values.
constexpr DDS_Duration_t to_duration(std::int64_t nanoseconds) {
  constexpr std::int64_t second = 1000000000;
  std::int64_t sec = nanoseconds / second;
  std::int64_t rest = nanoseconds % second;
  if (rest < 0) {
    rest += second;
    --sec;
  }
  if (sec > 0x7ffffffe) { return {0x7ffffffe, 999999999}; }
  if (sec < -0x7fffffff) { return {-0x7fffffff, 0}; }
  return {static_cast<std::int32_t>(sec), static_cast<std::uint32_t>(rest)};
}

}  // namespace dds

/// The signed length of time from `earlier` to `later`.
constexpr DDS_Duration_t operator-(const DDS_Time_t& later, const DDS_Time_t& earlier) {
  return dds::to_duration(dds::to_nanoseconds(later.sec, later.nanosec) -
                          dds::to_nanoseconds(earlier.sec, earlier.nanosec));
}

/// Infinite minus anything is infinite. A finite result may be negative; a wait treats it as no time.
constexpr DDS_Duration_t operator-(const DDS_Duration_t& a, const DDS_Duration_t& b) {
  return a == DDS_DURATION_INFINITE
             ? a
             : dds::to_duration(dds::to_nanoseconds(a.sec, a.nanosec) - dds::to_nanoseconds(b.sec, b.nanosec));
}
