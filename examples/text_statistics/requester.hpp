#pragma once

#include <string>

#include "messaging.hpp"
#include "statistics.hpp"

/// Sends pieces of text and gathers the replies. Several threads may use one requester at once.
class Requester {
 public:
  explicit Requester(const Participant& participant);

  /// Asks for the statistics of a text, adds all replies to `sum` and returns how many there were. Throws
  /// `std::runtime_error` when they do not come.
  int request(const std::string& text, Statistics& sum);

 private:
  zemtra::details::RequesterUntypedImpl requester_;
};
