#pragma once

#include "hand_written/ping_pong.hpp"
#include "processes/child.hpp"
#include "support/echo.hpp"
#include "support/placement.hpp"

namespace bench {

/// Answers in a process of its own, which is there when its requester is matched. As with a thread, send a request that
/// carries the stop tag before you destroy it.
class RemoteEcho : public Answering {
 public:
  RemoteEcho(DDS_DomainId_t domain, Placement placement);
  ~RemoteEcho() override;
  RemoteEcho(const RemoteEcho&) = delete;
  RemoteEcho& operator=(const RemoteEcho&) = delete;

 private:
  const std::unique_ptr<Child> child_;
};

/// The hand-written peer: a requester here, and its replier in a process of its own.
class HandWrittenService {
 public:
  HandWrittenService(DDS_DomainId_t domain, hand_written::Answer answer, std::size_t payload, Placement placement);
  ~HandWrittenService();
  HandWrittenService(const HandWrittenService&) = delete;
  HandWrittenService& operator=(const HandWrittenService&) = delete;

  hand_written::Requester& requester() { return requester_; }

 private:
  const std::unique_ptr<Child> child_;
  hand_written::Requester requester_;
};

}  // namespace bench
