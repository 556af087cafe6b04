#pragma once

#include "support/entities.hpp"
#include "support/payload.hpp"

namespace bench {

/// Sends requests and receives their replies, in the ways that are measured.
class Requester {
 public:
  Requester(const Participant& participant, std::size_t payload);

  /// For a replier in another process.
  void wait_for_replier() { bench::wait_for_replier(requester_); }
  /// One request at a time, whose reply is waited for.
  void run_blocking(long count);
  /// One request at a time, whose reply is there as soon as the request has been sent.
  void run_listener(long count);
  /// As many as `window` requests under way, whose replies are taken as they come.
  void run_pipelined(long count, long window);
  /// Lets every pool on the way grow to more than any case needs at once, so that what is counted later is the steady
  /// state. For a replier with a thread.
  void fill_pools();
  /// Sends requests and leaves their replies in the reader.
  void leave_unread(long count);
  /// Ends the thread that answers.
  void send_stop();

 private:
  void send();
  void take_reply();
  long take_arrived();
  void check(const Loan& loan, int i, std::uint64_t expected_tag) const;

  zemtra::details::RequesterUntypedImpl requester_;
  Payload request_;
  DDS_WriteParams_t params_;        // holds the identity of the last request
  std::uint64_t sent_tag_ = 0;      // of the last request
  std::uint64_t received_tag_ = 0;  // of the last reply taken
};

}  // namespace bench
