#include "condition/notifications.hpp"

namespace dds {

namespace {
thread_local Notifications* innermost = nullptr;  // whose calls this thread is making
}  // namespace

void Notifications::run_callbacks() {
  outer_ = innermost;
  innermost = this;
  while (callbacks_ != nullptr) {
    Callback* callback = callbacks_;
    callbacks_ = callback->next_;
    callback->run();
  }
  innermost = outer_;
}

bool Notifications::withdraw(const Callback& callback) {
  for (Notifications* running = innermost; running != nullptr; running = running->outer_) {
    for (Callback** link = &running->callbacks_; *link != nullptr; link = &(*link)->next_) {
      if (*link != &callback) { continue; }
      *link = callback.next_;
      return true;
    }
  }
  return false;
}

}  // namespace dds
