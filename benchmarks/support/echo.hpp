#pragma once

#include <thread>

#include "support/entities.hpp"
#include "support/payload.hpp"
#include "support/placement.hpp"

namespace bench {

/// Answers requests with their own octets, straight from the loan.
class Echo {
 public:
  /// `listener` is that of the reader, or null. Requests of one requester alone are to come in order.
  Echo(const Participant& participant, DDSDataReaderListener* listener, bool one_requester = true);

  /// Waits for requests and answers them; false once one of them carried the stop tag.
  bool answer_next();
  /// Answers the requests that are there.
  void answer_available();

 private:
  bool answer(const Loan& loan);

  const bool one_requester_;
  zemtra::details::ReplierUntypedImpl replier_;
  DDS_WriteParams_t params_;
  std::uint64_t answered_ = 0;
};

/// What answers the requests of a service as long as it lives.
class Answering {
 public:
  virtual ~Answering() = default;
};

/// Answers in a thread of its own, which ends with a request that carries the stop tag: send one before you destroy it.
class ThreadEcho : public Answering {
 public:
  ThreadEcho(const Participant& participant, Placement placement);
  ~ThreadEcho() override;
  ThreadEcho(const ThreadEcho&) = delete;
  ThreadEcho& operator=(const ThreadEcho&) = delete;

 private:
  void run(Placement placement);

  Echo echo_;
  std::thread thread_;
};

/// Answers in the thread that requests, from within its write.
class ListenerEcho : public Answering, private DDSDataReaderListener {
 public:
  explicit ListenerEcho(const Participant& participant);

 private:
  void on_data_available(DDSDataReader* reader) override;

  Echo echo_;
};

}  // namespace bench
