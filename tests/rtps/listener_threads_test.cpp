// The threads on which listeners are called.

#include "rtps/listener_threads.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <dds/log.hpp>
#include <filesystem>
#include <functional>
#include <future>
#include <thread>

#include "support/scale.hpp"

namespace dds::rtps {
namespace {

class Call final : public Callback {
 public:
  explicit Call(std::function<void()> function) : function_(std::move(function)) {}
  ~Call() override = default;
  void run() override { function_(); }

 private:
  const std::function<void()> function_;
};

void post(ListenerThreads& threads, std::initializer_list<Call*> calls) {
  CallbackList list;
  for (Call* call : calls) { list.push_back(call); }
  threads.post(list);
}

TEST(ListenerThreads, CallsMayWaitForThoseBehindThem) {
  for (int i = 0; i < support::scaled(500); ++i) {
    std::promise<void> first_ended, second_ended, third_ended;
    Call first([&] {
      second_ended.get_future().wait();
      first_ended.set_value();
    });
    Call second([&] {
      third_ended.get_future().wait();
      second_ended.set_value();
    });
    Call third([&] { third_ended.set_value(); });
    ListenerThreads threads;
    post(threads, {&first, &second});
    post(threads, {&third});
    first_ended.get_future().wait();
  }
}

// They may even wait for each other.
TEST(ListenerThreads, ACallDoesNotWaitForWhoeverTakesTheLinesOfTheLog) {
  for (int i = 0; i < support::scaled(100); ++i) {
    std::promise<void> busy, called, line_taken;
    const auto take_line = [&] {
      called.get_future().wait();
      line_taken.set_value();
    };
    using TakeLine = decltype(take_line);
    DDSLog_set_sink([](void* take, int, const char*, int, const char*, const QVXLogMessage*,
                       const char*) { (*static_cast<const TakeLine*>(take))(); },
                    const_cast<void*>(static_cast<const void*>(&take_line)));
    Call first([&] { busy.get_future().wait(); });
    Call second([&] { called.set_value(); });
    {
      ListenerThreads threads;
      post(threads, {&first});
      threads.log("test", "a line");
      post(threads, {&second});
      line_taken.get_future().wait();
      busy.set_value();
    }
    DDSLog_set_sink(nullptr, nullptr);
  }
}

// As an entity does that is told of change after change.
TEST(ListenerThreads, ACallThatComesAgainAndAgainNeedsOneThread) {
  const auto thread_count = [] {
    return std::distance(std::filesystem::directory_iterator("/proc/self/task"), std::filesystem::directory_iterator());
  };
  ListenerThreads threads;
  const auto before = thread_count();
  std::atomic<bool> ended{false};
  Call call([&] { ended = true; });
  for (int i = 0; i < support::scaled(20000); ++i) {
    ended = false;
    post(threads, {&call});
    while (!ended) { std::this_thread::yield(); }
  }
  EXPECT_EQ(thread_count(), before);
}

}  // namespace
}  // namespace dds::rtps
