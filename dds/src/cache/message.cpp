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
  bool last = false;
  {
    const MutexLock lock(mutex_);
    --outstanding_;
    if (!closed_ && idle_count_ < kMostIdle) {
      message->next_ = idle_;
      idle_ = message;
      ++idle_count_;
      return;
    }
    last = closed_ && outstanding_ == 0;
  }
  destroy(message);
  if (last) { delete this; }
}

void MessagePool::close() {
  Message* idle = nullptr;
  bool last = false;
  {
    const MutexLock lock(mutex_);
    closed_ = true;
    idle = idle_;
    idle_ = nullptr;
    last = outstanding_ == 0;
  }
  while (idle != nullptr) {
    Message* next = idle->next_;
    destroy(idle);
    idle = next;
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
