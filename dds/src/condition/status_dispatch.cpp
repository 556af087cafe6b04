#include "condition/status_dispatch.hpp"

#include <dds/log.hpp>
#include <exception>
#include <utility>

#include "log/log.hpp"
#include "util/futex.hpp"

namespace dds {

namespace {
// Its address names the thread.
thread_local const char this_thread = 0;
}  // namespace

StatusDispatch::StatusDispatch(DDSEntity& entity)
    : owner_lock_(RefPtr<OwnerLock>::adopt(new OwnerLock)),
      lock_(owner_lock_->mutex),
      condition_(*this, entity, *owner_lock_) {}

StatusDispatch::~StatusDispatch() = default;

void StatusDispatch::change(DDS_StatusMask changes, Notifications& notifications) {
  changes_ = changes;
  condition_.core().set((changes_ & enabled_) != 0, notifications);
}

bool StatusDispatch::in_listener() const { return teller_.load(std::memory_order_relaxed) == &this_thread; }

DDS_StatusMask StatusDispatch::silence() {
  DDS_StatusMask former = 0;
  {
    Notifications notifications;
    const MutexLock lock(lock_);
    former = mask_.exchange(0, std::memory_order_relaxed);
    if (Notifications::withdraw(*this)) { drop_calls(notifications); }
  }
  if (in_listener()) { return former; }
  std::uint32_t state = state_.load(std::memory_order_acquire);
  while ((state & kRunning) != 0) {
    // A call may be on its way to a thread that is in no hurry, or waits for this one: it is taken back there.
    const bool elsewhere = withdraw_call();
    state = state_.load(std::memory_order_acquire);
    if ((state & kRunning) == 0) { break; }
    if (state_.compare_exchange_weak(state, state | kAwaited, std::memory_order_acq_rel)) {
      Deadline deadline(elsewhere ? DDS_Duration_t{0, 1000000} : DDS_DURATION_INFINITE);
      futex_wait(state_, state | kAwaited, deadline);
      state = state_.load(std::memory_order_acquire);
    }
  }
  return former;
}

// Whether another thread than one of the application's is to make the call.
bool StatusDispatch::withdraw_call() {
  Notifications notifications;
  const MutexLock lock(lock_);
  if (executor_ != nullptr && executor_->withdraw(*this)) { drop_calls(notifications); }
  return executor_ != nullptr;
}

void StatusDispatch::resume(DDS_StatusMask mask) {
  Notifications notifications;
  const MutexLock lock(lock_);
  mask_.store(mask, std::memory_order_relaxed);
  const DDS_StatusMask missed = changes_ & mask;
  if (missed == 0) { return; }
  change(changes_ & ~missed, notifications);
  raise(missed, notifications);
}

// The calls that this thread had yet to make are not made; to wait for them would be to wait for itself.
void StatusDispatch::drop_calls(Notifications& notifications) {
  const std::uint32_t state = state_.exchange(0, std::memory_order_acq_rel);
  if ((state & kAwaited) != 0) { futex_wake(state_, 0x7fffffff); }
  change(changes_ | (state & ~(kRunning | kAwaited)), notifications);
}

// Whoever waits in `silence` may destroy this object as soon as kRunning is gone, so nothing but the address is used
// afterwards.
void StatusDispatch::run() {
  std::uint32_t state = state_.load(std::memory_order_acquire);
  for (;;) {
    const DDS_StatusMask statuses = state & ~(kRunning | kAwaited);
    if (statuses != 0) {
      state_.fetch_and(~statuses, std::memory_order_acq_rel);
      tell_all(statuses);
      state = state_.load(std::memory_order_acquire);
    } else if (state_.compare_exchange_weak(state, 0, std::memory_order_acq_rel)) {
      if ((state & kAwaited) != 0) { futex_wake(state_, 0x7fffffff); }
      return;
    }
  }
}

void StatusDispatch::tell_all(DDS_StatusMask statuses) {
  teller_.store(&this_thread, std::memory_order_relaxed);
  for (; statuses != 0; statuses &= statuses - 1) {
    const DDS_StatusMask status = statuses & -statuses;
    if ((mask_.load(std::memory_order_relaxed) & status) == 0) {
      leave_changed(status);
      continue;
    }
    try {
      tell(status);
    } catch (const std::exception& error) {
      DDS_LOG_FAILURE("listener", QVX_LOG_ANY_FAILURE_s, "exception from a listener: %s", error.what());
    } catch (...) { DDS_LOG_FAILURE("listener", QVX_LOG_ANY_FAILURE_s, "exception from a listener"); }
  }
  teller_.store(nullptr, std::memory_order_relaxed);
}

// For a status that the listener, replaced from a call of its own, no longer asks for.
void StatusDispatch::leave_changed(DDS_StatusMask status) {
  Notifications notifications;
  const MutexLock lock(lock_);
  change(changes_ | status, notifications);
}

StatusDispatch::Condition::~Condition() {
  {
    const MutexLock lock(core_->mutex());
    core_->detach_all();
  }
  core_->unref();
}

DDS_ReturnCode_t StatusDispatch::Condition::set_enabled_statuses(DDS_StatusMask mask) {
  Notifications notifications;
  const MutexLock lock(dispatch_.lock_);
  dispatch_.enabled_ = mask;
  dispatch_.change(dispatch_.changes_, notifications);
  return DDS_RETCODE_OK;
}

DDS_StatusMask StatusDispatch::Condition::get_enabled_statuses() {
  const MutexLock lock(dispatch_.lock_);
  return dispatch_.enabled_;
}

}  // namespace dds
