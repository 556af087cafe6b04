#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

#include "support/watchdog.hpp"

namespace support {

/// Returns when what `look` sees equals `expected`, because another thread or process has brought it about. The
/// watchdog is the limit, and tells what was seen last.
template <class Look, class Value>
void await_equal(const char* text, Look look, const Value& expected) {
  for (;;) {
    const auto seen = look();
    if (seen == expected) { return; }
    tell_watchdog(std::string(text) + " is " + ::testing::PrintToString(seen) + " and not yet " +
                  ::testing::PrintToString(expected));
    std::this_thread::sleep_for(std::chrono::microseconds(200));
  }
}

}  // namespace support

/// An expectation that comes true in time, which is at once where nothing happens by itself.
#define AWAIT_EQ(expression, expected) \
  ::support::await_equal(              \
      #expression, [&] { return expression; }, expected)
