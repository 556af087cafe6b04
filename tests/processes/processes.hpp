#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "child.hpp"
#include "support/scale.hpp"
#include "support/watchdog.hpp"

namespace processes {

/// How often something is repeated: seldom among the other tests, often in a soak run, for which the environment
/// variable ZEMTRA_SOAK is set.
inline int repetitions(int short_form, int long_form) {
  return std::getenv("ZEMTRA_SOAK") != nullptr ? long_form : support::scaled(short_form);
}

/// Waits for a state that comes by itself.
inline void until(const std::string& what, const std::function<bool()>& holds) {
  constexpr auto patience = std::chrono::seconds(100);
  for (const auto begin = std::chrono::steady_clock::now(); !holds();) {
    if (std::chrono::steady_clock::now() - begin > patience) { throw std::runtime_error("never: " + what); }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
}

/// The numbers in a line.
inline std::vector<int> numbers(const std::string& line) {
  std::istringstream words(line);
  return {std::istream_iterator<int>(words), {}};
}

/// Starts processes that meet nobody but each other.
class ProcessTest : public ::testing::Test {
 protected:
  static std::string service() { return "Service" + std::to_string(getpid()); }
  Child start(const std::string& role, const Words& options = {}, const Words& prefix = {}) const {
    Words command = prefix;
    command.insert(command.end(), {PROCESSES_PEER, role, "dds.transport=rtps", "service=" + service(),
                                   "domain=" + std::to_string(getpid() % 231)});
    command.insert(command.end(), common.begin(), common.end());
    command.insert(command.end(), options.begin(), options.end());
    return Child(command);
  }

  /// Starts a process that makes writers and readers.
  Child start_endpoints(const Words& orders, const Words& options = {}) const {
    Child child = start("endpoints", options);
    for (const std::string& order : orders) { child.ask(order); }
    return child;
  }
  static std::string lease(int milliseconds) {
    return "dds.transport.rtps.lease_milliseconds=" + std::to_string(milliseconds);
  }

  /// For processes that are to die: each says itself after which silence it is to be taken for dead. Not so short that
  /// one might be silent that long on a busy machine.
  const std::string mortal = lease(support::slowdown() > 1 ? 4000 : 1000);
  /// Options of all processes. Nobody is taken for dead who is only busy, on however busy a machine.
  Words common = {lease(600000)};
};

}  // namespace processes
