#pragma once

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
    for (std::size_t i = 0; i < sleeper_count_; ++i) {
      sleepers_[i]->wake();
      sleepers_[i]->unref();
    }
    if (callbacks_ != nullptr) { run_callbacks(); }
  }

  /// Tells a wait set that one of its conditions turned true.
  void signal(WaitSetCore* wait_set) {
    if (!wait_set->signal()) { return; }
    if (sleeper_count_ == kMostSleepers) {
      wait_set->wake();
      return;
    }
    wait_set->ref();
    sleepers_[sleeper_count_++] = wait_set;
  }
  void call(Callback* callback) {
    callback->next_ = nullptr;
    (callbacks_ == nullptr ? callbacks_ : last_callback_->next_) = callback;
    last_callback_ = callback;
  }
  /// Takes out a call that this thread is going to make once the call that it is in has returned; false when there is
  /// none. The application code in a call may end the object of another that would follow it.
  static bool withdraw(const Callback& callback);

 private:
  void run_callbacks();

  // Further ones are woken at once, under the lock: slower, and as right.
  static constexpr std::size_t kMostSleepers = 4;

  WaitSetCore* sleepers_[kMostSleepers];  // the first sleeper_count_ are set, with a reference each
  std::size_t sleeper_count_ = 0;
  Callback* callbacks_ = nullptr;
  Callback* last_callback_ = nullptr;
  Notifications* outer_ = nullptr;  // while calls are made: those in one of whose calls these are made
};

}  // namespace dds
