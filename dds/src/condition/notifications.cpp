#include "condition/notifications.hpp"

namespace dds {

namespace {
thread_local Notifications* innermost = nullptr;              // whose calls this thread is making
thread_local CallbackExecutor* executor_of_thread = nullptr;  // while it makes the calls of one
}  // namespace

bool CallbackList::remove(const Callback& callback) {
  Callback* before = nullptr;
  for (Callback* at = first_; at != nullptr; before = at, at = at->next_) {
    if (at != &callback) { continue; }
    (before == nullptr ? first_ : before->next_) = at->next_;
    if (last_ == at) { last_ = before; }
    return true;
  }
  return false;
}

void Notifications::run_callbacks() {
  if (executor_ != nullptr) {
    executor_->post(callbacks_);
    return;
  }
  outer_ = innermost;
  innermost = this;
  while (!callbacks_.empty()) { callbacks_.pop_front()->run(); }
  innermost = outer_;
}

void Notifications::run(CallbackList& callbacks, CallbackExecutor& executor) {
  executor_of_thread = &executor;
  {
    Notifications notifications;
    notifications.callbacks_.append(callbacks);
  }
  executor_of_thread = nullptr;
}

bool Notifications::withdraw(const Callback& callback) {
  for (Notifications* running = innermost; running != nullptr; running = running->outer_) {
    if (running->callbacks_.remove(callback)) { return true; }
  }
  return executor_of_thread != nullptr && executor_of_thread->withdraw(callback);
}

}  // namespace dds
