#include "rtps/channels.hpp"

#include <utility>

namespace dds::rtps {

// The engine refuses only once its writer is beyond repair; then the participant at the other end is as good as lost,
// and will be.
void EngineChannel::send(Packet packet) {
  if (!writer_->write(std::move(packet))) { listeners_.log("send", "the engine does not take a message"); }
}

void LoopbackChannel::send(Packet packet) {
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
