#include "condition/notifications.hpp"

namespace dds {

namespace {
thread_local Notifications* innermost = nullptr;  // whose calls this thread is making
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

void Notifications::run(Callback* callback) {
  Notifications notifications;
  notifications.call(callback);
}

bool Notifications::withdraw(const Callback& callback) {
  for (Notifications* running = innermost; running != nullptr; running = running->outer_) {
    if (running->callbacks_.remove(callback)) { return true; }
  }
  return false;
}

}  // namespace dds
