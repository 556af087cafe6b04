#pragma once

#include <atomic>
#include <cstdint>
#include <dds/identity.hpp>
#include <dds/time.hpp>
#include <dds/type_plugin.hpp>
#include <string>

#include "util/mutex.hpp"
#include "util/ref_ptr.hpp"

namespace dds {

class MessagePool;

enum class MessageKind { data, dispose, unregister, dispose_and_unregister };

/// One written sample: the data, copied once, with its identities. All readers and all loans share it. Whoever writes
/// it fills it in while it has the only reference; afterwards nothing but the count changes.
class DDS_EXPORT Message {
 public:
  MessageKind kind = MessageKind::data;
  DDS_SampleIdentity_t identity;
  DDS_SampleIdentity_t related_identity;
  DDS_Time_t source_time = DDS_TIME_INVALID;
  DDS_Time_t arrival_time = DDS_TIME_INVALID;
  DDS_InstanceHandle_t publication_handle = 0;
  std::string key;  // of the data's instance; empty for types without key

  /// An own sample of the type.
  void* sample() const { return sample_; }
  void ref() { references_.fetch_add(1, std::memory_order_relaxed); }
  void unref();

 private:
  friend class MessagePool;
  Message(MessagePool& pool, void* sample) : pool_(pool), sample_(sample) {}
  ~Message() = default;

  MessagePool& pool_;
  void* sample_;
  std::atomic<std::uint32_t> references_{1};
  Message* next_ = nullptr;  // idle messages of the pool, under its lock
};

/// Where a writer gets its messages and where they go when the last reader has let go of them, possibly after the
/// writer is gone: the pool deletes itself once it is closed and every message is back. Thread-safe.
class DDS_EXPORT MessagePool {
 public:
  explicit MessagePool(const DDS_TypePlugin& type);
  /// A message with one reference whose sample holds anything; null when memory is exhausted.
  RefPtr<Message> acquire() DDS_EXCLUDES(mutex_);
  /// The writer needs no more messages.
  void close() DDS_EXCLUDES(mutex_);

 private:
  friend class Message;
  // As many idle messages are kept for reuse; beyond that the memory of a burst is given back.
  static constexpr int kMostIdle = 128;

  ~MessagePool() = default;
  void release(Message* message) DDS_EXCLUDES(mutex_);
  /// May delete the pool.
  void end_outstanding() DDS_EXCLUDES(mutex_);
  Message* make();
  void destroy(Message* message) const;

  /// Stands in `spare_` once the pool is closed.
  Message* closed_mark() { return reinterpret_cast<Message*>(this); }

  const DDS_TypePlugin type_;
  const std::size_t alignment_;
  const std::size_t offset_;  // of the sample in a message's memory
  // One idle message outside the lock: all that a writer needs whose samples are taken as they come. It counts as
  // outstanding.
  std::atomic<Message*> spare_{nullptr};
  Mutex mutex_;
  Message* idle_ DDS_GUARDED_BY(mutex_) = nullptr;
  int idle_count_ DDS_GUARDED_BY(mutex_) = 0;
  std::size_t outstanding_ DDS_GUARDED_BY(mutex_) = 0;
  bool closed_ DDS_GUARDED_BY(mutex_) = false;
};

// The holder of the only reference need not count: nobody else can take one.
inline void Message::unref() {
  if (references_.load(std::memory_order_acquire) == 1 || references_.fetch_sub(1, std::memory_order_acq_rel) == 1) {
    pool_.release(this);
  }
}

}  // namespace dds
