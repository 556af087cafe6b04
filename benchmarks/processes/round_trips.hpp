#pragma once

#include <string>

#include "support/placement.hpp"

namespace bench {

/// A round trip between two processes, over RTPS.
struct ProcessesCase {
  std::string mode;  ///< "blocking" or "pipelined"
  std::string pin;
  std::size_t payload;
  long rounds;
  long count;
};

/// Compares it with what is written by hand with the engine's own API, and prints the result: with a replier that
/// answers in a thread of the application, which is the reference, and, for information, with one that answers in a
/// listener. Moves this thread to the requester's place.
void compare_with_hand_written(const ProcessesCase& c);

}  // namespace bench
