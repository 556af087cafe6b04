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
  /// `released` happens when packets that were held back may go.
  explicit Window(EventCount& released) : released_(released) {}

  /// Takes room for a packet, of which `on_released` has to be told; false when there is none until `wait` says so. An
  /// idle window admits any packet. Once a packet has been refused to somebody who waits, smaller ones leave it room,
  /// and an idle window is the larger one's.
  bool acquire(std::size_t octets, bool waits) DDS_EXCLUDES(mutex_) {
    const std::size_t cost = cost_of(octets);
    const MutexLock lock(mutex_);
    if (!has_room(cost)) {
      if (waits) { needed_ = cost > needed_ ? cost : needed_; }
      return false;
    }
    if (cost >= needed_) { needed_ = 0; }
    take(cost);
    return true;
  }
  /// Takes room whether there is any or not, for what is on its way already in a sense.
  void acquire_beyond(std::size_t octets) DDS_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    take(cost_of(octets));
  }
  /// Somebody who has waited with a packet does so no more, whether he was given room or not. If it was the largest,
  /// the others try again.
  void give_up(std::size_t octets) DDS_EXCLUDES(mutex_) {
    {
      const MutexLock lock(mutex_);
      if (needed_ == 0 || cost_of(octets) < needed_) { return; }
      needed_ = 0;
    }
    space_.notify();
  }
  /// What a packet counts for.
  static std::size_t cost_of(std::size_t octets) { return octets + kPacketOverhead; }
  /// Whether the engine may have a packet now, when packets of that cost are here that it has not got yet. If not,
  /// `released` tells.
  bool may_go(std::size_t held_back) DDS_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    awaited_ = cost_ - held_back > kMostUnacknowledged;
    return !awaited_;
  }
  void on_released(std::size_t octets) noexcept override DDS_EXCLUDES(mutex_) {
    bool awaited = false;
    {
      const MutexLock lock(mutex_);
      cost_ -= cost_of(octets);
      awaited = awaited_;
    }
    space_.notify();
    if (awaited) { released_.notify(); }
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
  /// Whether nothing is on its way, or nobody it could come to.
  bool is_idle() DDS_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    return cost_ == 0 || closed_;
  }
  /// To be taken before one of the above is tried.
  std::uint32_t ticket() const { return space_.ticket(); }
  void wait(std::uint32_t ticket, Deadline& deadline) { space_.wait(ticket, deadline); }

 private:
  // A packet that is larger than the whole window needs an idle one, which smaller ones would never leave it.
  bool has_room(std::size_t cost) const DDS_REQUIRES(mutex_) {
    if (closed_ || (cost_ == 0 && cost >= needed_)) { return true; }
    return cost_ + (cost < needed_ ? cost + needed_ : cost) <= kMostUnacknowledged;
  }
  void take(std::size_t cost) DDS_REQUIRES(mutex_) {
    cost_ += cost;
    ref();
  }

  Mutex mutex_;
  std::size_t cost_ DDS_GUARDED_BY(mutex_) = 0;    // of all packets on their way
  std::size_t needed_ DDS_GUARDED_BY(mutex_) = 0;  // by the largest packet that was refused and is waited for
  bool closed_ DDS_GUARDED_BY(mutex_) = false;
  bool awaited_ DDS_GUARDED_BY(mutex_) = false;  // by packets that are held back
  EventCount space_;
  EventCount& released_;
};

}  // namespace dds::rtps
