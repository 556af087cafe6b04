#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <fastcdr/Cdr.h>
#include <fastcdr/exceptions/BadParamException.h>
#include <fastrtps/utils/fixed_size_string.hpp>
#include <zemtra/details/cdr.hpp>

namespace zemtra {
namespace details {

template <class T>
struct CdrElement;

/// What generated code reads from, in place of Fast CDR itself, which would allocate what any length says. A length is
/// compared with what remains, and containers grow with what has been read. Faults are Fast CDR's exceptions. There is
/// an overload for each type that generated code reads, so that what is not checked here does not compile.
class CheckedCdr {
 public:
  explicit CheckedCdr(eprosima::fastcdr::Cdr& cdr) : cdr_(cdr) {}

  template <class T>
  CheckedCdr& operator>>(T& value) {
    if constexpr (std::is_arithmetic_v<T>) {
      cdr_ >> value;
    } else {
      value.deserialize(cdr_);
    }
    return *this;
  }
  CheckedCdr& operator>>(std::string& text) {
    const std::uint32_t size = length(1);
    text.resize(size);
    cdr_.deserializeArray(text.data(), size);
    check(size > 0 && text.find('\0') == size - 1);
    text.pop_back();
    return *this;
  }
  CheckedCdr& operator>>(std::wstring& text) {
    text.resize(length(4));
    cdr_.deserializeArray(text.data(), text.size());
    return *this;
  }
  template <std::size_t N>
  CheckedCdr& operator>>(eprosima::fastrtps::fixed_string<N>& text) {
    std::string read;
    *this >> read;
    text = read;
    return *this;
  }
  CheckedCdr& operator>>(std::vector<bool>& sequence) {
    sequence.resize(length(1));
    for (std::size_t i = 0; i < sequence.size(); ++i) {
      bool value = false;
      cdr_ >> value;
      sequence[i] = value;
    }
    return *this;
  }
  template <class T>
  CheckedCdr& operator>>(std::vector<T>& sequence) {
    const std::uint32_t size = length(CdrElement<T>::minimal_size);
    if constexpr (std::is_arithmetic_v<T>) {
      sequence.resize(size);
      if (size > 0) { cdr_.deserializeArray(sequence.data(), size); }
    } else {
      static_assert(!std::is_empty_v<T>,
                    "elements without members take no octets, so that any number of them may come");
      if (size < sequence.size()) { sequence.resize(size); }
      for (std::size_t i = 0; i < size; ++i) {
        if (i == sequence.size()) { sequence.emplace_back(); }
        const std::size_t before = cdr_.getSerializedDataLength();
        *this >> sequence[i];
        check_element(before, sizeof(T));
      }
    }
    return *this;
  }
  template <class T, std::size_t N>
  CheckedCdr& operator>>(std::array<T, N>& array) {
    if constexpr (std::is_arithmetic_v<T> && !std::is_same_v<T, bool>) {
      cdr_.deserializeArray(array.data(), N);
    } else {
      for (T& element : array) { *this >> element; }
    }
    return *this;
  }
  /// Of entries with equal keys the first counts.
  template <class Key, class T>
  CheckedCdr& operator>>(std::map<Key, T>& map) {
    map.clear();
    for (std::uint32_t left = length(CdrElement<Key>::minimal_size + CdrElement<T>::minimal_size); left > 0; --left) {
      Key key{};
      T value{};
      const std::size_t before = cdr_.getSerializedDataLength();
      *this >> key >> value;
      check_element(before, sizeof(Key) + sizeof(T));
      map.emplace(std::move(key), std::move(value));
    }
    return *this;
  }

  /// Makes room for a sequence of enums or bounded strings, whose length has been read.
  template <class T>
  void resize(std::vector<T>& sequence, std::uint32_t size) {
    check(remains(size * std::size_t{CdrElement<T>::minimal_size}));
    sequence.resize(size);
  }
  /// The enums of a sequence or of an array of one dimension: the generator has no right code for others.
  template <class Enums>
  void enums(Enums& enums) {
    static_assert(std::is_enum_v<typename Enums::value_type>, "the generator writes only half of such an array");
    for (auto& value : enums) {
      std::uint32_t number = 0;
      cdr_ >> number;
      value = static_cast<typename Enums::value_type>(number);
    }
  }

 private:
  /// An element takes an octet at the least, and no more memory than `most_memory_of_octet` allows for its octets.
  void check_element(std::size_t before, std::size_t memory) {
    const std::size_t octets = cdr_.getSerializedDataLength() - before;
    check(octets > 0 && memory <= most_memory_of_octet * octets);
  }
  static void check(bool good) {
    if (!good) { throw eprosima::fastcdr::exception::BadParamException("no sample of this type"); }
  }
  bool remains(std::size_t octets) {
    eprosima::fastcdr::Cdr::state here = cdr_.getState();
    const bool enough = cdr_.jump(octets);
    cdr_.setState(here);
    return enough;
  }
  /// Of that many elements, which take so many octets at the least.
  std::uint32_t length(std::size_t minimal_size) {
    std::uint32_t length = 0;
    cdr_ >> length;
    check(remains(length * minimal_size));
    return length;
  }

  eprosima::fastcdr::Cdr& cdr_;
};

/// The octets that an element takes at the least. How many a generated class takes is not known, but one at the least.
template <class T>
struct CdrElement {
  static constexpr std::size_t minimal_size = std::is_arithmetic_v<T> ? sizeof(T) : std::is_enum_v<T> ? 4 : 1;
};
template <>
struct CdrElement<std::string> {
  static constexpr std::size_t minimal_size = 4 + 1;
};
template <std::size_t N>
struct CdrElement<eprosima::fastrtps::fixed_string<N>> : CdrElement<std::string> {};
template <class T>
struct CdrElement<std::vector<T>> {
  static constexpr std::size_t minimal_size = 4;
};
template <class T, std::size_t N>
struct CdrElement<std::array<T, N>> {
  static constexpr std::size_t minimal_size = N * CdrElement<T>::minimal_size;
};

}  // namespace details
}  // namespace zemtra
