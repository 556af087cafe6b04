#pragma once

#include <cstddef>
#include <memory>

namespace bench::hand_written {

// Request and reply as one writes them by hand with the API of the engine that carries samples between processes: a
// topic of requests and one of replies, each end a writer of the one and a reader of the other. This is what users
// would have without the library. The engine is configured as the library configures it. Whatever fails ends the
// process.

/// How the replier comes by its requests. `in_thread` is the reference, since the library's replier answers in a thread
/// of the application, too; `in_listener`, in the engine's own thread, saves a change of threads and stalls the engine
/// when the answer takes long.
enum class Answer { in_thread, in_listener };

/// Sends requests and receives their replies. One thread at a time.
class Requester {
 public:
  Requester(int domain, std::size_t payload);
  ~Requester();
  Requester(const Requester&) = delete;
  Requester& operator=(const Requester&) = delete;

  /// Returns when a request has been answered.
  void wait_for_replier();
  /// One request at a time.
  void run_blocking(long count);
  /// As many as `window` requests under way.
  void run_pipelined(long count, long window);
  /// Lets the replier's `answer_requests` return.
  void send_stop();

 private:
  class Impl;
  const std::unique_ptr<Impl> impl_;
};

/// Answers requests in the domain with their own octets until one carries the stop tag.
void answer_requests(int domain, Answer answer);

}  // namespace bench::hand_written
