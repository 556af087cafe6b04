#pragma once

#include <atomic>
#include <thread>

#include "condition/notifications.hpp"
#include "util/futex.hpp"
#include "util/mutex.hpp"

namespace dds::rtps {

/// The thread on which a participant's listeners are called: they may write and wait, which the engine's threads must
/// not.
class ListenerThread final : public CallbackExecutor {
 public:
  /// Throws `std::system_error`.
  ListenerThread() : thread_([this] { run(); }) {}
  /// Makes the calls that are pending.
  ~ListenerThread() override;
  void post(CallbackList& callbacks) noexcept override DDS_EXCLUDES(mutex_);
  bool withdraw(const Callback& callback) noexcept override DDS_EXCLUDES(mutex_);

 private:
  void run() DDS_EXCLUDES(mutex_);

  Mutex mutex_;
  CallbackList pending_ DDS_GUARDED_BY(mutex_);
  std::atomic<bool> ending_{false};
  EventCount event_;
  std::thread thread_;  // the last member: it uses the others
};

}  // namespace dds::rtps
