#include "support/watchdog.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <thread>

namespace support {

namespace {

constexpr std::chrono::seconds kLimit{120};

/// A thread that sleeps until the running test's deadline, and aborts if nobody moves it.
class Watchdog {
 public:
  static Watchdog& get() {
    static Watchdog watchdog;
    return watchdog;
  }

  void arm(const std::string& name) {
    const std::lock_guard<std::mutex> lock(mutex_);
    name_ = name;
    waiting_for_.clear();
    deadline_ = Clock::now() + kLimit;
    armed_ = true;
    changed_.notify_all();
  }
  void tell(const std::string& waiting_for) {
    const std::lock_guard<std::mutex> lock(mutex_);
    waiting_for_ = waiting_for;
  }
  void extend() {
    const std::lock_guard<std::mutex> lock(mutex_);
    deadline_ = Clock::now() + kLimit;
  }
  void disarm() {
    const std::lock_guard<std::mutex> lock(mutex_);
    armed_ = false;
    changed_.notify_all();
  }

 private:
  // The system clock, because sanitizers know the timed wait on it in every version.
  using Clock = std::chrono::system_clock;

  Watchdog() : thread_([this] { run(); }) {}
  ~Watchdog() {
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      ended_ = true;
      changed_.notify_all();
    }
    thread_.join();
  }

  void run() {
    std::unique_lock<std::mutex> lock(mutex_);
    while (!ended_) {
      if (!armed_) {
        changed_.wait(lock);
      } else if (Clock::now() < deadline_) {
        changed_.wait_until(lock, deadline_);
      } else {
        std::fprintf(stderr, "%s has run for more than %lld s\n%s\n", name_.c_str(),
                     static_cast<long long>(kLimit.count()), waiting_for_.c_str());
        std::abort();
      }
    }
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  std::string name_;
  std::string waiting_for_;  // last, or empty
  Clock::time_point deadline_;
  bool armed_ = false;
  bool ended_ = false;
  std::thread thread_;  // last, so that it starts when all else is there
};

class WatchdogListener : public ::testing::EmptyTestEventListener {
  void OnTestStart(const ::testing::TestInfo& info) override {
    Watchdog::get().arm(std::string(info.test_suite_name()) + "." + info.name());
  }
  void OnTestEnd(const ::testing::TestInfo& /*info*/) override { Watchdog::get().disarm(); }
};

}  // namespace

void tell_watchdog(const std::string& waiting_for) { Watchdog::get().tell(waiting_for); }

void install_watchdog() { ::testing::UnitTest::GetInstance()->listeners().Append(new WatchdogListener); }

void extend_watchdog() { Watchdog::get().extend(); }

}  // namespace support
