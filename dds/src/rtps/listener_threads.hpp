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

  struct Worker {
    bool busy = false;
    Callback* call = nullptr;  // that it makes; it may have ended, and its object be gone
    std::thread thread;
  };

  void start_thread() DDS_REQUIRES(mutex_);
  /// One more for a call that is pending while all are busy.
  void start_thread_if_needed() noexcept DDS_REQUIRES(mutex_);
  /// A call that is posted anew has ended: the thread that made it is about to be free.
  void free_workers_of(CallbackList& callbacks) DDS_REQUIRES(mutex_);
  void run(std::size_t worker) DDS_EXCLUDES(mutex_);
  /// Does one thing; false when there was none.
  bool run_once(std::size_t worker) DDS_EXCLUDES(mutex_);

  Mutex mutex_;
  CallbackList pending_ DDS_GUARDED_BY(mutex_);
  std::vector<Line> lines_ DDS_GUARDED_BY(mutex_);
  bool ending_ DDS_GUARDED_BY(mutex_) = false;
  bool failed_to_start_ DDS_GUARDED_BY(mutex_) = false;  // a thread; it is not tried again
  std::vector<Worker> workers_ DDS_GUARDED_BY(mutex_);
  EventCount event_;
  const Registration registration_;
};

}  // namespace dds::rtps
