#include "rtps/peer.hpp"

namespace dds::rtps {

std::shared_ptr<Peer> Graveyard::make_peer(const DDS_GUID_t& address, std::unique_ptr<Channel> channel) {
  return {new Peer(address, std::move(channel)), [this](Peer* peer) { bury(peer); }};
}

void Graveyard::bury(Peer* peer) noexcept {
  {
    const MutexLock lock(mutex_);
    peer->next_ = first_;
    first_ = peer;
  }
  buried_.notify();
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
