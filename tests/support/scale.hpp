#pragma once

namespace support {

/// How much slower than a plain build this one runs, roughly.
constexpr int slowdown() {
#if defined(__SANITIZE_THREAD__)
  return 8;
#elif defined(__SANITIZE_ADDRESS__)
  return 4;
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
  return 8;
#elif __has_feature(address_sanitizer)
  return 4;
#else
  return 1;
#endif
#else
  return 1;
#endif
}

/// The repetitions of a stress test that take about as long in this build as `count` do in a plain one.
constexpr int scaled(int count) { return count / slowdown() > 0 ? count / slowdown() : 1; }

}  // namespace support
