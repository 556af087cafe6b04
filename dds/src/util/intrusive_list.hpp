#pragma once

#include <cstddef>

namespace dds {

/// Links an element into one list.
template <class T>
struct ListHook {
  T* previous = nullptr;
  T* next = nullptr;
};

/// A doubly linked list through a member of its elements; owns nothing and allocates nothing. An element is in at most
/// one list per hook.
template <class T, ListHook<T> T::*Hook>
class IntrusiveList {
 public:
  T* front() const { return first_; }
  T* back() const { return last_; }
  static T* next(const T* element) { return (element->*Hook).next; }
  static T* previous(const T* element) { return (element->*Hook).previous; }
  bool empty() const { return first_ == nullptr; }
  std::size_t size() const { return size_; }

  void push_back(T* element) {
    (element->*Hook).previous = last_;
    (element->*Hook).next = nullptr;
    (last_ != nullptr ? (last_->*Hook).next : first_) = element;
    last_ = element;
    ++size_;
  }
  void erase(T* element) {
    const ListHook<T>& hook = element->*Hook;
    (hook.previous != nullptr ? (hook.previous->*Hook).next : first_) = hook.next;
    (hook.next != nullptr ? (hook.next->*Hook).previous : last_) = hook.previous;
    --size_;
  }

 private:
  T* first_ = nullptr;
  T* last_ = nullptr;
  std::size_t size_ = 0;
};

}  // namespace dds
