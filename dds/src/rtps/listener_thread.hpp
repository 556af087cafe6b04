#pragma once

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "condition/notifications.hpp"
#include "util/futex.hpp"
#include "util/mutex.hpp"

namespace dds::rtps {

/// The thread on which a participant's listeners are called and its log lines written: both are application code, which
/// may write and wait, as the engine's threads must not.
class ListenerThread final : public CallbackExecutor {
 public:
  /// Throws `std::system_error`.
  ListenerThread() : registration_(*this), thread_([this] { run(); }) {}
  /// Makes the calls that are pending.
  ~ListenerThread() override;
  void post(CallbackList& callbacks) noexcept override DDS_EXCLUDES(mutex_);
  bool withdraw(const Callback& callback) noexcept override DDS_EXCLUDES(mutex_);
  /// Logs a failure; not when memory is exhausted, or when very many lines are waiting.
  void log(const char* context, std::string text) noexcept DDS_EXCLUDES(mutex_);
  /// The same on the thread of any participant, for lines of the engine, which belong to none. Nothing when there is
  /// none.
  static void log_somewhere(const char* context, const char* text) noexcept;

 private:
  struct Line {
    const char* context;  // a static text
    std::string text;
  };
  static constexpr std::size_t kMostLines = 256;

  /// The thread's place among those that log for the engine.
  class Registration {
   public:
    explicit Registration(ListenerThread& thread);
    ~Registration();
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

   private:
    ListenerThread& thread_;
  };

  void run() DDS_EXCLUDES(mutex_);

  Mutex mutex_;
  CallbackList pending_ DDS_GUARDED_BY(mutex_);
  std::vector<Line> lines_ DDS_GUARDED_BY(mutex_);
  std::atomic<bool> ending_{false};
  EventCount event_;
  const Registration registration_;
  std::thread thread_;  // the last member: it uses the others
};

}  // namespace dds::rtps
