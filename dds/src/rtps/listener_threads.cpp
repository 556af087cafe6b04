#include "rtps/listener_threads.hpp"

#include <algorithm>
#include <exception>
#include <new>
#include <utility>

#include "log/log.hpp"

namespace dds::rtps {

namespace {

struct Registry {
  Mutex mutex;
  std::vector<ListenerThreads*> all DDS_GUARDED_BY(mutex);
};

// Never destroyed: participants may outlive the static objects of the program.
Registry& registry() {
  static auto* const instance = new Registry;
  return *instance;
}

}  // namespace

ListenerThreads::Registration::Registration(ListenerThreads& threads) : threads_(threads) {
  const MutexLock lock(registry().mutex);
  registry().all.push_back(&threads_);
}

ListenerThreads::Registration::~Registration() {
  const MutexLock lock(registry().mutex);
  std::vector<ListenerThreads*>& all = registry().all;
  all.erase(std::find(all.begin(), all.end(), &threads_));
}

ListenerThreads::ListenerThreads() : registration_(*this) {
  const MutexLock lock(mutex_);
  threads_.reserve(kMostThreads);
  start_thread();
}

ListenerThreads::~ListenerThreads() {
  std::vector<std::thread> threads;
  {
    const MutexLock lock(mutex_);
    ending_ = true;
    threads.swap(threads_);
  }
  event_.notify();
  for (std::thread& thread : threads) { thread.join(); }
}

void ListenerThreads::start_thread() {
  threads_.emplace_back([this] { run(); });
}

void ListenerThreads::post(CallbackList& callbacks) noexcept {
  {
    const MutexLock lock(mutex_);
    pending_.append(callbacks);
    if (busy_ == threads_.size() && threads_.size() < kMostThreads && !ending_ && !failed_to_start_) {
      // Without another thread the call waits for one of those there are.
      try {
        start_thread();
      } catch (const std::exception&) { failed_to_start_ = true; }
    }
  }
  event_.notify();
}

bool ListenerThreads::withdraw(const Callback& callback) noexcept {
  const MutexLock lock(mutex_);
  return pending_.remove(callback);
}

void ListenerThreads::log(const char* context, std::string text) noexcept {
  try {
    const MutexLock lock(mutex_);
    if (lines_.size() == kMostLines) { return; }
    lines_.push_back({context, std::move(text)});
  } catch (const std::bad_alloc&) { return; }
  event_.notify();
}

void ListenerThreads::log_somewhere(const char* context, const char* text) noexcept {
  try {
    const MutexLock lock(registry().mutex);
    if (!registry().all.empty()) { registry().all.front()->log(context, text); }
  } catch (const std::bad_alloc&) { return; }
}

void ListenerThreads::run() {
  Deadline never(DDS_DURATION_INFINITE);
  for (;;) {
    const std::uint32_t ticket = event_.ticket();
    if (run_once()) { continue; }
    {
      const MutexLock lock(mutex_);
      if (ending_) { return; }
    }
    event_.wait(ticket, never);
  }
}

// One call at a time, so that those behind it can be taken back or go to another thread.
bool ListenerThreads::run_once() {
  Callback* callback = nullptr;
  std::vector<Line> lines;
  {
    const MutexLock lock(mutex_);
    if (!pending_.empty()) { callback = pending_.pop_front(); }
    lines.swap(lines_);
    if (callback == nullptr && lines.empty()) { return false; }
    ++busy_;
  }
  for (const Line& line : lines) { DDS_LOG_FAILURE(line.context, QVX_LOG_ANY_FAILURE_s, "%s", line.text.c_str()); }
  if (callback != nullptr) { Notifications::run(callback); }
  const MutexLock lock(mutex_);
  --busy_;
  return true;
}

}  // namespace dds::rtps
