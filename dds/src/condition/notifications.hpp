#pragma once

#include <cstddef>
#include <dds/export.hpp>

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
  friend class CallbackList;
  Callback* next_ = nullptr;  // the list that holds it
};

/// Calls that are pending, in order. Owns nothing.
class DDS_EXPORT CallbackList {
 public:
  bool empty() const { return first_ == nullptr; }
  void push_back(Callback* callback) {
    callback->next_ = nullptr;
    (first_ == nullptr ? first_ : last_->next_) = callback;
    last_ = callback;
  }
  Callback* pop_front() {
    Callback* callback = first_;
    first_ = callback->next_;
    return callback;
  }
  /// Moves the calls of `other` behind these.
  void append(CallbackList& other) {
    if (other.empty()) { return; }
    (first_ == nullptr ? first_ : last_->next_) = other.first_;
    last_ = other.last_;
    other.first_ = nullptr;
  }
  /// False when it is not in the list.
  bool remove(const Callback& callback);

 private:
  Callback* first_ = nullptr;
  Callback* last_ = nullptr;  // meaningless while empty
};

/// Makes the calls on a thread of its own, for threads that must not run application code. Thread-safe.
class CallbackExecutor {
 public:
  virtual ~CallbackExecutor() = default;
  /// Takes the calls over. Under no lock.
  virtual void post(CallbackList& callbacks) noexcept = 0;
  /// Takes out a call that has been posted and not begun; false when there is none. On any thread, under any lock.
  virtual bool withdraw(const Callback& callback) noexcept = 0;
};

/// Gathers, under locks, whom to wake and whom to call once the locks are released. Declared before the locks are
/// taken, so that its destructor, which does both, runs after they are released. Waking late keeps a woken thread from
/// running into the lock; calling late keeps application code out of it.
class DDS_EXPORT Notifications {
 public:
  Notifications() = default;
  /// Leaves the calls to `executor`, and wakes as any other.
  explicit Notifications(CallbackExecutor& executor) : executor_(&executor) {}
  Notifications(const Notifications&) = delete;
  Notifications& operator=(const Notifications&) = delete;
  ~Notifications() {
    for (std::size_t i = 0; i < sleeper_count_; ++i) {
      sleepers_[i]->wake();
      sleepers_[i]->unref();
    }
    if (!callbacks_.empty()) { run_callbacks(); }
  }

  /// Who makes the calls; null when this does.
  CallbackExecutor* executor() const { return executor_; }
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
  void call(Callback* callback) { callbacks_.push_back(callback); }
  /// Makes a call, on the thread of an executor, the calling one.
  static void run(Callback* callback);
  /// Takes out a call that this thread is going to make once the call that it is in has returned; false when there is
  /// none. The application code in a call may end the object of another that would follow it.
  static bool withdraw(const Callback& callback);

 private:
  void run_callbacks();

  // Further ones are woken at once, under the lock: slower, and as right.
  static constexpr std::size_t kMostSleepers = 4;

  WaitSetCore* sleepers_[kMostSleepers];  // the first sleeper_count_ are set, with a reference each
  std::size_t sleeper_count_ = 0;
  CallbackList callbacks_;
  CallbackExecutor* executor_ = nullptr;
  Notifications* outer_ = nullptr;  // while calls are made: those in one of whose calls these are made
};

}  // namespace dds
