#pragma once

#include <memory>
#include <vector>

#include "support/echo.hpp"
#include "support/requester.hpp"

namespace bench {

/// How the replier of a service comes by its requests: a thread waits for them, or its reader's listener is called by
/// the thread that requests; or a thread of another process waits for them, and RTPS carries them.
enum class Answer { in_thread, in_listener, in_process };

/// A service in a domain of its own: a requester, and a replier that answers it.
class Service {
 public:
  Service(DDS_DomainId_t domain, Answer answer, std::size_t payload, Placement placement);
  /// Ends everything before it returns.
  ~Service();
  Service(const Service&) = delete;
  Service& operator=(const Service&) = delete;

  Requester& requester() { return requester_; }
  /// One request at a time, in the way that fits the replier.
  void run(long count);
  /// Adds requesters that do nothing but be matched.
  void add_idle_requesters(long count);
  /// Leaves replies unread in the requester's reader.
  void add_unread_replies(long count);

 private:
  const Answer answer_;
  Participant participant_;
  Requester requester_;
  std::unique_ptr<Answering> answering_;  // after the requester, which ends it
  std::vector<std::unique_ptr<zemtra::details::RequesterUntypedImpl>> idle_;
};

}  // namespace bench
