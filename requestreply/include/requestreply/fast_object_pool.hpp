#pragma once

#include <new>

#include <dds/condition.hpp>
#include <dds/fast_buffer_pool.hpp>
#include <requestreply/export.hpp>

namespace zemtra {

/// A pool of objects that are built once, reused as they are, and destroyed with the pool. Starts with two and grows
/// without bound. Taking and giving back are safe for concurrent use; all else is not.
template <class T>
class FastObjectPool {
 public:
  /// What the buffer pool calls for each of its buffers, which holds one object of `U`; the parameter is not used.
  template <class U>
  struct BufferMemoryAdapter {
    /// Builds the object; 1 on success, 0 when its constructor threw.
    ZEMTRA_EXPORT static int buffer_initialize(void* buffer, void* /*param*/) {
      try {
        new (buffer) U;
        return 1;
      } catch (...) { return 0; }
    }
    /// Destroys the object; the memory stays the pool's.
    ZEMTRA_EXPORT static void buffer_finalize(void* buffer, void* /*param*/) { static_cast<U*>(buffer)->~U(); }
  };

  /// Throws `std::bad_alloc`.
  FastObjectPool() : pool_(create_pool()) {
    if (pool_ == nullptr) { throw std::bad_alloc(); }
  }
  /// Every object must have been given back.
  ~FastObjectPool() { MORAFastBufferPool_delete(pool_); }
  FastObjectPool(const FastObjectPool&) = delete;
  FastObjectPool& operator=(const FastObjectPool&) = delete;

  /// An object that is nobody else's until it is given back, in the state in which it was given back last. Never waits:
  /// throws `std::bad_alloc` when there is none and none can be made.
  T* take() {
    void* buffer = MORAFastBufferPool_getBufferWithSize(pool_, -1);
    if (buffer == nullptr) { throw std::bad_alloc(); }
    return static_cast<T*>(buffer);
  }
  void give_back(T* object) noexcept { MORAFastBufferPool_returnBuffer(pool_, object); }

 private:
  static constexpr std::size_t kAlignment = 8;
  static_assert(alignof(T) <= kAlignment, "the pool's buffers are aligned to 8 octets");

  static MORAFastBufferPool* create_pool() {
    const MORAFastBufferPoolProperty property{2, -1, -1, 1, {0, 0, 0}};
    return MORAFastBufferPool_newWithParams(sizeof(T), kAlignment, &BufferMemoryAdapter<T>::buffer_initialize, nullptr,
                                            &BufferMemoryAdapter<T>::buffer_finalize, nullptr, &property, "8", 1);
  }

  MORAFastBufferPool* pool_;  // owned
};

extern template struct FastObjectPool<DDSWaitSet>::BufferMemoryAdapter<DDSWaitSet>;

}  // namespace zemtra
