#pragma once

#include <atomic>
#include <future>
#include <string>

#include "messaging.hpp"

/// Answers requests, each a piece of text, with one reply for each kind of statistics, in a thread of its own.
class Replier {
 public:
  Replier(const Participant& participant, const std::string& service);
  /// Ends the thread.
  ~Replier();
  Replier(const Replier&) = delete;
  Replier& operator=(const Replier&) = delete;

  /// Ends the thread, and throws what ended it before, if anything did.
  void stop();

 private:
  void run();
  void answer(const char* text, const DDS_SampleIdentity_t& request);

  zemtra::details::ReplierUntypedImpl replier_;
  std::atomic<bool> stopping_{false};
  std::future<void> thread_;
};
