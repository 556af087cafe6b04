#pragma once

#include <cstddef>
#include <type_traits>
#include <utility>

#include <boost/pfr/core.hpp>

namespace zemtra {
namespace details {

// The members of an aggregate are bound by Boost.PFR, but counted here: PFR's own count takes the compiler minutes for
// an aggregate that contains a large std::array, and takes each element of a C array for a member.

constexpr std::size_t most_members = 100;        // that Boost.PFR binds
constexpr std::size_t most_initializers = 4096;  // that are looked for; C arrays take one for each element

/// Initializes any member, by copying where that is possible.
template <bool Copies>
struct AnyMember {
  template <class Member>
  operator Member&() const& noexcept;  // NOLINT(google-explicit-constructor)
  template <class Member>
  operator Member&() const&& noexcept;  // NOLINT(google-explicit-constructor)
};
template <>
struct AnyMember<false> {
  template <class Member>
  operator Member() const&& noexcept;  // NOLINT(google-explicit-constructor)
};
template <class T, std::size_t>
using AnyMemberOf = AnyMember<std::is_copy_constructible_v<T>>;

template <class T>
struct AnyBaseOf {
  template <class Base, class = std::enable_if_t<std::is_base_of_v<Base, T> && !std::is_same_v<Base, T>>>
  operator Base() const noexcept;  // NOLINT(google-explicit-constructor)
};

// Why an initializer is converted in one way and not in another is of no interest.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"

template <class T, class = void>
struct has_base : std::false_type {};
template <class T>
struct has_base<T, std::void_t<decltype(T{AnyBaseOf<T>{}})>> : std::true_type {};

template <class T, class Positions, class = void>
struct takes_initializers : std::false_type {};
template <class T, std::size_t... I>
struct takes_initializers<T, std::index_sequence<I...>, std::void_t<decltype(T{AnyMemberOf<T, I>{}...})>>
    : std::true_type {};

/// The same with a pair of braces, which initializes one member whatever it is, between those `Before` and `After`.
template <class T, class Before, class After, class = void>
struct takes_braces_between : std::false_type {};
template <class T, std::size_t... I, std::size_t... J>
struct takes_braces_between<T, std::index_sequence<I...>, std::index_sequence<J...>,
                            std::void_t<decltype(T{AnyMemberOf<T, I>{}..., {}, AnyMemberOf<T, J>{}...})>>
    : std::true_type {};

#pragma GCC diagnostic pop

/// The largest number of initializers from `Low`, which T takes, to below `High`, which it does not.
template <class T, std::size_t Low, std::size_t High>
constexpr std::size_t count_initializers_between() {
  constexpr std::size_t middle = Low + (High - Low) / 2;
  if constexpr (middle == Low) {
    return Low;
  } else if constexpr (takes_initializers<T, std::make_index_sequence<middle>>::value) {
    return count_initializers_between<T, middle, High>();
  } else {
    return count_initializers_between<T, Low, middle>();
  }
}
template <class T, std::size_t Tried = 1>
constexpr std::size_t count_initializers() {
  if constexpr (Tried > most_initializers) {
    return Tried;
  } else if constexpr (takes_initializers<T, std::make_index_sequence<Tried>>::value) {
    return count_initializers<T, 2 * Tried>();
  } else {
    return count_initializers_between<T, Tried / 2, Tried>();
  }
}

/// How many of the `Count` initializers go to the member that begins with the one at `Position`.
template <class T, std::size_t Count, std::size_t Position, std::size_t Taken = 1>
constexpr std::size_t count_taken() {
  if constexpr (Position + Taken >= Count) {
    return Count - Position;
  } else if constexpr (takes_braces_between<T, std::make_index_sequence<Position>,
                                            std::make_index_sequence<Count - Position - Taken>>::value) {
    return Taken;
  } else {
    return count_taken<T, Count, Position, Taken + 1>();
  }
}
template <class T, std::size_t Count, std::size_t Position = 0>
constexpr std::size_t count_members_from() {
  if constexpr (Position >= Count) {
    return 0;
  } else {
    return 1 + count_members_from<T, Count, Position + count_taken<T, Count, Position>()>();
  }
}

/// Above `most_members` when there are too many, or when large C arrays are among them.
template <class T>
constexpr std::size_t count_members() {
  constexpr std::size_t initializers = count_initializers<T>();
  if constexpr (initializers > most_initializers) {
    return initializers;
  } else {
    return count_members_from<T, initializers>();
  }
}
template <class T>
inline constexpr std::size_t member_count = count_members<std::remove_cv_t<T>>();

/// References to the members of an aggregate; `get<I>` selects one.
template <class T>
constexpr auto members(T& value) noexcept {
  return boost::pfr::detail::tie_as_tuple(value, boost::pfr::detail::size_t_<member_count<T>>{});
}
template <std::size_t I, class Members>
constexpr decltype(auto) get(const Members& members) noexcept {
  return boost::pfr::detail::sequence_tuple::get<I>(members);
}

template <class T, std::size_t I>
using MemberType = std::remove_reference_t<decltype(get<I>(members(std::declval<T&>())))>;

}  // namespace details
}  // namespace zemtra
