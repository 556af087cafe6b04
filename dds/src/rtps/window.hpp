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
  /// idle window admits any packet.
  bool acquire(std::size_t octets) DDS_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    if (!closed_ && packets_ != 0 && (packets_ >= kMostPackets || octets_ + octets > kMostOctets)) { return false; }
    ++packets_;
    octets_ += octets;
    ref();
    return true;
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
  /// To be taken before `acquire` is tried.
  std::uint32_t ticket() const { return space_.ticket(); }
  void wait(std::uint32_t ticket, Deadline& deadline) { space_.wait(ticket, deadline); }

 private:
  Mutex mutex_;
  std::size_t packets_ DDS_GUARDED_BY(mutex_) = 0;
  std::size_t octets_ DDS_GUARDED_BY(mutex_) = 0;
  bool closed_ DDS_GUARDED_BY(mutex_) = false;
  EventCount space_;
};

}  // namespace dds::rtps
