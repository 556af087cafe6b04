#pragma once

#include <dds/builtin_types.hpp>
#include <dds/type_plugin.hpp>

namespace dds {

extern const DDS_TypePlugin string_plugin;
extern const DDS_TypePlugin keyed_string_plugin;
extern const DDS_TypePlugin octets_plugin;
extern const DDS_TypePlugin keyed_octets_plugin;

enum class BuiltinKind { none, string, keyed_string, octets, keyed_octets };

/// Which of the plugins above this is, or is a copy of.
BuiltinKind builtin_kind(const DDS_TypePlugin& plugin) noexcept;

}  // namespace dds
