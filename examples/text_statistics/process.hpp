#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <string>

/// A process in which a function of this program runs. It is gone when this object is, and told to terminate when the
/// process that started it is gone.
class Process {
 public:
  using Clock = std::chrono::steady_clock;

  /// Starts it; `work` returns its result. To be called while this process has a single thread. Throws
  /// `std::system_error`.
  explicit Process(const std::function<std::string()>& work);
  /// Kills it, if it has not ended.
  ~Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  /// Sends it SIGTERM, upon which it may end in good order.
  void terminate() const;
  /// Waits until it has ended and returns the function's result. Throws `std::runtime_error` when it failed, or has not
  /// ended by then.
  std::string result(Clock::time_point deadline);

 private:
  pid_t pid_;      // 0 once it is known to have ended
  int output_[2];  // to read its result from, and to write it to
};

/// In a process: returns when it is told to terminate. To be called after `hold_termination`, which comes before the
/// process has further threads.
void hold_termination();
void wait_for_termination();
