#pragma once

#include <cstddef>
#include <type_traits>
#include <utility>

#include <zemtra/export.hpp>

namespace eprosima {
namespace fastcdr {
class Cdr;
}  // namespace fastcdr
}  // namespace eprosima

namespace zemtra {
namespace details {

// Classes that are generated from IDL to and from CDR, by their own functions.

using IdlWrite = void (*)(const void* sample, eprosima::fastcdr::Cdr& cdr);
using IdlRead = void (*)(void* sample, eprosima::fastcdr::Cdr& cdr);

// Whatever the class's function throws is a failure.

/// With the encapsulation header; 0 when memory is exhausted.
ZEMTRA_TYPED_EXPORT std::size_t idl_size(const void* sample, IdlWrite write) noexcept;
ZEMTRA_TYPED_EXPORT bool idl_write(const void* sample, IdlWrite write, unsigned char* buffer,
                                   std::size_t capacity) noexcept;
ZEMTRA_TYPED_EXPORT bool idl_read(void* sample, IdlRead read, const unsigned char* buffer, std::size_t length) noexcept;
/// As `DDS_TypePlugin::key`; `write` writes the key.
ZEMTRA_TYPED_EXPORT std::size_t idl_key(const void* sample, IdlWrite write, unsigned char* buffer,
                                        std::size_t capacity) noexcept;

template <class T>
using CdrFunctionsOf = decltype(std::declval<const T&>().serialize(std::declval<eprosima::fastcdr::Cdr&>()),
                                std::declval<T&>().deserialize(std::declval<eprosima::fastcdr::Cdr&>()),
                                T::getCdrSerializedSize(std::declval<const T&>(), std::size_t{}));
template <class T, class = void>
struct is_idl_type : std::false_type {};
template <class T>
struct is_idl_type<T, std::void_t<CdrFunctionsOf<T>>> : std::true_type {};

/// Unions have no key.
template <class T, class = void>
struct may_have_key : std::false_type {};
template <class T>
struct may_have_key<T, std::void_t<decltype(T::isKeyDefined())>> : is_idl_type<T> {};

template <class T>
struct IdlCodec {
  static void put(const void* sample, eprosima::fastcdr::Cdr& cdr) { static_cast<const T*>(sample)->serialize(cdr); }
  static void take(void* sample, eprosima::fastcdr::Cdr& cdr) { static_cast<T*>(sample)->deserialize(cdr); }
  static void put_key(const void* sample, eprosima::fastcdr::Cdr& cdr) {
    static_cast<const T*>(sample)->serializeKey(cdr);
  }

  static std::size_t size(const T& value) { return idl_size(&value, &put); }
  static bool write(const T& value, unsigned char* buffer, std::size_t capacity) {
    return idl_write(&value, &put, buffer, capacity);
  }
  static bool read(T& value, const unsigned char* buffer, std::size_t length) {
    return idl_read(&value, &take, buffer, length);
  }
  static std::size_t key(const void* sample, unsigned char* buffer, std::size_t capacity) {
    return idl_key(sample, &put_key, buffer, capacity);
  }
};

}  // namespace details
}  // namespace zemtra
