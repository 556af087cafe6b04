#pragma once

#include <string>
#include <thread>
#include <vector>

#include "condition/notifications.hpp"
#include "util/futex.hpp"
#include "util/mutex.hpp"

namespace dds::rtps {

/// The threads on which a participant's listeners are called and its log lines written: both are application code,
/// which may write and wait, as the engine's threads must not. There is one thread as long as it keeps up; when a call
/// comes while all are busy another is started, so that a listener may wait for what another listener has to do.
/// Thread-safe.
class ListenerThreads final : public CallbackExecutor {
 public:
  /// Starts the first. Throws `std::system_error`.
  ListenerThreads();
  /// Makes the calls that are pending.
  ~ListenerThreads() override;
  void post(CallbackList& callbacks) noexcept override DDS_EXCLUDES(mutex_);
  bool withdraw(const Callback& callback) noexcept override DDS_EXCLUDES(mutex_);
  /// Logs a failure; not when memory is exhausted, or when very many lines are waiting.
  void log(const char* context, std::string text) noexcept DDS_EXCLUDES(mutex_);
  /// The same on a thread of any participant, for lines of the engine, which belong to none. Nothing when there is
  /// none.
  static void log_somewhere(const char* context, const char* text) noexcept;

 private:
  struct Line {
    const char* context;  // a static text
    std::string text;
  };
  static constexpr std::size_t kMostLines = 256;
  static constexpr std::size_t kMostThreads = 16;

  /// The place among those that log for the engine.
  class Registration {
   public:
    explicit Registration(ListenerThreads& threads);
    ~Registration();
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

   private:
    ListenerThreads& threads_;
  };

  void start_thread() DDS_REQUIRES(mutex_);
  void run() DDS_EXCLUDES(mutex_);
  /// Does one thing; false when there was none.
  bool run_once() DDS_EXCLUDES(mutex_);

  Mutex mutex_;
  CallbackList pending_ DDS_GUARDED_BY(mutex_);
  std::vector<Line> lines_ DDS_GUARDED_BY(mutex_);
  std::size_t busy_ DDS_GUARDED_BY(mutex_) = 0;  // threads in a call
  bool ending_ DDS_GUARDED_BY(mutex_) = false;
  bool failed_to_start_ DDS_GUARDED_BY(mutex_) = false;  // a thread; it is not tried again
  std::vector<std::thread> threads_ DDS_GUARDED_BY(mutex_);
  EventCount event_;
  const Registration registration_;
};

}  // namespace dds::rtps
