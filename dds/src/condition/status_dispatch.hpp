#pragma once

#include <atomic>
#include <dds/basic_types.hpp>
#include <dds/condition.hpp>

#include "condition/condition_core.hpp"
#include "condition/notifications.hpp"
#include "util/mutex.hpp"

namespace dds {

/// Takes the changes of an entity's statuses to its listener or, where the listener does not ask for them, to its
/// status condition.
///
/// Calls to the listener never overlap: a change that comes while one runs is left in `state_`, and the running thread
/// goes on with it. So a listener that causes changes of its own entity is called again rather than called deeper.
class StatusDispatch : public Callback {
 public:
  /// Throws `std::bad_alloc`.
  explicit StatusDispatch(DDSEntity& entity);
  StatusDispatch(const StatusDispatch&) = delete;
  StatusDispatch& operator=(const StatusDispatch&) = delete;

  /// A status has changed. Under the entity's lock, as are `read` and `changes`.
  void raise(DDS_StatusMask status, Notifications& notifications) {
    if ((mask_.load(std::memory_order_relaxed) & status) == 0) {
      change(changes_ | status, notifications);
    } else if ((state_.fetch_or(status | kRunning, std::memory_order_acq_rel) & kRunning) == 0) {
      executor_ = notifications.executor();
      notifications.call(this);
    }
  }
  /// The application has looked at a status.
  void read(DDS_StatusMask status, Notifications& notifications) {
    if ((changes_ & status) != 0) { change(changes_ & ~status, notifications); }
  }
  DDS_StatusMask changes() const { return changes_; }

  DDSStatusCondition& condition() { return condition_; }
  /// Whether the calling thread is in a call of the listener.
  bool in_listener() const;
  /// From now on the listener is asked for `mask`. `replace` changes the listener, while no other thread is in a call
  /// of it.
  template <class Replace>
  void set_listener(DDS_StatusMask mask, Replace replace) {
    silence();
    const MutexLock lock(lock_);
    replace();
    mask_.store(mask, std::memory_order_relaxed);
  }
  /// No call begins after this returns, and none runs, unless this is called from one. Returns what the listener was
  /// asked for.
  DDS_StatusMask silence();
  /// Takes `silence` back: the listener is told what it has missed.
  void resume(DDS_StatusMask mask);

  void run() final;

 protected:
  ~StatusDispatch() override;
  /// The entity's lock, which guards its statuses and conditions and whatever else the entity says.
  OwnerLock& owner_lock() const { return *owner_lock_; }
  /// Calls the listener, if there is one, for one status. No lock is held.
  virtual void tell(DDS_StatusMask status) = 0;

 private:
  class Condition final : public DDSStatusCondition {
   public:
    Condition(StatusDispatch& dispatch, DDSEntity& entity, OwnerLock& lock)
        : dispatch_(dispatch), entity_(entity), core_(new ConditionCore(lock)) {}
    ~Condition() override;
    DDS_Boolean get_trigger_value() override { return core_->triggered(); }
    ConditionCore& core() override { return *core_; }
    DDS_ReturnCode_t set_enabled_statuses(DDS_StatusMask mask) override;
    DDS_StatusMask get_enabled_statuses() override;
    DDSEntity* get_entity() override { return &entity_; }

   private:
    StatusDispatch& dispatch_;
    DDSEntity& entity_;
    ConditionCore* core_;
  };

  // state_ holds the statuses to tell and these two bits, which no status uses.
  static constexpr std::uint32_t kRunning = 1u << 30;  // a thread tells the listener or is about to
  static constexpr std::uint32_t kAwaited = 1u << 31;  // a thread waits for the end of that

  void change(DDS_StatusMask changes, Notifications& notifications);
  void tell_all(DDS_StatusMask statuses);
  void leave_changed(DDS_StatusMask status);
  void drop_calls(Notifications& notifications);
  bool withdraw_call();

  const RefPtr<OwnerLock> owner_lock_;
  Mutex& lock_;                          // the same
  std::atomic<DDS_StatusMask> mask_{0};  // changed under lock_, which guards the next two
  DDS_StatusMask changes_ = 0;
  DDS_StatusMask enabled_ = DDS_STATUS_MASK_ALL;
  CallbackExecutor* executor_ = nullptr;  // whose thread makes the call that is pending; changed under lock_
  std::atomic<std::uint32_t> state_{0};
  std::atomic<const void*> teller_{nullptr};  // the thread in a call of the listener
  Condition condition_;
};

}  // namespace dds
