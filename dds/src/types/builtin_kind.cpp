#include "types/builtin_plugins.hpp"

namespace dds {
namespace {

bool same(const DDS_TypePlugin& a, const DDS_TypePlugin& b) {
  return a.construct == b.construct && a.destroy == b.destroy && a.copy == b.copy && a.serialize == b.serialize &&
         a.deserialize == b.deserialize && a.key == b.key;
}

}  // namespace

BuiltinKind builtin_kind(const DDS_TypePlugin& plugin) noexcept {
  if (same(plugin, string_plugin)) { return BuiltinKind::string; }
  if (same(plugin, keyed_string_plugin)) { return BuiltinKind::keyed_string; }
  if (same(plugin, octets_plugin)) { return BuiltinKind::octets; }
  if (same(plugin, keyed_octets_plugin)) { return BuiltinKind::keyed_octets; }
  return BuiltinKind::none;
}

}  // namespace dds
