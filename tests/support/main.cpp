#include <gmock/gmock.h>

#include "support/watchdog.hpp"

int main(int argc, char** argv) {
  ::testing::InitGoogleMock(&argc, argv);
  support::install_watchdog();
  return RUN_ALL_TESTS();
}
