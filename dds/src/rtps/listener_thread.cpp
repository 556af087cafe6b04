#include "rtps/listener_thread.hpp"

namespace dds::rtps {

ListenerThread::~ListenerThread() {
  ending_.store(true, std::memory_order_release);
  event_.notify();
  thread_.join();
}

void ListenerThread::post(CallbackList& callbacks) noexcept {
  {
    const MutexLock lock(mutex_);
    pending_.append(callbacks);
  }
  event_.notify();
}

bool ListenerThread::withdraw(const Callback& callback) noexcept {
  const MutexLock lock(mutex_);
  return pending_.remove(callback);
}

void ListenerThread::run() {
  Deadline never(DDS_DURATION_INFINITE);
  for (;;) {
    const std::uint32_t ticket = event_.ticket();
    CallbackList callbacks;
    {
      const MutexLock lock(mutex_);
      callbacks.append(pending_);
    }
    if (!callbacks.empty()) {
      Notifications::run(callbacks, *this);
    } else if (ending_.load(std::memory_order_acquire)) {
      return;
    } else {
      event_.wait(ticket, never);
    }
  }
}

}  // namespace dds::rtps
