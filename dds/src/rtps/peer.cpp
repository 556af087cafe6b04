#include "rtps/peer.hpp"

namespace dds::rtps {

void Peer::push_admitted(Packet packet) {
  const MutexLock lock(line_mutex_);
  line_cost_ += Window::cost_of(packet.size());
  line_.push_back(std::move(packet));
}

void Peer::push(Packet packet) {
  window_->acquire_beyond(packet.size());
  packet.notify_release(*window_);
  push_admitted(std::move(packet));
}

void Peer::flush() {
  std::size_t share = 0;
  for (Packet packet = begin_flush(share); packet; packet = go_on(share)) { channel_->send(std::move(packet)); }
}

// A thread sends what it finds, so also what it has pushed itself, and then some, since others may not have to be woken
// for it. It does not send for others for ever: it has a caller whom it has promised when to return.
Packet Peer::begin_flush(std::size_t& share) {
  constexpr std::size_t some = 65536;
  const MutexLock lock(line_mutex_);
  if (flushing_) { return Packet(); }
  flushing_ = true;
  share = line_cost_ + some;
  return pop_or_end(share);
}

Packet Peer::go_on(std::size_t& share) {
  const MutexLock lock(line_mutex_);
  return pop_or_end(share);
}

Packet Peer::pop_or_end(std::size_t& share) {
  if (!line_.empty() && window_->may_go(line_cost_)) {
    Packet packet = line_.pop_front();
    const std::size_t cost = Window::cost_of(packet.size());
    if (cost <= share) {
      line_cost_ -= cost;
      share -= cost;
      return packet;
    }
    line_.push_front(std::move(packet));
    due_.notify();
  }
  flushing_ = false;
  return Packet();
}

bool Peer::has_line() {
  const MutexLock lock(line_mutex_);
  return !line_.empty();
}

void Peer::drain(Deadline& deadline) {
  for (;;) {
    const std::uint32_t ticket = window_->ticket();
    flush();
    if (window_->is_idle() || deadline.passed()) { return; }
    window_->wait(ticket, deadline);
  }
}

std::shared_ptr<Peer> Graveyard::make_peer(const DDS_GUID_t& address, std::unique_ptr<Channel> channel) {
  return {new Peer(address, std::move(channel), event_), [this](Peer* peer) { bury(peer); }};
}

void Graveyard::bury(Peer* peer) noexcept {
  {
    const MutexLock lock(mutex_);
    peer->next_ = first_;
    first_ = peer;
  }
  event_.notify();
}

void Graveyard::empty() {
  Peer* dead = nullptr;
  {
    const MutexLock lock(mutex_);
    std::swap(dead, first_);
  }
  while (dead != nullptr) {
    const std::unique_ptr<Peer> peer(dead);
    dead = peer->next_;
  }
}

}  // namespace dds::rtps
