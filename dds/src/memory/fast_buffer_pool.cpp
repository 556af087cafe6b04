#include <dds/fast_buffer_pool.hpp>

#include <algorithm>
#include <limits>
#include <memory>
#include <mutex>
#include <new>
#include <vector>

#include "log/log.hpp"

struct MORAFastBufferPool {
  MORAFastBufferPool(std::size_t buffer_size, std::align_val_t alignment, MORAFastBufferPoolInitialize initialize,
                     void* initialize_param, MORAFastBufferPoolFinalize finalize, void* finalize_param,
                     const MORAFastBufferPoolProperty& property, const char* name)
      : buffer_size_(buffer_size),
        alignment_(alignment),
        initialize_(initialize),
        initialize_param_(initialize_param),
        finalize_(finalize),
        finalize_param_(finalize_param),
        maximal_(property.maximal < 0 ? std::numeric_limits<int>::max() : property.maximal),
        increment_(property.increment),
        name_(name) {}
  MORAFastBufferPool(const MORAFastBufferPool&) = delete;
  MORAFastBufferPool& operator=(const MORAFastBufferPool&) = delete;
  ~MORAFastBufferPool();

  bool make_initial(int count);
  void* get(int size);
  void give_back(void* buffer);
  int idle_count();

 private:
  /// Makes up to `count` idle buffers, under the lock.
  void grow(int count);
  void* make_buffer();

  const std::size_t buffer_size_;
  const std::align_val_t alignment_;
  const MORAFastBufferPoolInitialize initialize_;
  void* const initialize_param_;
  const MORAFastBufferPoolFinalize finalize_;
  void* const finalize_param_;
  const int maximal_;
  const int increment_;
  const char* const name_;

  std::mutex mutex_;  // guards what follows; no log line is written under it, because sinks are the application's
  int made_ = 0;
  std::vector<void*> idle_;  // last in, first out; its capacity is never below made_, so that giving back cannot fail
};

MORAFastBufferPool::~MORAFastBufferPool() {
  const std::size_t outstanding = static_cast<std::size_t>(made_) - idle_.size();
  if (outstanding != 0) {
    // Leaked on purpose: whoever holds them may still use them.
    DDS_LOG_FAILURE("MORAFastBufferPool_delete", QVX_LOG_PRECONDITION_FAILURE_s, "%zu buffers of pool %s are in use",
                    outstanding, name_);
  }
  for (void* buffer : idle_) {
    finalize_(buffer, finalize_param_);
    ::operator delete(buffer, alignment_);
  }
}

bool MORAFastBufferPool::make_initial(int count) {
  const std::lock_guard<std::mutex> lock(mutex_);
  grow(count);
  return made_ == count;
}

void* MORAFastBufferPool::get(int size) {
  if (size < -1 || (size > 0 && static_cast<std::size_t>(size) > buffer_size_)) {
    DDS_LOG_FAILURE("MORAFastBufferPool_getBufferWithSize", DDS_LOG_BAD_PARAMETER_s, "size %d for pool %s", size,
                    name_);
    return nullptr;
  }
  std::unique_lock<std::mutex> lock(mutex_);
  if (idle_.empty()) {
    const int wanted = std::min(increment_ < 0 ? std::max(made_, 1) : increment_, maximal_ - made_);
    grow(wanted);
    if (idle_.empty()) {
      lock.unlock();
      if (wanted > 0) {
        DDS_LOG_FAILURE("MORAFastBufferPool_getBufferWithSize", QVX_LOG_CREATION_FAILURE_s, "buffer of pool %s", name_);
      }
      return nullptr;
    }
  }
  void* buffer = idle_.back();
  idle_.pop_back();
  return buffer;
}

