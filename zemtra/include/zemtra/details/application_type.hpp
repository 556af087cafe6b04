#pragma once

#include <dds/domain_participant.hpp>
#include <zemtra/details/aggregate_codec.hpp>
#include <zemtra/details/idl_codec.hpp>
#include <zemtra/details/type_plugin.hpp>
#include <zemtra/export.hpp>

namespace zemtra {
namespace details {

/// Stands in when a compile error has been given already, so that it is the only one.
template <class T>
struct NoCodec {
  static std::size_t size(const T& value);
  static bool write(const T& value, unsigned char* buffer, std::size_t capacity);
  static bool read(T& value, const unsigned char* buffer, std::size_t length);
};

template <class T>
constexpr auto codec_of() {
  if constexpr (is_idl_type<T>::value) {
    return IdlCodec<T>();
  } else if constexpr (is_carried<T>) {
    return AggregateCodec<T>();
  } else {
    return NoCodec<T>();
  }
}
template <class T>
using CodecOf = decltype(codec_of<T>());

template <class T>
DDS_TypePlugin plugin_of() {
  using Functions = PluginFunctions<T, CodecOf<T>>;
  DDS_TypePlugin plugin = Functions::plugin();
  if constexpr (may_have_key<T>::value) {
    if (T::isKeyDefined()) {
      plugin.key = &CodecOf<T>::key;
      plugin.copy_key = &Functions::copy;
    }
  }
  return plugin;
}

/// Registers a type and returns its name. Throws the exception of what the participant returns, `BadParameterException`
/// for a null participant.
ZEMTRA_TYPED_EXPORT const char* register_application_type(DDSDomainParticipant* participant, const char* name,
                                                          const DDS_TypePlugin& plugin);

}  // namespace details
}  // namespace zemtra
