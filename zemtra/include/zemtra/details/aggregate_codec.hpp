#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include <zemtra/details/carried.hpp>
#include <zemtra/details/cdr.hpp>

namespace zemtra {
namespace details {

// Aggregates to and from CDR, member by member; an optional is an octet and, if that is 1, the value.

template <class Out, class T>
void put(Out& out, const T& value);

template <class Out, class Aggregate, std::size_t... I>
void put_members(Out& out, const Aggregate& value, std::index_sequence<I...> /*positions*/) {
  [[maybe_unused]] const auto all = members(value);
  (put(out, get<I>(all)), ...);
}

template <class Out, class Elements>
void put_elements(Out& out, const Elements& elements) {
  using Element = ElementOf<Elements>;
  if constexpr (kind_of<Element> == Kind::number) {
    out.values(elements.data(), sizeof(Element), elements.size());
  } else {
    for (const auto& element : elements) { put<Out, Element>(out, element); }
  }
}

/// Hands a value to a `CdrSize` or a `CdrWriter`.
template <class Out, class T>
void put(Out& out, const T& value) {
  constexpr Kind kind = kind_of<T>;
  if constexpr (kind == Kind::number) {
    out.values(&value, sizeof value, 1);
  } else if constexpr (kind == Kind::boolean) {
    const unsigned char octet = static_cast<bool>(value) ? 1 : 0;
    out.values(&octet, sizeof octet, 1);
  } else if constexpr (kind == Kind::string) {
    out.length(value.size() + 1);
    out.values(value.c_str(), 1, value.size() + 1);
  } else if constexpr (kind == Kind::sequence) {
    out.length(value.size());
    put_elements(out, value);
  } else if constexpr (kind == Kind::array) {
    put_elements(out, value);
  } else if constexpr (kind == Kind::optional) {
    put(out, value.has_value());
    if (value.has_value()) { put(out, *value); }
  } else {
    put_members(out, value, std::make_index_sequence<member_count<T>>());
  }
}

template <class T>
bool take(CdrReader& in, T& value);

template <class Aggregate, std::size_t... I>
bool take_members([[maybe_unused]] CdrReader& in, Aggregate& value, std::index_sequence<I...> /*positions*/) {
  [[maybe_unused]] const auto all = members(value);
  return (take(in, get<I>(all)) && ...);
}

template <class Elements>
bool take_elements(CdrReader& in, Elements& elements) {
  using Element = ElementOf<Elements>;
  if constexpr (kind_of<Element> == Kind::number) {
    return in.values(elements.data(), sizeof(Element), elements.size());
  } else {
    for (auto& element : elements) {
      if (!take(in, element)) { return false; }
    }
    return true;
  }
}

/// A vector that is made this many times larger at once than what is to fill it grows with its elements instead, lest
/// a length alone allocates much.
constexpr std::size_t most_memory_per_octet = 4;

template <class Sequence>
bool take_sequence(CdrReader& in, Sequence& sequence) {
  using Element = ElementOf<Sequence>;
  std::size_t length = 0;
  if (!in.length(length, minimal_size<Element>)) { return false; }
  if constexpr (std::is_same_v<Element, bool>) {  // has no elements to refer to
    sequence.resize(length);
    for (std::size_t i = 0; i < length; ++i) {
      bool value = false;
      if (!in.flag(value)) { return false; }
      sequence[i] = value;
    }
    return true;
  } else if constexpr (sizeof(Element) <= most_memory_per_octet * minimal_size<Element>) {
    sequence.resize(length);
    return take_elements(in, sequence);
  } else {
    if (length < sequence.size()) { sequence.resize(length); }
    for (std::size_t i = 0; i < length; ++i) {
      if (i == sequence.size()) { sequence.emplace_back(); }
      if (!take(in, sequence[i])) { return false; }
    }
    return true;
  }
}

/// Fills a value, whose memory is reused. False when the octets are no such value; it then holds any one. Throws what
/// the value throws when it grows.
template <class T>
bool take(CdrReader& in, T& value) {
  constexpr Kind kind = kind_of<T>;
  if constexpr (kind == Kind::number) {
    return in.values(&value, sizeof value, 1);
  } else if constexpr (kind == Kind::boolean) {
    bool flag = false;
    const bool taken = in.flag(flag);
    value = static_cast<T>(flag);
    return taken;
  } else if constexpr (kind == Kind::string) {
    const char* text = nullptr;
    std::size_t size = 0;
    if (!in.string(text, size)) { return false; }
    value.assign(text, size);
    return true;
  } else if constexpr (kind == Kind::sequence) {
    return take_sequence(in, value);
  } else if constexpr (kind == Kind::array) {
    return take_elements(in, value);
  } else if constexpr (kind == Kind::optional) {
    bool present = false;
    if (!in.flag(present)) { return false; }
    if (!present) { value.reset(); }
    if (present && !value.has_value()) { value.emplace(); }
    return !present || take(in, *value);
  } else {
    return take_members(in, value, std::make_index_sequence<member_count<T>>());
  }
}

template <class T>
struct AggregateCodec {
  static std::size_t size(const T& value) {
    CdrSize size;
    put(size, value);
    return size.total();
  }
  static bool write(const T& value, unsigned char* buffer, std::size_t capacity) {
    CdrWriter writer(buffer, capacity);
    put(writer, value);
    return writer.complete();
  }
  static bool read(T& value, const unsigned char* buffer, std::size_t length) {
    CdrReader reader(buffer, length);
    return take(reader, value) && reader.complete();
  }
};

}  // namespace details
}  // namespace zemtra
