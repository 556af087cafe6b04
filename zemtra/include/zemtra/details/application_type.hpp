#pragma once

#include <dds/domain_participant.hpp>
#include <zemtra/details/aggregate_codec.hpp>
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
using CodecOf = std::conditional_t<is_carried<T>, AggregateCodec<T>, NoCodec<T>>;

template <class T>
inline constexpr DDS_TypePlugin plugin_of = PluginFunctions<T, CodecOf<T>>::plugin();

/// Registers a type and returns its name. Throws the exception of what the participant returns, `BadParameterException`
/// for a null participant.
ZEMTRA_TYPED_EXPORT const char* register_application_type(DDSDomainParticipant* participant, const char* name,
                                                          const DDS_TypePlugin& plugin);

}  // namespace details
}  // namespace zemtra
