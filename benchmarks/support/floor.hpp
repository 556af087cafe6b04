#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <thread>
#include <vector>

#include "support/payload.hpp"
#include "support/placement.hpp"

namespace bench {

/// One direction of a hand-over between two threads: as many slots as messages can be under way. The sender copies its
/// octets into a slot; the receiver reads them in place.
class Channel {
 public:
  Channel(std::size_t slots, std::size_t size);

  void push(const DDS_Octet* octets);
  /// Waits for a message and returns its octets, valid until `pop`.
  const DDS_Octet* front();
  void pop() { ++received_; }

 private:
  struct alignas(64) Block {
    DDS_Octet octets[64];
  };
  DDS_Octet* slot(std::size_t message) { return memory_[(message % slots_) * stride_].octets; }

  const std::size_t slots_;
  const std::size_t size_;
  const std::size_t stride_;  // blocks of a slot
  std::vector<Block> memory_;
  std::size_t received_ = 0;  // the receiver's own
  std::mutex mutex_;
  std::condition_variable arrived_;
  std::size_t sent_ = 0;  // guarded by mutex_; only the sender changes it
};

/// The least that a round trip between two threads costs: each way one copy, a mutex and a condition variable.
class ThreadFloor {
 public:
  /// `window` messages may be under way. The thread that answers starts at once.
  ThreadFloor(std::size_t window, std::size_t size, Placement placement);
  ~ThreadFloor();
  ThreadFloor(const ThreadFloor&) = delete;
  ThreadFloor& operator=(const ThreadFloor&) = delete;

  /// Makes `count` round trips, with `window` requests under way as long as there are requests to send.
  void run(long count);

 private:
  void send();
  void receive();
  void answer();

  const long window_;
  Payload request_;
  std::uint64_t sent_tag_ = 0;
  std::uint64_t received_tag_ = 0;
  Channel requests_channel_;
  Channel replies_channel_;
  std::thread replier_;
};

/// The least that a round trip costs in one thread: a direct call that copies the octets under a mutex each way.
class CallFloor {
 public:
  explicit CallFloor(std::size_t size);

  void run(long count);

 private:
  void answer();

  Payload request_;
  std::uint64_t tag_ = 0;
  std::uint64_t answered_tag_ = 0;
  std::mutex mutex_;
  Payload received_;
  Payload reply_;
};

}  // namespace bench
