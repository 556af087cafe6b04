#pragma once

#include <array>
#include <cstddef>

#include "condition/wait_set_core.hpp"

namespace dds {

/// A call of application code that must wait until no lock is held. While it is pending it belongs to one thread.
class Callback {
 public:
  /// Must not throw.
  virtual void run() = 0;

 protected:
  virtual ~Callback() = default;

 private:
  friend class Notifications;
  Callback* next_ = nullptr;  // the list of the Notifications that holds it
};

/// Gathers, under locks, whom to wake and whom to call once the locks are released. Declared before the locks are
/// taken, so that its destructor, which does both, runs after they are released. Waking late keeps a woken thread from
/// running into the lock; calling late keeps application code out of it.
class Notifications {
 public:
  Notifications() = default;
  Notifications(const Notifications&) = delete;
  Notifications& operator=(const Notifications&) = delete;
  ~Notifications() {
    for (std::size_t i = 0; i < sleeper_count_; ++i) { sleepers_[i]->wake(); }
    while (callbacks_ != nullptr) {
      Callback* callback = callbacks_;
      callbacks_ = callback->next_;
      callback->run();
    }
  }

  /// Tells a wait set that one of its conditions turned true.
  void signal(WaitSetCore* wait_set) {
    if (!wait_set->signal()) { return; }
    if (sleeper_count_ == sleepers_.size()) {
      wait_set->wake();
      return;
    }
    sleepers_[sleeper_count_++] = RefPtr<WaitSetCore>(wait_set);
  }
  void call(Callback* callback) {
    callback->next_ = nullptr;
    *last_callback_ = callback;
    last_callback_ = &callback->next_;
  }

 private:
  std::array<RefPtr<WaitSetCore>, 4> sleepers_;
  std::size_t sleeper_count_ = 0;
  Callback* callbacks_ = nullptr;
  Callback** last_callback_ = &callbacks_;
};

}  // namespace dds
