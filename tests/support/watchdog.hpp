#pragma once

#include <chrono>

namespace support {

/// Makes every test abort the process, with the test's name, when it runs for more than 120 s. The main function of the
/// test support calls it.
void install_watchdog();

/// Gives the running test another limit until the object goes out of scope; counted from now.
class WatchdogLimit {
 public:
  explicit WatchdogLimit(std::chrono::seconds limit);
  ~WatchdogLimit();
  WatchdogLimit(const WatchdogLimit&) = delete;
  WatchdogLimit& operator=(const WatchdogLimit&) = delete;
};

}  // namespace support
