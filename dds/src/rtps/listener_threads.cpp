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
  workers_.reserve(kMostThreads);
  start_thread();
}

// There are no new workers any more when they are waited for.
ListenerThreads::~ListenerThreads() {
  {
    const MutexLock lock(mutex_);
    ending_ = true;
  }
  event_.notify();
  for (Worker& worker : workers_) { worker.thread.join(); }
}

void ListenerThreads::start_thread() {
  const std::size_t worker = workers_.size();
  workers_.emplace_back();
  try {
    workers_.back().thread = std::thread([=] { run(worker); });
  } catch (const std::exception&) {
    workers_.pop_back();
    throw;
  }
}

void ListenerThreads::start_thread_if_needed() noexcept {
  if (pending_.empty() || ending_ || failed_to_start_ || workers_.size() == kMostThreads) { return; }
  if (!std::all_of(workers_.begin(), workers_.end(), [](const Worker& worker) { return worker.busy; })) { return; }
  // Without another thread the call waits for one of those there are.
  try {
    start_thread();
  } catch (const std::exception&) { failed_to_start_ = true; }
}

void ListenerThreads::free_workers_of(CallbackList& callbacks) {
  for (Worker& worker : workers_) {
    if (worker.call == nullptr || !callbacks.remove(*worker.call)) { continue; }
    callbacks.push_back(worker.call);
    worker.busy = false;
    worker.call = nullptr;
  }
}

void ListenerThreads::post(CallbackList& callbacks) noexcept {
  {
    const MutexLock lock(mutex_);
    free_workers_of(callbacks);
    pending_.append(callbacks);
    start_thread_if_needed();
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

void ListenerThreads::run(std::size_t worker) {
  Deadline never(DDS_DURATION_INFINITE);
  for (;;) {
    const std::uint32_t ticket = event_.ticket();
    if (run_once(worker)) { continue; }
    {
      const MutexLock lock(mutex_);
      if (ending_) { return; }
    }
    event_.wait(ticket, never);
  }
}

// One call at a time, so that those behind it can be taken back or go to another thread; a call does not wait for lines
// either, since whoever takes them may be slow, or wait for somebody who wants the call taken back.
bool ListenerThreads::run_once(std::size_t worker) {
  Callback* callback = nullptr;
  std::vector<Line> lines;
  {
    const MutexLock lock(mutex_);
    lines.swap(lines_);
    if (lines.empty() && pending_.empty()) { return false; }
    if (lines.empty()) { callback = pending_.pop_front(); }
    workers_[worker].busy = true;
    workers_[worker].call = callback;
    // Those behind it may be what it is going to wait for.
    start_thread_if_needed();
  }
  for (const Line& line : lines) { DDS_LOG_FAILURE(line.context, QVX_LOG_ANY_FAILURE_s, "%s", line.text.c_str()); }
  if (callback != nullptr) { Notifications::run(callback); }
  const MutexLock lock(mutex_);
  workers_[worker].busy = false;
  workers_[worker].call = nullptr;
  return true;
}

}  // namespace dds::rtps
