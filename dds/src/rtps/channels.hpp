#pragma once

#include <memory>

#include "rtps/engine.hpp"
#include "rtps/listener_threads.hpp"
#include "rtps/peer.hpp"
#include "util/futex.hpp"
#include "util/mutex.hpp"

namespace dds::rtps {

/// A channel through the engine.
class EngineChannel final : public Channel {
 public:
  /// `listeners` logs what goes wrong.
  EngineChannel(std::unique_ptr<EngineWriter> writer, ListenerThreads& listeners)
      : writer_(std::move(writer)), listeners_(listeners) {}
  void send(Packet packet) noexcept override;

 private:
  const std::unique_ptr<EngineWriter> writer_;
  ListenerThreads& listeners_;
};

/// The channel of a participant to itself.
class LoopbackChannel final : public Channel {
 public:
  /// `arrived` tells that there is something to receive.
  explicit LoopbackChannel(EventCount& arrived) : arrived_(arrived) {}
  void send(Packet packet) noexcept override DDS_EXCLUDES(mutex_);
  /// What has been sent since the last call.
  PacketQueue receive() DDS_EXCLUDES(mutex_);

 private:
  EventCount& arrived_;
  Mutex mutex_;
  PacketQueue packets_ DDS_GUARDED_BY(mutex_);
};

}  // namespace dds::rtps
