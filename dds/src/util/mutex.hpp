#pragma once

#include <mutex>

// A mutex that clang's thread-safety analysis understands. The order in which locks are taken is written in
// docs/architecture.md.
#ifdef __clang__
#define DDS_THREAD_ATTRIBUTE(x) __attribute__((x))
#else
#define DDS_THREAD_ATTRIBUTE(x)
#endif
#define DDS_CAPABILITY(x) DDS_THREAD_ATTRIBUTE(capability(x))
#define DDS_SCOPED_CAPABILITY DDS_THREAD_ATTRIBUTE(scoped_lockable)
#define DDS_GUARDED_BY(x) DDS_THREAD_ATTRIBUTE(guarded_by(x))
#define DDS_REQUIRES(...) DDS_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define DDS_ACQUIRE(...) DDS_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define DDS_RELEASE(...) DDS_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
#define DDS_EXCLUDES(...) DDS_THREAD_ATTRIBUTE(locks_excluded(__VA_ARGS__))
#define DDS_NO_THREAD_SAFETY_ANALYSIS DDS_THREAD_ATTRIBUTE(no_thread_safety_analysis)

namespace dds {

class DDS_CAPABILITY("mutex") Mutex {
 public:
  void lock() DDS_ACQUIRE() { mutex_.lock(); }
  void unlock() DDS_RELEASE() { mutex_.unlock(); }

 private:
  std::mutex mutex_;
};

class DDS_SCOPED_CAPABILITY MutexLock {
 public:
  explicit MutexLock(Mutex& mutex) DDS_ACQUIRE(mutex) : mutex_(mutex) { mutex_.lock(); }
  ~MutexLock() DDS_RELEASE() { mutex_.unlock(); }
  MutexLock(const MutexLock&) = delete;
  MutexLock& operator=(const MutexLock&) = delete;

 private:
  Mutex& mutex_;
};

}  // namespace dds
