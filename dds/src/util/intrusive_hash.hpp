#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <vector>

namespace dds {

/// A hash table of elements that carry their key and their chain link; owns no element. Allocates only when it grows or
/// shrinks, so that a table of steady size allocates nothing.
template <class T, std::uint64_t T::*Key, T* T::*Next>
class IntrusiveHash {
 public:
  std::size_t size() const { return size_; }

  T* find(std::uint64_t key) const {
    if (slots_.empty()) { return nullptr; }
    T* element = slots_[slot(key)];
    while (element != nullptr && element->*Key != key) { element = element->*Next; }
    return element;
  }
  /// Makes room for one more element, after which `insert` cannot fail. Throws `std::bad_alloc`.
  void reserve_one() {
    if (size_ >= slots_.size()) { resize(slots_.empty() ? kSmallest : slots_.size() * 2); }
  }
  /// Room must have been made with `reserve_one`; the key must not be in the table.
  void insert(T* element) {
    T*& head = slots_[slot(element->*Key)];
    element->*Next = head;
    head = element;
    ++size_;
  }
  void erase(T* element) {
    T** link = &slots_[slot(element->*Key)];
    while (*link != element) { link = &((*link)->*Next); }
    *link = element->*Next;
    --size_;
    if (slots_.size() > kLargestKept && size_ * 16 < slots_.size()) { shrink(); }
  }
  template <class Function>
  void for_each(Function function) const {
    for (T* element : slots_) {
      while (element != nullptr) {
        T* next = element->*Next;
        function(element);
        element = next;
      }
    }
  }

 private:
  static constexpr std::size_t kSmallest = 16;
  // A table up to this size stays as it is when it empties, so that one that fills and empties all the time allocates
  // nothing; a larger one shrinks late and keeps room, for the same reason.
  static constexpr std::size_t kLargestKept = 4096;

  // Keys that follow one another, as sequence numbers do, get slots that follow one another, so that a large table is
  // walked through rather than jumped about in. The bits above those of a slot move each such run to a place of its
  // own.
  std::size_t slot(std::uint64_t key) const {
    const std::uint64_t run = (key >> bits_) * 0x9e3779b97f4a7c15u;
    return static_cast<std::size_t>(key + (run >> 32)) & (slots_.size() - 1);
  }

  void resize(std::size_t count) {
    std::vector<T*> fresh(count, nullptr);
    fresh.swap(slots_);
    bits_ = 0;
    for (std::size_t n = count; n > 1; n /= 2) { ++bits_; }
    for (T* element : fresh) {
      while (element != nullptr) {
        T* next = element->*Next;
        T*& head = slots_[slot(element->*Key)];
        element->*Next = head;
        head = element;
        element = next;
      }
    }
  }
  // A table that stays too large does no harm, so exhausted memory is no failure here.
  void shrink() {
    try {
      resize(slots_.size() / 4);
    } catch (const std::bad_alloc&) {}
  }

  std::vector<T*> slots_;  // a power of two
  unsigned bits_ = 0;      // of a slot's number
  std::size_t size_ = 0;
};

}  // namespace dds
