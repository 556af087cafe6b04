#pragma once

#include <array>
#include <cstddef>
#include <string_view>
#include <type_traits>
#include <utility>

namespace zemtra {
namespace details {

/// The name of T, somewhere in this function's own name.
template <class T>
constexpr std::string_view name_around() {
  return __PRETTY_FUNCTION__;
}

template <class T>
constexpr std::string_view type_name_view() {
  constexpr std::string_view probe = "double";
  constexpr std::size_t before = name_around<double>().find(probe);
  constexpr std::size_t around = name_around<double>().size() - probe.size();
  const std::string_view name = name_around<T>();
  return name.substr(before, name.size() - around);
}

template <class T, std::size_t... I>
constexpr std::array<char, sizeof...(I) + 1> type_name_array(std::index_sequence<I...> /*positions*/) {
  return {type_name_view<T>()[I]..., '\0'};
}
template <class T>
inline constexpr auto type_name_characters = type_name_array<T>(std::make_index_sequence<type_name_view<T>().size()>());

template <class T, class = void>
struct has_own_type_name : std::false_type {};
template <class T>
struct has_own_type_name<T, std::void_t<decltype(T::dds_type_name)>> : std::true_type {};

/// The name that a type is registered under: its own `dds_type_name`, or its C++ name with its namespaces.
template <class T>
constexpr const char* type_name() {
  if constexpr (has_own_type_name<T>::value) {
    return T::dds_type_name;
  } else {
    return type_name_characters<T>.data();
  }
}

}  // namespace details
}  // namespace zemtra
