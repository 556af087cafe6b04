#pragma once

#include <cstring>
#include <new>

#include <dds/type_plugin.hpp>

#include "types/cdr.hpp"

namespace dds {

/// The functions of a plugin, over a class of own samples. `Sample` is empty when it is made, and has
///   View               the application's representation, which lies at its beginning;
///   prepare            gives an empty sample the memory it needs;
///   writable           whether a view can be written at all;
///   assign             copies a view, unless it cannot be written;
///   read               takes what a CdrReader reads, all or nothing;
///   put                hands a view's members to a CdrSize or a CdrWriter.
template <class Sample>
struct SampleFunctions {
  using View = typename Sample::View;

  static const View& view(const void* sample) { return *static_cast<const View*>(sample); }

  static bool construct(void* memory) {
    auto* sample = new (memory) Sample;
    if (sample->prepare()) { return true; }
    sample->~Sample();
    return false;
  }
  static void destroy(void* sample) { static_cast<Sample*>(sample)->~Sample(); }
  static bool copy(void* destination, const void* source) {
    return static_cast<Sample*>(destination)->assign(view(source));
  }
  static std::size_t serialized_size(const void* sample) {
    CdrSize size;
    Sample::put(size, view(sample));
    return size.total();
  }
  static bool serialize(const void* sample, unsigned char* buffer, std::size_t capacity) {
    CdrWriter writer(buffer, capacity);
    Sample::put(writer, view(sample));
    return writer.complete();
  }
  static bool deserialize(void* sample, const unsigned char* buffer, std::size_t length) {
    CdrReader reader(buffer, length);
    return static_cast<Sample*>(sample)->read(reader);
  }

  static bool writable(const void* source) { return Sample::writable(view(source)); }

  /// The last two are null for a type without string members.
  static constexpr DDS_TypePlugin plugin(int (*find_string_member)(const char*),
                                         const char* (*string_member)(const void*, int)) {
    return {sizeof(Sample),     alignof(Sample), &construct,   &destroy, &copy,
            &serialized_size,   &serialize,      &deserialize, nullptr,  nullptr,
            find_string_member, string_member,   &writable};
  }
};

/// The same for a type whose key is the string member `key`; `assign_key` copies it and empties the rest.
template <class Sample>
struct KeyedSampleFunctions : SampleFunctions<Sample> {
  using Base = SampleFunctions<Sample>;

  /// With the terminator, so that a null key differs from an empty one.
  static std::size_t key(const void* sample, unsigned char* buffer, std::size_t capacity) {
    const char* text = Base::view(sample).key;
    const std::size_t size = text == nullptr ? 0 : std::strlen(text) + 1;
    if (size > 0 && size <= capacity) { std::memcpy(buffer, text, size); }
    return size;
  }
  static bool copy_key(void* destination, const void* source) {
    return static_cast<Sample*>(destination)->assign_key(Base::view(source));
  }

  static constexpr DDS_TypePlugin plugin(int (*find_string_member)(const char*),
                                         const char* (*string_member)(const void*, int)) {
    DDS_TypePlugin functions = Base::plugin(find_string_member, string_member);
    functions.key = &key;
    functions.copy_key = &copy_key;
    return functions;
  }
};

}  // namespace dds
