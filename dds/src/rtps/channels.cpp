#include "rtps/channels.hpp"

#include <utility>

namespace dds::rtps {

// The engine refuses only once its writer is beyond repair; then the participant at the other end is as good as lost,
// and will be.
void EngineChannel::send(Packet packet) noexcept {
  if (writer_->write(std::move(packet))) { return; }
  try {
    listeners_.log("send", "the engine does not take a message");
  } catch (const std::bad_alloc&) {}  // then there is no line
}

void LoopbackChannel::send(Packet packet) noexcept {
  {
    const MutexLock lock(mutex_);
    packets_.push_back(std::move(packet));
  }
  arrived_.notify();
}

PacketQueue LoopbackChannel::receive() {
  const MutexLock lock(mutex_);
  return std::move(packets_);
}

}  // namespace dds::rtps
