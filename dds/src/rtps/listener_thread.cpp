#include "rtps/listener_thread.hpp"

#include <algorithm>
#include <new>
#include <utility>

#include "log/log.hpp"

namespace dds::rtps {

namespace {

struct Registry {
  Mutex mutex;
  std::vector<ListenerThread*> threads DDS_GUARDED_BY(mutex);
};

// Never destroyed: participants may outlive the static objects of the program.
Registry& registry() {
  static auto* const instance = new Registry;
  return *instance;
}

}  // namespace

ListenerThread::Registration::Registration(ListenerThread& thread) : thread_(thread) {
  const MutexLock lock(registry().mutex);
  registry().threads.push_back(&thread_);
}

ListenerThread::Registration::~Registration() {
  const MutexLock lock(registry().mutex);
  std::vector<ListenerThread*>& threads = registry().threads;
  threads.erase(std::find(threads.begin(), threads.end(), &thread_));
}

ListenerThread::~ListenerThread() {
  ending_.store(true, std::memory_order_release);
  event_.notify();
  thread_.join();
}

void ListenerThread::post(CallbackList& callbacks) noexcept {
  {
    const MutexLock lock(mutex_);
    pending_.append(callbacks);
  }
  event_.notify();
}

bool ListenerThread::withdraw(const Callback& callback) noexcept {
  const MutexLock lock(mutex_);
  return pending_.remove(callback);
}

void ListenerThread::log(const char* context, std::string text) noexcept {
  try {
    const MutexLock lock(mutex_);
    if (lines_.size() == kMostLines) { return; }
    lines_.push_back({context, std::move(text)});
  } catch (const std::bad_alloc&) { return; }
  event_.notify();
}

void ListenerThread::log_somewhere(const char* context, const char* text) noexcept {
  try {
    const MutexLock lock(registry().mutex);
    if (!registry().threads.empty()) { registry().threads.front()->log(context, text); }
  } catch (const std::bad_alloc&) { return; }
}

void ListenerThread::run() {
  Deadline never(DDS_DURATION_INFINITE);
  for (;;) {
    const std::uint32_t ticket = event_.ticket();
    CallbackList callbacks;
    std::vector<Line> lines;
    {
      const MutexLock lock(mutex_);
      callbacks.append(pending_);
      lines.swap(lines_);
    }
    for (const Line& line : lines) { DDS_LOG_FAILURE(line.context, QVX_LOG_ANY_FAILURE_s, "%s", line.text.c_str()); }
    if (!callbacks.empty()) {
      Notifications::run(callbacks, *this);
    } else if (!lines.empty()) {
      continue;
    } else if (ending_.load(std::memory_order_acquire)) {
      return;
    } else {
      event_.wait(ticket, never);
    }
  }
}

}  // namespace dds::rtps
