#pragma once

#include <new>
#include <utility>

#include <dds/memory.hpp>

/// How a sequence handles elements that are plain values.
template <class T>
struct DDSValueElement {
  static void initialize(T& element) { element = T(); }
  /// False when the value has memory of its own and there is none left.
  static bool copy(T& destination, const T& source) {
    try {
      destination = source;
    } catch (const std::bad_alloc&) { return false; }
    return true;
  }
  static void finalize(T& /*element*/) {}
};

/// How a sequence handles strings that it owns.
struct DDSStringElement {
  static void initialize(char*& element) { element = nullptr; }
  static bool copy(char*& destination, char* const& source) {
    return DDS_String_replace(&destination, source) != nullptr || source == nullptr;
  }
  static void finalize(char*& element) {
    DDS_String_free(element);
    element = nullptr;
  }
};

/// A sequence of the classic DDS mapping. It either owns a buffer of `maximum()` elements or refers to a lent one: to
/// an array of elements (contiguous) or to an array of pointers to elements (discontiguous). A fresh sequence owns an
/// empty buffer. What a sequence only refers to it never releases. Not thread-safe. Copying makes an owned deep copy
/// and throws `std::bad_alloc`; the operations that return false change nothing then.
template <class T, class Element = DDSValueElement<T>>
class DDSSequence {
 public:
  using value_type = T;

  DDSSequence() noexcept = default;
  explicit DDSSequence(int maximum) {
    if (!this->maximum(maximum)) { throw std::bad_alloc(); }
  }
  DDSSequence(const DDSSequence& other) {
    if (!assign(other)) {
      release();
      throw std::bad_alloc();
    }
  }
  DDSSequence(DDSSequence&& other) noexcept { swap(other); }
  DDSSequence& operator=(const DDSSequence& other) {
    if (this != &other) {
      DDSSequence copy(other);
      swap(copy);
    }
    return *this;
  }
  DDSSequence& operator=(DDSSequence&& other) noexcept {
    DDSSequence taken(std::move(other));
    swap(taken);
    return *this;
  }
  ~DDSSequence() { release(); }

  /// Exchanges the whole internal state, without touching an element.
  void swap(DDSSequence& other) noexcept {
    std::swap(elements_, other.elements_);
    std::swap(pointers_, other.pointers_);
    std::swap(length_, other.length_);
    std::swap(maximum_, other.maximum_);
    std::swap(owned_, other.owned_);
  }

  int length() const { return length_; }
  /// False when `length` is negative or above `maximum()`.
  bool length(int length) {
    if (length < 0 || length > maximum_) { return false; }
    length_ = length;
    return true;
  }
  int maximum() const { return maximum_; }
  /// Reallocates the owned buffer and keeps the elements that fit; false for a lent buffer, a negative count or
  /// exhausted memory.
  bool maximum(int maximum) {
    if (!owned_ || maximum < 0) { return false; }
    if (maximum == maximum_) { return true; }
    T* fresh = maximum == 0 ? nullptr : new (std::nothrow) T[static_cast<std::size_t>(maximum)];
    if (maximum != 0 && fresh == nullptr) { return false; }
    for (int i = 0; i < maximum; ++i) { Element::initialize(fresh[i]); }
    const int kept = length_ < maximum ? length_ : maximum;
    for (int i = 0; i < kept; ++i) { std::swap(fresh[i], elements_[i]); }
    release();
    elements_ = fresh;
    length_ = kept;
    maximum_ = maximum;
    return true;
  }
  /// Sets the length and, when that is above the maximum, first raises the maximum to `maximum`.
  bool ensure_length(int length, int maximum) {
    if (length < 0 || length > maximum) { return false; }
    return (length <= maximum_ || this->maximum(maximum)) && this->length(length);
  }

  /// False while the sequence refers to a lent buffer.
  bool has_ownership() const { return owned_; }
  /// Refers to `buffer` of `maximum` elements without owning it; only for an owned sequence of maximum 0.
  bool loan_contiguous(T* buffer, int length, int maximum) { return loan(buffer, nullptr, length, maximum); }
  /// Refers to an array of `maximum` pointers to elements without owning it; only for an owned sequence of maximum 0.
  bool loan_discontiguous(T** buffer, int length, int maximum) { return loan(nullptr, buffer, length, maximum); }
  /// Ends a loan and leaves the sequence empty; false when there is none.
  bool unloan() {
    if (owned_) { return false; }
    release();
    return true;
  }
  /// Null for a discontiguous loan and for an empty sequence.
  T* get_contiguous_buffer() const { return elements_; }
  /// Null unless the sequence holds a discontiguous loan.
  T** get_discontiguous_buffer() const { return pointers_; }

  /// The index is not checked.
  T& operator[](int i) { return pointers_ != nullptr ? *pointers_[i] : elements_[i]; }
  const T& operator[](int i) const { return pointers_ != nullptr ? *pointers_[i] : elements_[i]; }

  /// Makes this a deep copy of `other`, in place where it fits; false when a lent buffer is too small, or when memory
  /// is exhausted: the length is then as before, and the elements hold values of either sequence.
  bool assign(const DDSSequence& other) {
    if (this == &other) { return true; }
    if (other.length_ > maximum_ && !maximum(other.length_)) { return false; }
    for (int i = 0; i < other.length_; ++i) {
      if (!Element::copy((*this)[i], other[i])) { return false; }
    }
    length_ = other.length_;
    return true;
  }

 private:
  bool loan(T* elements, T** pointers, int length, int maximum) {
    if (!owned_ || maximum_ != 0 || length < 0 || maximum < length) { return false; }
    if (elements == nullptr && pointers == nullptr && maximum > 0) { return false; }
    elements_ = elements;
    pointers_ = pointers;
    length_ = length;
    maximum_ = maximum;
    owned_ = false;
    return true;
  }
  void release() {
    if (owned_) {
      for (int i = 0; i < maximum_; ++i) { Element::finalize(elements_[i]); }
      delete[] elements_;
    }
    elements_ = nullptr;
    pointers_ = nullptr;
    length_ = maximum_ = 0;
    owned_ = true;
  }

  T* elements_ = nullptr;   // owned when owned_, lent otherwise
  T** pointers_ = nullptr;  // only lent
  int length_ = 0;
  int maximum_ = 0;
  bool owned_ = true;
};

using DDS_StringSeq = DDSSequence<char*, DDSStringElement>;
using DDS_OctetSeq = DDSSequence<DDS_Octet>;
using DDS_InstanceHandleSeq = DDSSequence<DDS_InstanceHandle_t>;
