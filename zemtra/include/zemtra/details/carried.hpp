#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <zemtra/details/cdr.hpp>
#include <zemtra/details/members.hpp>

namespace zemtra {
namespace details {

// Which types of members are carried, found out at compile time. What is not carried is an error that names the member.

enum class Kind { other, open_enum, boolean, number, string, sequence, array, optional, aggregate };

/// Whether all values of the underlying type are values of the enum, so that whatever comes in is defined.
template <class Enum, class = void>
struct has_fixed_underlying_type : std::false_type {};
template <class Enum>
struct has_fixed_underlying_type<Enum, std::enable_if_t<std::is_enum_v<Enum>, std::void_t<decltype(Enum{0})>>>
    : std::true_type {};

template <class T, bool = std::is_enum_v<T>>
struct NumberOf {
  using type = T;
};
template <class T>
struct NumberOf<T, true> : std::underlying_type<T> {};

template <class T>
constexpr Kind plain_kind() {
  using Number = typename NumberOf<T>::type;
  if constexpr (std::is_enum_v<T> && !has_fixed_underlying_type<T>::value) { return Kind::open_enum; }
  if constexpr (std::is_same_v<Number, bool>) { return Kind::boolean; }
  // What stands for long double in CDR is not what the machine has.
  if constexpr (std::is_arithmetic_v<Number> && sizeof(Number) <= 8) { return Kind::number; }
  return std::is_class_v<T> && std::is_aggregate_v<T> && !std::is_polymorphic_v<T> ? Kind::aggregate : Kind::other;
}

template <class T>
struct Shape {
  static constexpr Kind kind = plain_kind<T>();
  using Element = void;
};
template <>
struct Shape<std::string> {
  static constexpr Kind kind = Kind::string;
  using Element = void;
};
template <class T, class Allocator>
struct Shape<std::vector<T, Allocator>> {
  static constexpr Kind kind = Kind::sequence;
  using Element = T;
};
template <class T, std::size_t N>
struct Shape<std::array<T, N>> {
  static constexpr Kind kind = Kind::array;
  static constexpr std::size_t length = N;
  using Element = T;
};
template <class T>
struct Shape<std::optional<T>> {
  static constexpr Kind kind = Kind::optional;
  using Element = T;
};

template <class T>
inline constexpr Kind kind_of = Shape<T>::kind;
template <class T>
using ElementOf = typename Shape<T>::Element;

template <class T, std::size_t... I>
constexpr std::size_t minimal_size_of_members(std::index_sequence<I...>);

/// Octets that a value takes at the least, padding not counted.
template <class T>
constexpr std::size_t minimal_size_of() {
  constexpr Kind kind = kind_of<T>;
  if constexpr (kind == Kind::boolean || kind == Kind::number) {
    return sizeof(T);
  } else if constexpr (kind == Kind::string) {
    return 4 + 1;  // length and terminator
  } else if constexpr (kind == Kind::sequence) {
    return 4;  // length
  } else if constexpr (kind == Kind::optional) {
    return 1;  // whether it is there
  } else if constexpr (kind == Kind::array) {
    return Shape<T>::length * minimal_size_of<ElementOf<T>>();
  } else {
    return minimal_size_of_members<T>(std::make_index_sequence<member_count<T>>());
  }
}
template <class T, std::size_t... I>
constexpr std::size_t minimal_size_of_members(std::index_sequence<I...> /*positions*/) {
  return (std::size_t{0} + ... + minimal_size_of<MemberType<T, I>>());
}
template <class T>
inline constexpr std::size_t minimal_size = minimal_size_of<T>();

/// 0 for what is no aggregate of members alone.
template <class T>
constexpr std::size_t count_if_aggregate() {
  if constexpr (kind_of<T> == Kind::aggregate && !has_base<T>::value) { return member_count<T>; }
  return 0;
}
template <class T>
constexpr bool is_sound_aggregate() {
  return kind_of<T> == Kind::aggregate && !has_base<T>::value && count_if_aggregate<T>() <= most_members;
}
template <class T>
constexpr bool is_value() {
  return std::is_default_constructible_v<T> && std::is_copy_constructible_v<T> && std::is_copy_assignable_v<T>;
}

enum class Fault { none, type, open_enum, no_octets, bloated, recursion, said_already };

/// Exists so that the compiler names what it is about. `Position` 1 is the first member.
template <class Aggregate, std::size_t Position, class Member, Fault fault>
struct member_cannot_be_carried {
  static_assert(
      fault != Fault::type,
      "members that are carried: numbers of up to 8 octets, bool, enum classes, std::string, aggregates, and "
      "std::vector, std::array and std::optional of these (no C arrays: use std::array; no maps: use a vector "
      "of structures, or IDL)");
  static_assert(fault != Fault::open_enum,
                "an enum without a fixed underlying type is not carried, since a value from outside that it does not "
                "have would be undefined: make it an enum class, or write 'enum Name : int'");
  static_assert(fault != Fault::no_octets, "a vector is not carried when its elements take no octets");
  static_assert(fault != Fault::bloated,
                "a vector is not carried when its elements may take more than 64 times as much memory as octets: put "
                "what is large and optional, or may be missing otherwise, into vectors of its own");
  static_assert(fault != Fault::recursion, "an aggregate is not carried when it contains itself");
  using carried = std::false_type;
};

/// The same for a type as a whole.
template <class T>
struct type_cannot_be_carried {
  static_assert(kind_of<T> == Kind::aggregate,
                "types that are carried: aggregates, and classes that are generated from IDL");
  static_assert(!has_base<T>::value, "an aggregate with a base class is not carried");
  static_assert(count_if_aggregate<T>() <= most_members,
                "an aggregate is not carried when it has more than 100 members, or C arrays among them");
  static_assert(is_value<T>(), "only values are carried: default-constructible, to be copied and assigned");
  using carried = std::false_type;
};

template <class T, class... Outer>
constexpr bool check_type();

/// What is wrong with the type of a member of `Outer`, if anything is.
template <class T, class... Outer>
constexpr Fault fault_of() {
  constexpr Kind kind = kind_of<T>;
  if constexpr (std::is_const_v<T> || std::is_volatile_v<T> || kind == Kind::other) {
    return Fault::type;
  } else if constexpr (kind == Kind::open_enum) {
    return Fault::open_enum;
  } else if constexpr (kind == Kind::aggregate && (std::is_same_v<T, Outer> || ...)) {
    return Fault::recursion;
  } else if constexpr (kind == Kind::aggregate) {
    return check_type<T, Outer...>() ? Fault::none : Fault::said_already;
  } else if constexpr (std::is_void_v<ElementOf<T>>) {
    return Fault::none;
  } else {
    constexpr Fault fault = fault_of<ElementOf<T>, Outer...>();
    if constexpr (fault == Fault::none && kind == Kind::sequence) {
      constexpr std::size_t octets = minimal_size<ElementOf<T>>;
      return octets == 0                                            ? Fault::no_octets
             : sizeof(ElementOf<T>) > most_memory_of_octet * octets ? Fault::bloated
                                                                    : Fault::none;
    }
    return fault;
  }
}

template <class Aggregate, std::size_t I, class... Outer>
constexpr bool check_member() {
  using Member = MemberType<Aggregate, I>;
  constexpr Fault fault = fault_of<Member, Aggregate, Outer...>();
  if constexpr (fault == Fault::none) {
    return true;
  } else {
    return member_cannot_be_carried<Aggregate, I + 1, Member, fault>::carried::value;
  }
}
template <class Aggregate, class... Outer, std::size_t... I>
constexpr bool check_members(std::index_sequence<I...> /*positions*/) {
  return (check_member<Aggregate, I, Outer...>() && ...);
}

/// Whether an aggregate is carried, with a compile error that says why when it is not. `Outer` are those it is in.
template <class T, class... Outer>
constexpr bool check_type() {
  if constexpr (!is_sound_aggregate<T>()) {
    return type_cannot_be_carried<T>::carried::value;
  } else if constexpr (!check_members<T, Outer...>(std::make_index_sequence<member_count<T>>())) {
    return false;
  } else if constexpr (!is_value<T>()) {
    return type_cannot_be_carried<T>::carried::value;
  } else {
    return true;
  }
}
template <class T>
inline constexpr bool is_carried = check_type<T>();

}  // namespace details
}  // namespace zemtra
