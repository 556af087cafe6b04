#pragma once

#include <atomic>
#include <cstdint>
#include <utility>

namespace dds {

/// Base of objects that several owners share. Born with one reference.
template <class T>
class RefCounted {
 public:
  void ref() const { count_.fetch_add(1, std::memory_order_relaxed); }
  void unref() const {
    if (count_.fetch_sub(1, std::memory_order_acq_rel) == 1) { delete static_cast<const T*>(this); }
  }
  /// True when the caller holds the only reference.
  bool unique() const { return count_.load(std::memory_order_acquire) == 1; }
  RefCounted(const RefCounted&) = delete;
  RefCounted& operator=(const RefCounted&) = delete;

 protected:
  RefCounted() = default;
  ~RefCounted() = default;

 private:
  mutable std::atomic<std::uint32_t> count_{1};
};

/// Holds one reference of a `RefCounted`.
template <class T>
class RefPtr {
 public:
  RefPtr() = default;
  explicit RefPtr(T* object) : object_(object) {
    if (object_ != nullptr) { object_->ref(); }
  }
  /// Takes over a reference that the caller holds.
  static RefPtr adopt(T* object) {
    RefPtr adopted;
    adopted.object_ = object;
    return adopted;
  }
  RefPtr(RefPtr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  RefPtr& operator=(RefPtr&& other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  RefPtr(const RefPtr&) = delete;
  RefPtr& operator=(const RefPtr&) = delete;
  ~RefPtr() {
    if (object_ != nullptr) { object_->unref(); }
  }
  T* get() const { return object_; }
  T* operator->() const { return object_; }
  T& operator*() const { return *object_; }
  /// Hands the reference to the caller.
  T* release() { return std::exchange(object_, nullptr); }

 private:
  T* object_ = nullptr;
};

}  // namespace dds