void MORAFastBufferPool::give_back(void* buffer) {
  std::unique_lock<std::mutex> lock(mutex_);
  if (buffer == nullptr || idle_.size() == static_cast<std::size_t>(made_)) {
    lock.unlock();
    DDS_LOG_FAILURE("MORAFastBufferPool_returnBuffer", DDS_LOG_BAD_PARAMETER_s, "no buffer that pool %s has given out",
                    name_);
    return;
  }
  idle_.push_back(buffer);
}

int MORAFastBufferPool::idle_count() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return static_cast<int>(idle_.size());
}

void MORAFastBufferPool::grow(int count) {
  try {
    idle_.reserve(static_cast<std::size_t>(made_) + static_cast<std::size_t>(count));
  } catch (const std::bad_alloc&) { return; }
  for (int i = 0; i < count; ++i) {
    void* buffer = make_buffer();
    if (buffer == nullptr) { return; }
    idle_.push_back(buffer);
    ++made_;
  }
}

void* MORAFastBufferPool::make_buffer() {
  void* buffer = ::operator new(buffer_size_, alignment_, std::nothrow);
  if (buffer != nullptr && initialize_(buffer, initialize_param_) != 1) {
    ::operator delete(buffer, alignment_);
    return nullptr;
  }
  return buffer;
}

namespace {

bool is_power_of_two(std::size_t number) { return number != 0 && (number & (number - 1)) == 0; }

/// What is wrong with a property; null when it is right.
const char* fault_of(const MORAFastBufferPoolProperty& property) {
  const bool bounded = property.maximal != -1;
  if (bounded && property.maximal < 1) { return "maximal"; }
  if (property.initial < 0 || (bounded && property.initial > property.maximal)) { return "initial"; }
  if (property.increment < -1) { return "increment"; }
  if (property.multi_thread_access != 1) { return "multi_thread_access"; }
  for (const int reserved : property.reserved) {
    if (reserved != 0) { return "reserved"; }
  }
  return nullptr;
}

}  // namespace

MORAFastBufferPool* MORAFastBufferPool_newWithParams(std::size_t buffer_size, std::size_t alignment,
                                                     MORAFastBufferPoolInitialize initialize, void* initialize_param,
                                                     MORAFastBufferPoolFinalize finalize, void* finalize_param,
                                                     const MORAFastBufferPoolProperty* property, const char* name,
                                                     int initialize_once) {
  const char* fault = nullptr;
  if (buffer_size == 0) { fault = "buffer_size"; }
  if (!is_power_of_two(alignment)) { fault = "alignment"; }
  if (initialize == nullptr || finalize == nullptr) { fault = "initialize or finalize"; }
  if (name == nullptr) { fault = "name"; }
  if (initialize_once != 1) { fault = "initialize_once"; }
  if (fault == nullptr) { fault = property == nullptr ? "property" : fault_of(*property); }
  if (fault != nullptr) {
    DDS_LOG_FAILURE("MORAFastBufferPool_newWithParams", DDS_LOG_BAD_PARAMETER_s, "%s", fault);
    return nullptr;
  }
  std::unique_ptr<MORAFastBufferPool> pool(
      new (std::nothrow) MORAFastBufferPool(buffer_size, std::align_val_t{alignment}, initialize, initialize_param,
                                            finalize, finalize_param, *property, name));
  if (pool == nullptr || !pool->make_initial(property->initial)) {
    DDS_LOG_FAILURE("MORAFastBufferPool_newWithParams", QVX_LOG_CREATION_FAILURE_s, "pool %s", name);
    return nullptr;
  }
  return pool.release();
}

void* MORAFastBufferPool_getBufferWithSize(MORAFastBufferPool* pool, int size) { return pool->get(size); }

void MORAFastBufferPool_returnBuffer(MORAFastBufferPool* pool, void* buffer) { pool->give_back(buffer); }

void MORAFastBufferPool_delete(MORAFastBufferPool* pool) { delete pool; }

int MORAFastBufferPool_getIdleCount(MORAFastBufferPool* pool) { return pool->idle_count(); }
