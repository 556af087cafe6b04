#pragma once

#include <string>

namespace support {

/// Makes every test abort the process, with the test's name, when it runs for more than 120 s. The main function of the
/// test support calls it.
void install_watchdog();

/// What the running test waits for, for the watchdog to say. Any thread.
void tell_watchdog(const std::string& waiting_for);
/// Gives the running test another 120 s. For tests of many steps, each of which is short.
void extend_watchdog();

}  // namespace support
