#pragma once

namespace support {

/// Makes every test abort the process, with the test's name, when it runs for more than 120 s. The main function of the
/// test support calls it.
void install_watchdog();

}  // namespace support
