#pragma once

#include <atomic>
#include <cstdint>
#include <dds/export.hpp>

#include "util/deadline.hpp"

namespace dds {

/// Blocks while `*word` equals `seen`, at most until the deadline. May return early for no reason: callers look again.
DDS_EXPORT void futex_wait(const std::atomic<std::uint32_t>& word, std::uint32_t seen, Deadline& deadline);
DDS_EXPORT void futex_wake(const std::atomic<std::uint32_t>& word, int count);

/// Lets threads sleep until something has happened, without a lock: take a ticket, look whether there is reason to
/// sleep, then wait. What is notified after the ticket was taken ends the wait.
class EventCount {
 public:
  std::uint32_t ticket() const { return word_.load(std::memory_order_seq_cst); }
  void wait(std::uint32_t ticket, Deadline& deadline) {
    sleepers_.fetch_add(1, std::memory_order_seq_cst);
    futex_wait(word_, ticket, deadline);
    sleepers_.fetch_sub(1, std::memory_order_relaxed);
  }
  /// Outdates the tickets given so far; true when somebody may be asleep and `wake` is needed.
  bool advance() {
    word_.fetch_add(1, std::memory_order_seq_cst);
    return sleepers_.load(std::memory_order_seq_cst) != 0;
  }
  void wake() const { futex_wake(word_, 0x7fffffff); }
  void notify() {
    if (advance()) { wake(); }
  }

 private:
  std::atomic<std::uint32_t> word_{0};
  std::atomic<std::uint32_t> sleepers_{0};
};

}  // namespace dds
