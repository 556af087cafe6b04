#include <gmock/gmock.h>

#include "support/other_process.hpp"
#include "support/watchdog.hpp"

int main(int argc, char** argv) {
  ::testing::InitGoogleMock(&argc, argv);
  if (support::is_other_process(argc, argv)) { return support::run_other_process(argc, argv); }
  support::install_watchdog();
  return RUN_ALL_TESTS();
}
