#pragma once

#include <cstring>
#include <dds/type_plugin.hpp>
#include <type_traits>

namespace dds {

/// Whether two tables are the same, so that the functions of either may handle the samples of both.
inline bool same_table(const DDS_TypePlugin& a, const DDS_TypePlugin& b) {
  static_assert(std::has_unique_object_representations_v<DDS_TypePlugin>, "compared octet by octet");
  return std::memcmp(&a, &b, sizeof(a)) == 0;
}

}  // namespace dds
