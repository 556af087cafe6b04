#pragma once

#include <new>

#include <dds/type_plugin.hpp>

namespace zemtra {
namespace details {

/// The functions by which the DDS layer handles samples of T, which are T itself. Whatever T or the codec throws is a
/// failure. `Codec` has `size`, `write` and `read`.
template <class T, class Codec>
struct PluginFunctions {
  static const T& value(const void* sample) { return *static_cast<const T*>(sample); }
  static T& value(void* sample) { return *static_cast<T*>(sample); }

  static bool construct(void* memory) {
    try {
      new (memory) T();
    } catch (...) { return false; }
    return true;
  }
  static void destroy(void* sample) { value(sample).~T(); }
  static bool copy(void* destination, const void* source) {
    try {
      value(destination) = value(source);
    } catch (...) { return false; }
    return true;
  }
  static std::size_t serialized_size(const void* sample) { return Codec::size(value(sample)); }
  static bool serialize(const void* sample, unsigned char* buffer, std::size_t capacity) {
    return Codec::write(value(sample), buffer, capacity);
  }
  static bool deserialize(void* sample, const unsigned char* buffer, std::size_t length) {
    try {
      return Codec::read(value(sample), buffer, length);
    } catch (...) { return false; }
  }

  static constexpr DDS_TypePlugin plugin() {
    return {sizeof(T),    alignof(T), &construct, &destroy, &copy,   &serialized_size, &serialize,
            &deserialize, nullptr,    nullptr,    nullptr,  nullptr, nullptr};
  }
};

}  // namespace details
}  // namespace zemtra
