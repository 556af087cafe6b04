#include "cache/message.hpp"

#include <algorithm>
#include <new>

namespace dds {

namespace {
constexpr std::size_t kPayloadAlignment = 32;

std::size_t round_up(std::size_t size, std::size_t alignment) { return (size + alignment - 1) / alignment * alignment; }
}  // namespace

MessagePool::MessagePool(const DDS_TypePlugin& type)
    : type_(type),
      alignment_(std::max({type.alignment, kPayloadAlignment, alignof(Message)})),
      offset_(round_up(sizeof(Message), alignment_)) {}

RefPtr<Message> MessagePool::acquire() {
  if (spare_.load(std::memory_order_relaxed) != nullptr) {
    Message* spare = spare_.exchange(nullptr, std::memory_order_acquire);
    if (spare != nullptr) {
      spare->references_.store(1, std::memory_order_relaxed);
      return RefPtr<Message>::adopt(spare);
    }
  }
  {
    const MutexLock lock(mutex_);
    ++outstanding_;
    if (idle_ != nullptr) {
      Message* message = idle_;
      idle_ = message->next_;
      --idle_count_;
      message->references_.store(1, std::memory_order_relaxed);
      return RefPtr<Message>::adopt(message);
    }
  }
  Message* message = make();
  if (message == nullptr) {
    const MutexLock lock(mutex_);
    --outstanding_;  // the writer, which has not closed the pool, still holds it
  }
  return RefPtr<Message>::adopt(message);
}

void MessagePool::release(Message* message) {
  Message* none = nullptr;
  if (spare_.load(std::memory_order_relaxed) == nullptr &&
      spare_.compare_exchange_strong(none, message, std::memory_order_release, std::memory_order_relaxed)) {
    return;
  }
  {
    const MutexLock lock(mutex_);
    if (!closed_ && idle_count_ < kMostIdle) {
      message->next_ = idle_;
      idle_ = message;
      ++idle_count_;
      --outstanding_;
      return;
    }
  }
  // Outstanding until it is destroyed, because another thread may end the pool as soon as nothing is.
  destroy(message);
  end_outstanding();
}

void MessagePool::close() {
  Message* spare = spare_.exchange(closed_mark(), std::memory_order_acquire);
  if (spare != nullptr) { destroy(spare); }
  Message* idle = nullptr;
  {
    const MutexLock lock(mutex_);
    closed_ = true;
    if (spare != nullptr) { --outstanding_; }
    idle = idle_;
    idle_ = nullptr;
    ++outstanding_;  // stands for the idle ones, for the same reason as in `release`
  }
  while (idle != nullptr) {
    Message* next = idle->next_;
    destroy(idle);
    idle = next;
  }
  end_outstanding();
}

void MessagePool::end_outstanding() {
  bool last = false;
  {
    const MutexLock lock(mutex_);
    --outstanding_;
    last = closed_ && outstanding_ == 0;
  }
  if (last) { delete this; }
}

Message* MessagePool::make() {
  void* memory = ::operator new(offset_ + type_.size, std::align_val_t(alignment_), std::nothrow);
  if (memory == nullptr) { return nullptr; }
  void* sample = static_cast<unsigned char*>(memory) + offset_;
  if (!type_.construct(sample)) {
    ::operator delete(memory, std::align_val_t(alignment_));
    return nullptr;
  }
  return new (memory) Message(*this, sample);
}

void MessagePool::destroy(Message* message) const {
  type_.destroy(message->sample());
  message->~Message();
  ::operator delete(static_cast<void*>(message), std::align_val_t(alignment_));
}

}  // namespace dds
