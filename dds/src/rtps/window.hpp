#pragma once

#include "rtps/engine.hpp"
#include "util/futex.hpp"
#include "util/mutex.hpp"
#include "util/ref_ptr.hpp"

namespace dds::rtps {

/// How much may be on its way to one participant that it has not acknowledged. Writers wait for it instead of for the
/// engine, which knows no deadlines. Thread-safe. Every packet on its way holds a reference.
class Window final : public PacketListener, public RefCounted<Window> {
 public:
  static constexpr std::size_t kMostOctets = std::size_t{8} * 1024 * 1024;
  static constexpr std::size_t kMostPackets = 16384;

  /// Takes room for a packet, of which `on_released` has to be told; false when there is none until `wait` says so. An
  /// idle window admits any packet. Once a packet has been refused to somebody who waits, smaller ones leave it room.
  bool acquire(std::size_t octets, bool waits) DDS_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    if (!has_room(octets)) {
      if (waits) { needed_ = octets > needed_ ? octets : needed_; }
      return false;
    }
    if (octets >= needed_) { needed_ = 0; }
    take(octets);
    return true;
  }
  /// Takes room whether there is any or not, for what is on its way already in a sense.
  void acquire_beyond(std::size_t octets) DDS_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    take(octets);
  }
  /// Whoever waited does so no more.
  void give_up() DDS_EXCLUDES(mutex_) {
    {
      const MutexLock lock(mutex_);
      needed_ = 0;
    }
    space_.notify();
  }
  void on_released(std::size_t octets) noexcept override DDS_EXCLUDES(mutex_) {
    {
      const MutexLock lock(mutex_);
      --packets_;
      octets_ -= octets;
    }
    space_.notify();
    unref();
  }
  /// The participant has gone: nobody waits any more.
  void close() DDS_EXCLUDES(mutex_) {
    {
      const MutexLock lock(mutex_);
      closed_ = true;
    }
    space_.notify();
  }
  /// Waits until all that is on its way has been acknowledged; false when the deadline comes first.
  bool drain(Deadline& deadline) DDS_EXCLUDES(mutex_) {
    for (;;) {
      const std::uint32_t seen = space_.ticket();
      {
        const MutexLock lock(mutex_);
        if (packets_ == 0 || closed_) { return true; }
      }
      if (deadline.passed()) { return false; }
      space_.wait(seen, deadline);
    }
  }
  /// To be taken before `acquire` is tried.
  std::uint32_t ticket() const { return space_.ticket(); }
  void wait(std::uint32_t ticket, Deadline& deadline) { space_.wait(ticket, deadline); }

 private:
  bool has_room(std::size_t octets) const DDS_REQUIRES(mutex_) {
    if (closed_ || packets_ == 0) { return true; }
    const std::size_t wanted = octets < needed_ ? octets + needed_ : octets;
    return packets_ < kMostPackets && octets_ + wanted <= kMostOctets;
  }
  void take(std::size_t octets) DDS_REQUIRES(mutex_) {
    ++packets_;
    octets_ += octets;
    ref();
  }

  Mutex mutex_;
  std::size_t packets_ DDS_GUARDED_BY(mutex_) = 0;
  std::size_t octets_ DDS_GUARDED_BY(mutex_) = 0;
  std::size_t needed_ DDS_GUARDED_BY(mutex_) = 0;  // by the largest packet that was refused and is waited for
  bool closed_ DDS_GUARDED_BY(mutex_) = false;
  EventCount space_;
};

}  // namespace dds::rtps
