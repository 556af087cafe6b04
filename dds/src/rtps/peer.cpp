#include "rtps/peer.hpp"

namespace dds::rtps {

void Peer::send_admitted(Packet packet) {
  const MutexLock lock(sending_);
  held_cost_ += Window::cost_of(packet.size());
  held_.push_back(std::move(packet));
  send_what_may_go();
}

void Peer::send(Packet packet) {
  window_->acquire_beyond(packet.size());
  packet.notify_release(*window_);
  send_admitted(std::move(packet));
}

void Peer::send_held() {
  const MutexLock lock(sending_);
  send_what_may_go();
}

void Peer::send_what_may_go() {
  while (!held_.empty() && window_->may_go(held_cost_)) {
    Packet packet = held_.pop_front();
    held_cost_ -= Window::cost_of(packet.size());
    channel_->send(std::move(packet));
  }
}

void Peer::drain(Deadline& deadline) {
  for (;;) {
    const std::uint32_t ticket = window_->ticket();
    send_held();
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
