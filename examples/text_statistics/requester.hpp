#pragma once

#include <string>

#include "messaging.hpp"
#include "statistics.hpp"

/// Sends pieces of text and gathers the replies. Several threads may use one requester at once.
class Requester {
 public:
  Requester(const Participant& participant, const std::string& service);

  /// Waits until there is a replier. Throws `std::runtime_error`, which says what is missing, when none comes.
  void wait_for_replier();

  /// Asks for the statistics of a text, adds all replies to `sum` and returns how many there were. Throws
  /// `std::runtime_error` when they do not come.
  int request(const std::string& text, Statistics& sum);

 private:
  zemtra::details::RequesterUntypedImpl requester_;
};
